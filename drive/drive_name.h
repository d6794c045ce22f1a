#pragma once

#include <string>
#include <string_view>

namespace drive {

/// Letter and colon of a drive root, in upper case: "E:" for `e:\`.
std::string driveName(std::string_view root);

} // namespace drive
