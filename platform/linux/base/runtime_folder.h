#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace platform::linux {

/// Where the user's programs keep what is gone with the session: one of the XDG base directories; without the
/// variable the place that systems use in fact. Root has none there without a session of its own, as behind
/// pkexec, and uses the system's.
std::string runtimeFolder();

/// Who has become root by pkexec; no value for anybody else.
std::optional<uid_t> userBehindPkexec();

/// What systems use for a user in fact.
std::string usualRuntimeFolder(uid_t user);

} // namespace platform::linux
