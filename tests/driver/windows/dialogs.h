// Dialogs of programs other than the tested one, such as its installer: found by what they show, as they have
// no names.
#pragma once

#include <string>
#include <string_view>

namespace probe {

/// Title and controls of the dialog that can be used now, a JSON object; null when there is none.
std::string describeDialog();

/// Clicks the button of that caption; what marks its key is left out of both.
void pressInDialog(std::wstring_view caption);

/// How large a text becomes in that width; JSON.
std::string textSize(std::wstring_view text, int width, int points, bool bold);

} // namespace probe
