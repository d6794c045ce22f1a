#include "tests/fat32format/windows/stick.h"

#include "tools/fat32format/windows/volume_facts.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace fat32format {

namespace {

constexpr GUID dynamicData = {0xAF9B60A0, 0x1431, 0x4F62, {0xBC, 0x68, 0x33, 0x11, 0x71, 0x4A, 0x69, 0xAD}};
constexpr GUID otherType = {0xC12A7328, 0xF81F, 0x11D2, {0xBA, 0x4B, 0x00, 0xA0, 0xC9, 0x3E, 0xC9, 0x3B}};
constexpr BYTE dynamicMbr = 0x42;

const std::map<std::string, DWORD>& codes() {
    static const std::map<std::string, DWORD> all = {
        {"extents", IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS},
        {"query", IOCTL_STORAGE_QUERY_PROPERTY},
        {"number", IOCTL_STORAGE_GET_DEVICE_NUMBER},
        {"verify", IOCTL_STORAGE_CHECK_VERIFY2},
        {"geometry", IOCTL_DISK_GET_DRIVE_GEOMETRY_EX},
        {"length", IOCTL_DISK_GET_LENGTH_INFO},
        {"partition", IOCTL_DISK_GET_PARTITION_INFO_EX},
        {"layout", IOCTL_DISK_GET_DRIVE_LAYOUT_EX},
        {"writable", IOCTL_DISK_IS_WRITABLE},
        {"lock", FSCTL_LOCK_VOLUME},
        {"unlock", FSCTL_UNLOCK_VOLUME},
        {"dismount", FSCTL_DISMOUNT_VOLUME},
        {"extended", FSCTL_ALLOW_EXTENDED_DASD_IO},
        {"settype", IOCTL_DISK_SET_PARTITION_INFO_EX},
        {"update", IOCTL_DISK_UPDATE_PROPERTIES},
    };
    return all;
}

std::string nameOf(DWORD code) {
    const auto found =
        std::find_if(codes().begin(), codes().end(), [code](const auto& one) { return one.second == code; });
    return found == codes().end() ? "code " + std::to_string(code) : found->first;
}

/// What fits; a structure that does not is refused, as drivers do.
Answer give(std::span<char> answer, const void* bytes, std::size_t size) {
    if (answer.size() < size) return {ERROR_INSUFFICIENT_BUFFER, 0};
    std::memcpy(answer.data(), bytes, size);
    return {ERROR_SUCCESS, size};
}

template <typename T>
Answer give(std::span<char> answer, const T& value) {
    return give(answer, &value, sizeof value);
}

LARGE_INTEGER large(std::uint64_t value) {
    LARGE_INTEGER number{};
    number.QuadPart = static_cast<LONGLONG>(value);
    return number;
}

Answer extents(std::span<char> answer, DWORD count, const DISK_EXTENT& first) {
    constexpr std::size_t place = offsetof(VOLUME_DISK_EXTENTS, Extents);
    std::vector<char> bytes(place + count * sizeof(DISK_EXTENT));
    std::memcpy(bytes.data(), &count, sizeof count);
    for (DWORD i = 0; i < count; ++i) {
        DISK_EXTENT extent = first;
        extent.DiskNumber += i;
        std::memcpy(bytes.data() + place + i * sizeof extent, &extent, sizeof extent);
    }
    return give(answer, bytes.data(), bytes.size());
}

PARTITION_INFORMATION_EX partition(const Stick& stick, const Deeds& deeds) {
    PARTITION_INFORMATION_EX info{};
    info.StartingOffset = large(stick.start);
    info.PartitionLength = large(stick.bytes);
    info.PartitionNumber = 1;
    if (stick.style == "mbr") {
        info.PartitionStyle = PARTITION_STYLE_MBR;
        info.Mbr.PartitionType = deeds.mbrType();
    } else if (stick.style == "gpt") {
        info.PartitionStyle = PARTITION_STYLE_GPT;
        info.Gpt.PartitionType = stick.gptType == "basic"     ? basicData
                                 : stick.gptType == "dynamic" ? dynamicData
                                                              : otherType;
        info.Gpt.Attributes = stick.gptAttributes;
    } else {
        info.PartitionStyle = PARTITION_STYLE_RAW;
    }
    return info;
}

Answer layout(const Stick& stick, const Deeds& deeds, std::span<char> answer) {
    constexpr std::size_t place = offsetof(DRIVE_LAYOUT_INFORMATION_EX, PartitionEntry);
    std::vector<PARTITION_INFORMATION_EX> entries = {partition(stick, deeds)};
    if (stick.hasDynamicPartition) {
        entries.push_back(entries.front());
        entries.back().PartitionStyle = PARTITION_STYLE_MBR;
        entries.back().Mbr.PartitionType = dynamicMbr;
    }
    DRIVE_LAYOUT_INFORMATION_EX head{};
    head.PartitionCount = static_cast<DWORD>(entries.size());
    std::vector<char> bytes(place + entries.size() * sizeof entries[0]);
    std::memcpy(bytes.data(), &head, place);
    std::memcpy(bytes.data() + place, entries.data(), entries.size() * sizeof entries[0]);
    return give(answer, bytes.data(), bytes.size());
}

Answer descriptor(const Stick& stick, std::span<char> answer) {
    STORAGE_DEVICE_DESCRIPTOR head{};
    head.BusType = static_cast<STORAGE_BUS_TYPE>(stick.bus);
    std::string texts;
    const auto add = [&texts](const std::string& text) {
        const auto place = static_cast<DWORD>(sizeof(STORAGE_DEVICE_DESCRIPTOR) + texts.size());
        texts += text + '\0';
        return text.empty() ? 0 : place;
    };
    head.VendorIdOffset = add(stick.maker);
    head.ProductIdOffset = add(stick.model);
    head.SerialNumberOffset = add(stick.serial);
    std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
    bytes += texts;
    return give(answer, bytes.data(), bytes.size());
}

Answer setType(Stick& stick, const Deeds& deeds, std::span<const char> question) {
    SET_PARTITION_INFORMATION_EX wanted{};
    if (question.size() < sizeof wanted) return {ERROR_INVALID_PARAMETER, 0};
    if (stick.keepsType) return {};
    std::memcpy(&wanted, question.data(), sizeof wanted);
    if (wanted.PartitionStyle == PARTITION_STYLE_MBR) {
        deeds.setMbrType(wanted.Mbr.PartitionType);
    } else {
        stick.gptType = wanted.Gpt.PartitionType == basicData ? "basic" : "other";
        stick.gptAttributes = wanted.Gpt.Attributes;
    }
    return {};
}

Answer geometry(const Stick& stick, std::span<char> answer) {
    struct {
        DISK_GEOMETRY geometry;
        LARGE_INTEGER diskSize;
    } value{};
    value.geometry.BytesPerSector = stick.sectorSize;
    value.diskSize = large(stick.diskBytes);
    return give(answer, value);
}

using Setter = std::function<void(Stick&, const std::string&)>;

template <typename T>
Setter number(T Stick::*member) {
    return [member](Stick& stick, const std::string& value) {
        stick.*member = static_cast<T>(std::stoull(value, nullptr, 0));
    };
}

Setter text(std::string Stick::*member) {
    return [member](Stick& stick, const std::string& value) { stick.*member = value; };
}

void refuse(Stick& stick, const std::string& value) {
    const auto words = split(value, ' ');
    if (words.size() != 2) throw std::runtime_error("fail=NAME ERROR");
    stick.refused[codes().at(words[0])] = std::stoul(words[1]);
}

const std::map<std::string, Setter>& setters() {
    static const std::map<std::string, Setter> all = {
        {"letter", [](Stick& stick, const std::string& value) { stick.letter = value.at(0); }},
        {"target", text(&Stick::target)},
        {"drivetype", number(&Stick::driveType)},
        {"label", text(&Stick::label)},
        {"disk", number(&Stick::disk)},
        {"exchanges", number(&Stick::exchanges)},
        {"bus", number(&Stick::bus)},
        {"maker", text(&Stick::maker)},
        {"model", text(&Stick::model)},
        {"serial", text(&Stick::serial)},
        {"diskbytes", number(&Stick::diskBytes)},
        {"start", number(&Stick::start)},
        {"bytes", number(&Stick::bytes)},
        {"sectorsize", number(&Stick::sectorSize)},
        {"style", text(&Stick::style)},
        {"gpttype", text(&Stick::gptType)},
        {"gptattributes", number(&Stick::gptAttributes)},
        {"dynamic", number(&Stick::hasDynamicPartition)},
        {"extents", number(&Stick::extents)},
        {"users", text(&Stick::users)},
        {"system", text(&Stick::system)},
        {"systemdisk", number(&Stick::systemDisk)},
        {"failingwrite", number(&Stick::failingWrite)},
        {"openerror", number(&Stick::openError)},
        {"diskerror", number(&Stick::diskError)},
        {"lookerror", number(&Stick::lookError)},
        {"fail", refuse},
    };
    return all;
}

} // namespace

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

