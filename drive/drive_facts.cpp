// Sizes, label and file system of a drive.

#include "app/frmMain.h"
#include "base/text.h"
#include "drive/cDrive.h"
#include "drive/stick_actions.h"
#include "toolkit/message_box.h"

#include <array>

const char* const drive::labelToolTip = "Datenträgerbezeichnung, höchstens 11 Zeichen";

namespace {

constexpr std::size_t nameBufferSize = 256;
constexpr std::size_t longestLabel = 11; // characters

constexpr const char* refusedLabelToolTip =
    "Der Stick hat diese Bezeichnung nicht angenommen und behält die alte. Vielleicht wird er gerade "
    "benutzt, ist schreibgeschützt, oder sein Dateisystem erlaubt eines der Zeichen nicht.";

std::string untilNul(const std::array<char, nameBufferSize>& buffer) {
    const std::string_view text(buffer.data(), buffer.size());
    return std::string(text.substr(0, text.find('\0')));
}

} // namespace

double cDrive::mp_BytesToDouble(const platform::DiskFreeSpace::Bytes& bytes) {
    double value = 0;
    double factor = 1;
    for (const std::uint8_t byte : bytes) {
        value += byte * factor;
        factor *= 256;
    }
    return value;
}

void cDrive::mp_GetDiskSpace(const std::string& sDrive) {
    platform::DiskFreeSpace space;
    platform::diskFreeSpace(sDrive, space);
    totalSpace_ = mp_BytesToDouble(space.total);
    totalFreeSpace_ = mp_BytesToDouble(space.totalFree);
}

std::string cDrive::mp_GetDriveName(const std::string& Drive) {
    std::array<char, nameBufferSize> label{};
    std::array<char, nameBufferSize> fileSystem{};
    platform::volumeInformation(Drive, label, fileSystem);
    fileSystem_ = untilNul(fileSystem);
    return untilNul(label);
}

bool cDrive::mp_SetDriveName(const std::string& Drive, const std::string& Name) {
    return !shownStick_ || platform::setVolumeLabel(Drive, Name, shownStick_);
}

void drive::Command1_Click(frmMain& window) {
    const std::string& label = window.txtDT_Cap.text();
    const std::size_t length = base::characterCount(label);
    if (length > longestLabel) {
        toolkit::messageBox("maximale Länge der Datenträgerbezeichnung ist 11 Zeichen", toolkit::Information,
                            window.caption());
        window.txtDT_Cap.setSelection({longestLabel, length - longestLabel});
        window.txtDT_Cap.setFocus();
        return;
    }
    cDrive& drive = *window.program().Drive;
    const bool done = drive.mp_SetDriveName(drive.p_GetDriveLetters("0"), label);
    window.txtDT_Cap.setToolTip(done ? labelToolTip : refusedLabelToolTip);
    if (done) return;
    // No box: a label that is refused holds up nobody. But whoever gave it sees the box ask for another one.
    window.txtDT_Cap.setSelection({0, length});
    window.txtDT_Cap.setFocus();
}
