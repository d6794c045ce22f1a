#include "tests/fat32format/windows/image_machine.h"

#include "platform/windows/unique_handle.h"
#include "platform/windows/wide_text.h"
#include "tools/fat32format/windows/this_machine.h"
#include "tools/fat32format/windows/volume_facts.h"

#include <algorithm>
#include <array>

namespace fat32format {

namespace {

using platform::windows::UniqueHandle;
using platform::windows::wide;

std::string readFile(const std::wstring& path) {
    const UniqueHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        nullptr, OPEN_EXISTING, 0, nullptr));
    std::string text(65536, '\0');
    DWORD size = 0;
    if (!file) return {};
    ReadFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &size, nullptr);
    text.resize(size);
    return text;
}

class ImageDevice : public Device {
public:
    ImageDevice(ImageMachine& machine, std::unique_ptr<Device> image, Part part)
        : machine_(machine), image_(std::move(image)), part_(part) {}

    Answer control(DWORD code, std::span<const char> question, std::span<char> answer) override {
        const Deeds deeds = {[this](const std::string& deed) {
                                 machine_.tell(deed);
                                 isDismounted_ = isDismounted_ || deed == "dismount";
                             },
                             [this] { return tableSector().at(typePlace); },
                             [this](BYTE type) { setType(type); }};
        return answerOf(machine_.stick(), deeds, part_, code, question, answer);
    }
    bool read(std::uint64_t offset, std::span<unsigned char> bytes) override {
        return image_->read(offset + begin(), bytes);
    }
    bool write(std::uint64_t offset, std::span<const unsigned char> bytes) override {
        machine_.tell(part_ == Part::Volume ? "write" : "write to the disk");
        return !machine_.failsToWrite() && image_->write(offset + begin(), bytes);
    }
    /// As FAT's driver does it, a volume that has been dismounted is not flushed any more.
    bool flush() override { return (part_ == Part::Disk || !isDismounted_) && image_->flush(); }

private:
    static constexpr std::size_t typePlace = 446 + 4; // of the first partition

    std::uint64_t begin() { return part_ == Part::Volume ? machine_.stick().start : 0; }
    /// Drivers tell it to whoever may only ask, too.
    std::array<unsigned char, 512> tableSector() {
        std::array<unsigned char, 512> sector{};
        const auto image = thisMachine().open(volumeName(machine_.stick().letter), Rights::Read);
        if (image.device) image.device->read(0, sector);
        return sector;
    }
    void setType(BYTE type) {
        auto sector = tableSector();
        sector.at(typePlace) = type;
        image_->write(0, sector);
    }

    ImageMachine& machine_;
    std::unique_ptr<Device> image_;
    Part part_;
    bool isDismounted_ = false;
};

class SystemVolume : public Device {
public:
    explicit SystemVolume(ImageMachine& machine) : machine_(machine) {}
    Answer control(DWORD code, std::span<const char>, std::span<char> answer) override {
        return answerOfSystem(machine_.stick(), code, answer);
    }
    bool read(std::uint64_t, std::span<unsigned char>) override { return false; }
    bool write(std::uint64_t, std::span<const unsigned char>) override { return false; }
    bool flush() override { return false; }

private:
    ImageMachine& machine_;
};

} // namespace

Stick& ImageMachine::stick() {
    const std::string text = readFile(folder_ + L"\\stick.txt");
    if (text != text_) stick_ = readStick(text);
    text_ = text;
    return stick_;
}

void ImageMachine::tell(const std::string& deed) {
    const UniqueHandle file(CreateFileW((folder_ + L"\\stick.log").c_str(), FILE_APPEND_DATA,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0,
                                        nullptr));
    const std::string line = deed + '\n';
    DWORD size = 0;
    WriteFile(file.get(), line.data(), static_cast<DWORD>(line.size()), &size, nullptr);
}

bool ImageMachine::failsToWrite() {
    const int failing = stick().failingWrite;
    return ++writes_ >= failing && failing > 0;
}

OpenedDevice ImageMachine::open(const std::wstring& name, Rights rights) {
    const Stick& stick = this->stick();
    const bool isVolume = name == volumeName(stick.letter);
    if (!isVolume && name != diskName(stick.disk)) return {std::make_unique<SystemVolume>(*this), 0};
    const DWORD askError = isVolume ? stick.lookError : 0;
    const DWORD error = rights == Rights::Ask ? askError : isVolume ? stick.openError : stick.diskError;
    if (error != 0) return {nullptr, error};
    OpenedDevice image = thisMachine().open(volumeName(stick.letter), rights);
    if (!image.device) return image;
    return {
        std::make_unique<ImageDevice>(*this, std::move(image.device), isVolume ? Part::Volume : Part::Disk),
        0};
}

std::wstring ImageMachine::targetOf(char letter) {
    return letter == stick().letter ? wide(stick().target) : thisMachine().targetOf(letter);
}

UINT ImageMachine::driveType(char letter) {
    return letter == stick().letter ? stick().driveType : thisMachine().driveType(letter);
}

std::string ImageMachine::labelOf(char letter) {
    return letter == stick().letter ? stick().label : thisMachine().labelOf(letter);
}

std::optional<std::vector<std::wstring>> ImageMachine::systemVolumes() {
    if (stick().system == "unknown") return std::nullopt;
    if (stick().system == "real") return thisMachine().systemVolumes();
    std::vector<std::wstring> names;
    for (const std::string& name : split(stick().system, ','))
        names.push_back(wide(name));
    return names;
}

std::vector<std::string> ImageMachine::usersOf(char letter) {
    auto programs = thisMachine().usersOf(letter);
    for (const std::string& name : split(stick().users, ','))
        programs.push_back(name);
    return programs;
}

void ImageMachine::announce(char letter) {
    tell(std::string("announce ") + letter);
    thisMachine().announce(letter);
}

} // namespace fat32format
