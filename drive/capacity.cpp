// How full the stick is: three figures and a bar.

#include "app/frmMain.h"
#include "drive/cDrive.h"
#include "platform/number_text.h"
#include "widgets/cProgressBar.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr toolkit::Color usedColor{222, 0, 0};
constexpr toolkit::Color freeColor{0, 222, 0};

/// Where none is chosen, which the settings file may say, sizes are in the first one, megabytes.
const toolkit::ComboBox::Item& chosenUnit(const toolkit::ComboBox& units) {
    const std::int16_t index = std::max<std::int16_t>(units.listIndex(), 0);
    return units.items().at(static_cast<std::size_t>(index));
}

} // namespace

void cDrive::GetDriveCapacity() {
    frmMain& window = *program_.MainWindow;
    mp_GetDiskSpace(p_GetDriveLetters("0"));
    const double total = TotalSpace();
    if (total <= 0) {
        clearCapacity();
        return;
    }
    const double free = TotalFreeSpace();
    const double used = total - free;
    const toolkit::ComboBox::Item& unit = chosenUnit(window.cmbSize);
    const double divisor = std::pow(1024.0, unit.data);
    const int decimals = &unit == &window.cmbSize.items().front() ? 2 : 3;

    window.lblHDSize.setCaption(platform::formatNumber(total / divisor, decimals));
    window.lblHDFree.setCaption(platform::formatNumber(free / divisor, decimals));
    window.lblHDUsed.setCaption(platform::formatNumber(used / divisor, decimals));
    window.lblHDUsedColor.setBackColor(usedColor);
    window.lblHDFreeColor.setBackColor(freeColor);

    // A nearly empty stick still shows a sliver.
    const double share = std::max((used / divisor) / (total / divisor) * 100, 1.0);
    cProgressBar bar;
    bar.StartFarbe(0, 0, 100);
    bar.EndFarbe(0, 0, 200);
    bar.ShowProgress(window.Picture1, share, 0, 100, true);
}

void cDrive::clearCapacity() {
    frmMain& window = *program_.MainWindow;
    window.lblHDSize.setCaption("");
    window.lblHDUsed.setCaption("");
    window.lblHDFree.setCaption("");
    window.Picture1.cls();
}
