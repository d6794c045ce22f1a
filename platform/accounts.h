// The computer's users and groups.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The local group of the computer's administrators, by its German name; every platform knows its own under
/// it.
constexpr std::string_view administratorsGroup = "Administratoren";

/// Names of the members that a local group lists itself; a member of a group that is a member is none. No
/// value when there is no such group. Windows: the members of the object `WinNT://./NAME,group`,
/// https://learn.microsoft.com/windows/win32/api/iads/nn-iads-iadsgroup
std::optional<std::vector<std::string>> localGroupMembers(std::string_view group);

/// Name of the user: the value of the environment variable "USERNAME", else the name under which the user is
/// logged in; empty when there is neither. Windows: `GetEnvironmentVariableA`,
/// https://learn.microsoft.com/windows/win32/api/processenv/nf-processenv-getenvironmentvariablea
std::string userName();

} // namespace platform