Stick readStick(const std::string& lines) {
    Stick stick;
    for (std::string line : split(lines, '\n')) {
        if (line.ends_with('\r')) line.pop_back();
        const std::size_t sign = line.find('=');
        if (sign == std::string::npos) continue;
        const auto setter = setters().find(line.substr(0, sign));
        if (setter == setters().end()) throw std::runtime_error("No such name: " + line);
        setter->second(stick, line.substr(sign + 1));
    }
    return stick;
}

Answer answerOf(Stick& stick, const Deeds& deeds, Part part, DWORD code, std::span<const char> question,
                std::span<char> answer) {
    const auto refused = stick.refused.find(code);
    if (refused != stick.refused.end()) return {refused->second, 0};
    const bool isVolume = part == Part::Volume;
    if (isVolume && code == IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS)
        return extents(answer, stick.extents, {stick.disk, large(stick.start), large(stick.bytes)});
    if (code == IOCTL_STORAGE_QUERY_PROPERTY) return descriptor(stick, answer);
    if (code == IOCTL_STORAGE_GET_DEVICE_NUMBER)
        return give(answer, STORAGE_DEVICE_NUMBER{FILE_DEVICE_DISK, stick.disk, isVolume ? 1UL : 0UL});
    if (code == IOCTL_STORAGE_CHECK_VERIFY2) return give(answer, stick.exchanges);
    if (code == IOCTL_DISK_GET_DRIVE_GEOMETRY_EX) return geometry(stick, answer);
    if (code == IOCTL_DISK_GET_LENGTH_INFO)
        return give(answer, GET_LENGTH_INFORMATION{
                                large(isVolume ? stick.bytes - stick.lengthLess : stick.diskBytes)});
    if (isVolume && code == IOCTL_DISK_GET_PARTITION_INFO_EX) return give(answer, partition(stick, deeds));
    if (!isVolume && code == IOCTL_DISK_GET_DRIVE_LAYOUT_EX) return layout(stick, deeds, answer);
    if (code == IOCTL_DISK_IS_WRITABLE) return {};
    deeds.tell(nameOf(code));
    if (isVolume && code == IOCTL_DISK_SET_PARTITION_INFO_EX) return setType(stick, deeds, question);
    const bool isKnown =
        (isVolume && (code == FSCTL_LOCK_VOLUME || code == FSCTL_UNLOCK_VOLUME ||
                      code == FSCTL_DISMOUNT_VOLUME || code == FSCTL_ALLOW_EXTENDED_DASD_IO)) ||
        (!isVolume && code == IOCTL_DISK_UPDATE_PROPERTIES);
    return {isKnown ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_INVALID_FUNCTION}, 0};
}

Answer answerOfSystem(const Stick& stick, DWORD code, std::span<char> answer) {
    if (code != IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS) return {ERROR_INVALID_FUNCTION, 0};
    return extents(answer, 1, {stick.systemDisk, large(1'048'576), large(1'000'000'000)});
}

} // namespace fat32format
