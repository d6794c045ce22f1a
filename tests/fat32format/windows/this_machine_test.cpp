// What the program asks Windows itself; here it is Wine that answers.
#include "platform/windows/unique_handle.h"
#include "tools/fat32format/windows/system_volumes.h"
#include "tools/fat32format/windows/this_machine.h"
#include "tools/fat32format/windows/volume_facts.h"
#include "tools/fat32format/windows/volume_users.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace fat32format;

namespace {

constexpr const wchar_t* setup = L"SYSTEM\\Setup";
constexpr const wchar_t* memory = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Memory Management";

/// A value of the registry as long as it lives; what was there before comes back.
class Value {
public:
    Value(const wchar_t* key, const wchar_t* name, DWORD type, const std::wstring& text)
        : key_(key), name_(name) {
        std::wstring old(4096, L'\0');
        auto size = static_cast<DWORD>(old.size() * sizeof(wchar_t));
        hadOne_ = RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_ANY, &oldType_, old.data(), &size) == 0;
        old_ = old.substr(0, size / sizeof(wchar_t));
        set(type, text);
    }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    ~Value() {
        if (hadOne_)
            set(oldType_, old_);
        else
            RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, key_, name_);
    }

private:
    void set(DWORD type, const std::wstring& text) {
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, key_, name_, type, text.data(),
                        static_cast<DWORD>(text.size() * sizeof(wchar_t)));
    }

    const wchar_t* key_;
    const wchar_t* name_;
    bool hadOne_ = false;
    DWORD oldType_ = REG_NONE;
    std::wstring old_;
};

bool contains(const std::optional<std::vector<std::wstring>>& names, const std::wstring& name) {
    return names && std::find(names->begin(), names->end(), name) != names->end();
}

} // namespace

TEST(SystemVolumes, WindowsAndWhatItStartsFrom) {
    const Value value(setup, L"SystemPartition", REG_SZ, std::wstring(L"\\Device\\HarddiskVolume7") + L'\0');
    const auto volumes = volumesOfWindows();
    EXPECT_TRUE(contains(volumes, L"\\\\.\\C:"));
    EXPECT_TRUE(contains(volumes, L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolume7"));
}

TEST(SystemVolumes, ThisProgram) {
    const Value value(setup, L"SystemPartition", REG_SZ, std::wstring(L"\\Device\\HarddiskVolume7") + L'\0');
    std::wstring file(32768, L'\0');
    file.resize(GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size())));
    const std::wstring root = file.substr(0, 3);
    std::wstring name(MAX_PATH, L'\0');
    ASSERT_NE(GetVolumeNameForVolumeMountPointW(root.c_str(), name.data(), MAX_PATH), FALSE)
        << GetLastError();
    name.resize(wcslen(name.c_str()) - 1); // without the last backslash
    EXPECT_TRUE(contains(volumesOfWindows(), name));
}

TEST(SystemVolumes, PageFiles) {
    const Value partition(setup, L"SystemPartition", REG_SZ,
                          std::wstring(L"\\Device\\HarddiskVolume7") + L'\0');
    const std::wstring list = std::wstring(L"\\??\\Z:\\pagefile.sys") + L'\0' + L'\0';
    EXPECT_FALSE(contains(volumesOfWindows(), L"\\\\.\\Z:"));
    for (const wchar_t* name : {L"ExistingPageFiles", L"PagingFiles"}) {
        const Value value(memory, name, REG_MULTI_SZ, list);
        EXPECT_TRUE(contains(volumesOfWindows(), L"\\\\.\\Z:"));
    }
}

TEST(SystemVolumes, UnknownSystemPartitionIsNoAnswer) {
    for (const std::wstring text : {L"", L"C:"}) {
        const Value value(setup, L"SystemPartition", REG_SZ, text + L'\0');
        EXPECT_FALSE(volumesOfWindows());
    }
}

TEST(SystemVolumes, ValueOfAnotherKindIsNoAnswer) {
    const Value partition(setup, L"SystemPartition", REG_SZ,
                          std::wstring(L"\\Device\\HarddiskVolume7") + L'\0');
    const Value value(memory, L"PagingFiles", REG_BINARY, L"Z:");
    EXPECT_FALSE(volumesOfWindows());
}

TEST(SystemVolumes, LettersOfPageFiles) {
    using Letters = std::vector<wchar_t>;
    EXPECT_EQ(lettersOfPageFiles({L"C:\\pagefile.sys 0 0", L"\\??\\d:\\pagefile.sys"}),
              (Letters{L'C', L'D'}));
    EXPECT_EQ(lettersOfPageFiles({L"?:\\pagefile.sys", L""}), Letters());
    for (const wchar_t* unknown :
         {L":", L"pagefile.sys", L"\\??\\Volume{0}\\pagefile.sys", L"\\Device\\X\\p.sys"})
        EXPECT_FALSE(lettersOfPageFiles({L"C:\\pagefile.sys 0 0", unknown})) << "it may be on any volume";
}

TEST(ThisMachine, LetterWithoutADrive) {
    EXPECT_EQ(thisMachine().targetOf('Q'), L"");
    EXPECT_EQ(thisMachine().targetOf('C').substr(0, 8), L"\\Device\\");
    EXPECT_EQ(thisMachine().driveType('C'), UINT{DRIVE_FIXED});
}

TEST(ThisMachine, DeviceThatIsNotThere) {
    const OpenedDevice opened = thisMachine().open(L"\\\\.\\PhysicalDrive99", Rights::Read);
    EXPECT_EQ(opened.device, nullptr);
    EXPECT_NE(opened.error, 0U);
}

/// A file in the place of a device: what is written comes back, in pieces and from any address.
TEST(ThisMachine, ReadsAndWritesLargePieces) {
    const std::wstring name = L"device-test.tmp";
    CloseHandle(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    std::vector<unsigned char> bytes(2 * 1'048'576 + 512 + 1);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(i * 7 + i / 4096);
    const std::span<const unsigned char> odd(bytes.data() + 1, bytes.size() - 1);
    {
        const OpenedDevice opened = thisMachine().open(name, Rights::Write);
        ASSERT_NE(opened.device, nullptr);
        EXPECT_TRUE(opened.device->write(512, odd));
        EXPECT_TRUE(opened.device->flush());
        std::vector<unsigned char> found(odd.size());
        EXPECT_TRUE(opened.device->read(512, found));
        EXPECT_TRUE(std::equal(found.begin(), found.end(), odd.begin()));
        EXPECT_FALSE(opened.device->read(1024, found)) << "less than all of it is nothing";
        EXPECT_FALSE(opened.device->control(FSCTL_DISMOUNT_VOLUME)) << "a file takes no such question";
    }
    std::vector<unsigned char> sector(512);
    EXPECT_FALSE(thisMachine().open(name, Rights::Read).device->write(0, odd));
    EXPECT_FALSE(thisMachine().open(name, Rights::Ask).device->read(0, sector));
    DeleteFileW(name.c_str());
}

TEST(ThisMachine, UsersOfAVolumeAreToldInTime) {
    const auto start = GetTickCount64();
    programsUsing(L"C:\\");
    programsUsing(L"Q:\\");
    EXPECT_LT(GetTickCount64() - start, 10'000U);
}
