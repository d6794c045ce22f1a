// How full the stick is: three figures and a bar.

#include "drive/cDrive.h"
#include "platform/number_text.h"
#include "widgets/cProgressBar.h"
#include "window/main_window.h"

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
    mp_GetDiskSpace(p_GetDriveLetters("0"));
    const double total = TotalSpace();
    if (total <= 0) {
        clearCapacity();
        return;
    }
    const double free = TotalFreeSpace();
    const double used = total - free;
    const toolkit::ComboBox::Item& unit = chosenUnit(window_.cmbSize);
    const double divisor = std::pow(1024.0, unit.data);
    const int decimals = &unit == &window_.cmbSize.items().front() ? 2 : 3;

    window_.lblHDSize.setCaption(platform::formatNumber(total / divisor, decimals));
    window_.lblHDFree.setCaption(platform::formatNumber(free / divisor, decimals));
    window_.lblHDUsed.setCaption(platform::formatNumber(used / divisor, decimals));
    window_.lblHDUsedColor.setBackColor(usedColor);
    window_.lblHDFreeColor.setBackColor(freeColor);

    // A nearly empty stick still shows a sliver.
    const double share = std::max((used / divisor) / (total / divisor) * 100, 1.0);
    cProgressBar bar;
    bar.StartFarbe(0, 0, 100);
    bar.EndFarbe(0, 0, 200);
    bar.ShowProgress(window_.Picture1, share, 0, 100, true);
}

void cDrive::clearCapacity() {
    window_.lblHDSize.setCaption("");
    window_.lblHDUsed.setCaption("");
    window_.lblHDFree.setCaption("");
    window_.Picture1.cls();
}
