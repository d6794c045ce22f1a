#include "app/input_utilities.h"

#include "platform/number_text.h"
#include "toolkit/message_box.h"

namespace app {

std::int16_t digitsOnly(std::int16_t keyCode) {
    constexpr std::int16_t backspace = 8;
    return keyCode == backspace || (keyCode >= '0' && keyCode <= '9') ? keyCode : std::int16_t{0};
}

/// The hours are rounded, halves to the even number, while the minutes are what is left of whole hours: this
/// is intended.
std::string intervalText(const toolkit::Form& window, std::int32_t minutes) {
    if (minutes == 0) {
        toolkit::messageBox("Kein Wert eingegeben. Es wird autom. 20 minuten eingetragen",
                            toolkit::Information, window.caption());
        return "20";
    }
    if (minutes <= 60) return std::to_string(minutes) + " min";
    const auto hours = static_cast<std::int32_t>(platform::roundHalfToEven(minutes / 60.0));
    const std::int32_t rest = minutes % 60;
    return std::to_string(hours) + "h und " + (rest < 10 ? "0" : "") + std::to_string(rest) + " min";
}

} // namespace app
