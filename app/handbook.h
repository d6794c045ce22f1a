// The user guide, a page for the browser that ships with the program.
#pragma once

#include <string>
#include <string_view>

namespace app {

/// The page beside the program, else in that folder (empty for none); empty when it is in neither.
std::string handbookFile(std::string_view otherFolder);

/// Opens the page in the browser. When that is not possible a box of that title says what to do.
void openHandbook(std::string_view title);

} // namespace app
