// Who may open what this process makes.
#pragma once

#include "platform/windows/unique_handle.h"

#include <cstddef>
#include <string>

namespace fat32format {

/// The server's end of a named pipe for messages, for overlapped use, that one process of this machine may
/// open, once, when it is this user's or an administrator's. None when it cannot be made, or there is one of
/// that name; GetLastError() tells why.
/// https://learn.microsoft.com/windows/win32/api/namedpipeapi/nf-namedpipeapi-createnamedpipew
platform::windows::UniqueHandle pipeForOneOther(const std::wstring& name, std::size_t bytes);

/// Lets administrators ask which file this process was started from, also those of another account, whose
/// password was given in the place of the user's. Without success they may do so as far as they could before.
/// https://learn.microsoft.com/windows/win32/procthread/process-security-and-access-rights
void letAdministratorsSeeThisProcess();

} // namespace fat32format
