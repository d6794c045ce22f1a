#include "tools/fat32format/windows/this_machine.h"

#include "platform/windows/quiet_errors.h"
#include "platform/windows/unique_handle.h"
#include "platform/windows/wide_text.h"
#include "tools/fat32format/windows/system_volumes.h"
#include "tools/fat32format/windows/volume_users.h"

#include <shlobj.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace fat32format {

namespace {

using platform::windows::narrow;
using platform::windows::QuietErrors;
using platform::windows::UniqueHandle;

constexpr std::size_t piece = 1'048'576; // bytes, the most that is read or written at once
constexpr std::size_t nameSize = MAX_PATH + 1;

/// Memory that is aligned as every sector is.
class Buffer {
public:
    Buffer() : bytes_(VirtualAlloc(nullptr, piece, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE)) {}
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() {
        if (bytes_ != nullptr) VirtualFree(bytes_, 0, MEM_RELEASE);
    }
    void* get() const { return bytes_; }

private:
    void* bytes_;
};

OVERLAPPED placeAt(std::uint64_t offset) {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
    return place;
}

class OpenDevice : public Device {
public:
    explicit OpenDevice(UniqueHandle handle) : handle_(std::move(handle)) {}

    Answer control(DWORD code, std::span<const char> question, std::span<char> answer) override {
        const QuietErrors quiet;
        DWORD size = 0;
        void* in = question.empty() ? nullptr : const_cast<char*>(question.data()); // it is not written to
        void* out = answer.empty() ? nullptr : answer.data();
        if (DeviceIoControl(handle_.get(), code, in, static_cast<DWORD>(question.size()), out,
                            static_cast<DWORD>(answer.size()), &size, nullptr) == FALSE)
            return {std::max<DWORD>(GetLastError(), 1), 0};
        return {ERROR_SUCCESS, std::min<std::size_t>(size, answer.size())};
    }

    bool read(std::uint64_t offset, std::span<unsigned char> bytes) override {
        const QuietErrors quiet;
        while (!bytes.empty()) {
            const std::size_t size = std::min(bytes.size(), piece);
            OVERLAPPED place = placeAt(offset);
            DWORD done = 0;
            if (buffer_.get() == nullptr ||
                ReadFile(handle_.get(), buffer_.get(), static_cast<DWORD>(size), &done, &place) == FALSE)
                return false;
            if (done != size) return false;
            std::memcpy(bytes.data(), buffer_.get(), size);
            bytes = bytes.subspan(size);
            offset += size;
        }
        return true;
    }

    bool write(std::uint64_t offset, std::span<const unsigned char> bytes) override {
        const QuietErrors quiet;
        while (!bytes.empty()) {
            const std::size_t size = std::min(bytes.size(), piece);
            if (buffer_.get() == nullptr) return false;
            std::memcpy(buffer_.get(), bytes.data(), size);
            OVERLAPPED place = placeAt(offset);
            DWORD done = 0;
            if (WriteFile(handle_.get(), buffer_.get(), static_cast<DWORD>(size), &done, &place) == FALSE ||
                done != size)
                return false;
            bytes = bytes.subspan(size);
            offset += size;
        }
        return true;
    }

    bool flush() override {
        const QuietErrors quiet;
        return FlushFileBuffers(handle_.get()) != FALSE;
    }

private:
    UniqueHandle handle_;
    Buffer buffer_;
};

DWORD accessFor(Rights rights) {
    switch (rights) {
    case Rights::Read:
        return GENERIC_READ;
    case Rights::Write:
        return GENERIC_READ | GENERIC_WRITE;
    default:
        return 0;
    }
}

std::wstring rootOf(char letter) {
    return {static_cast<wchar_t>(letter), L':', L'\\'};
}

class ThisMachine : public Machine {
public:
    OpenedDevice open(const std::wstring& name, Rights rights) override {
        const QuietErrors quiet;
        const DWORD flags = rights == Rights::Ask ? 0 : FILE_FLAG_NO_BUFFERING | FILE_FLAG_WRITE_THROUGH;
        UniqueHandle handle(CreateFileW(name.c_str(), accessFor(rights), FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        nullptr, OPEN_EXISTING, flags, nullptr));
        if (!handle) return {nullptr, std::max<DWORD>(GetLastError(), 1)};
        return {std::make_unique<OpenDevice>(std::move(handle)), ERROR_SUCCESS};
    }

    std::wstring targetOf(char letter) override {
        const std::wstring name = {static_cast<wchar_t>(letter), L':'};
        std::array<wchar_t, 4096> target{};
        const DWORD size =
            QueryDosDeviceW(name.c_str(), target.data(), static_cast<DWORD>(target.size() - 1));
        return size == 0 ? std::wstring() : target.data(); // the first of several is the one that counts
    }

    UINT driveType(char letter) override {
        const QuietErrors quiet;
        return GetDriveTypeW(rootOf(letter).c_str());
    }

    std::string labelOf(char letter) override {
        const QuietErrors quiet;
        std::array<wchar_t, nameSize> label{};
        if (GetVolumeInformationW(rootOf(letter).c_str(), label.data(), nameSize, nullptr, nullptr, nullptr,
                                  nullptr, 0) == FALSE)
            return {};
        return narrow(label.data());
    }

    std::optional<std::vector<std::wstring>> systemVolumes() override {
        const QuietErrors quiet;
        return volumesOfWindows();
    }

    std::vector<std::string> usersOf(char letter) override {
        const QuietErrors quiet;
        std::vector<std::string> names;
        for (const std::wstring& name : programsUsing(rootOf(letter)))
            names.push_back(narrow(name));
        return names;
    }

    void rest(std::chrono::milliseconds time) override { Sleep(static_cast<DWORD>(time.count())); }

    /// https://learn.microsoft.com/windows/win32/api/shlobj_core/nf-shlobj_core-shchangenotify
    void announce(char letter) override {
        const QuietErrors quiet;
        const SystemLibrary shell(L"shell32.dll");
        const auto tell = shell.function<decltype(&SHChangeNotify)>("SHChangeNotify");
        if (tell == nullptr) return;
        const std::wstring root = rootOf(letter);
        constexpr UINT atOnce = SHCNF_PATHW | SHCNF_FLUSHNOWAIT; // and without a wait for those who listen
        for (const LONG event : {SHCNE_MEDIAINSERTED, SHCNE_UPDATEITEM})
            tell(event, atOnce, root.c_str(), nullptr);
    }
};

} // namespace

Machine& thisMachine() {
    static ThisMachine machine;
    return machine;
}

} // namespace fat32format
