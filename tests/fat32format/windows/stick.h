// A disk with one volume that has a letter, as Windows' drivers would answer for it.
#pragma once

#include "tools/fat32format/windows/device.h"

#include <winioctl.h>

#include <functional>
#include <map>
#include <string>

namespace fat32format {

struct Stick {
    char letter = 'E';
    std::string target = R"(\Device\HarddiskVolume5)";
    UINT driveType = DRIVE_REMOVABLE;
    std::string label = "ALT";
    DWORD disk = 2;
    DWORD exchanges = 0; ///< of the medium
    DWORD bus = BusTypeUsb;
    std::string maker = "ACME";
    std::string model = "Mobile Disk";
    std::string serial = "0123456789";
    std::uint64_t diskBytes = 41'943'040;
    std::uint64_t start = 1'048'576; ///< of the volume, in bytes; 0 when it is the whole disk
    std::uint64_t bytes = 40'894'464;
    std::uint64_t lengthLess = 0; ///< by how much the volume's length is less than the piece it lies on
    DWORD sectorSize = 512;
    std::string style = "mbr";     ///< or "gpt", or "raw"
    std::string gptType = "basic"; ///< or "other", "dynamic"
    DWORD64 gptAttributes = 0;
    bool hasDynamicPartition = false; ///< beside the volume
    bool keepsType = false;           ///< takes no other one, and says nothing
    DWORD extents = 1;
    std::string users;                ///< programs, with commas between them
    std::string system = R"(\\.\C:)"; ///< volumes of Windows, with commas between them; "unknown", or "real"
    DWORD systemDisk = 0;             ///< that they lie on

    /// Control codes that are refused with an error.
    std::map<DWORD, DWORD> refused;
    bool cannotBeFlushed = false;
    int failingWrite = 0; ///< the number of the write that fails, with all behind it; 0 for none
    DWORD openError = 0;  ///< of the volume, for writing
    DWORD diskError = 0;  ///< of the disk, for reading
    DWORD lookError = 0;  ///< of the volume, for questions
};

/// Fills it from lines "name=value"; throws std::runtime_error at a name that it does not know.
/// "fail=lock 5" refuses a control code with an error.
Stick readStick(const std::string& text);

/// What a control code does that changes something or is worth to be told.
struct Deeds {
    std::function<void(const std::string&)> tell;
    std::function<BYTE()> mbrType; ///< of the volume's partition
    std::function<void(BYTE)> setMbrType;
};

enum class Part { Volume, Disk };

/// As the drivers answer.
Answer answerOf(Stick& stick, const Deeds& deeds, Part part, DWORD code, std::span<const char> question,
                std::span<char> answer);
/// Of a volume of Windows.
Answer answerOfSystem(const Stick& stick, DWORD code, std::span<char> answer);

std::vector<std::string> split(const std::string& text, char separator);

} // namespace fat32format
