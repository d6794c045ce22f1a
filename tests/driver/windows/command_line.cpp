#include "tests/driver/windows/command_line.h"

#include "tests/driver/windows/json.h"
#include "tests/driver/windows/request.h"

#include <windows.h>

#include <array>
#include <utility>

namespace probe {

namespace {

constexpr DWORD patience = 120'000; // milliseconds

using Sid = std::array<BYTE, SECURITY_MAX_SID_SIZE>;

Sid administrators() {
    Sid sid{};
    DWORD size = sid.size();
    if (CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, sid.data(), &size) == FALSE)
        throw Failure("no group of administrators");
    return sid;
}

/// This program's own, or one without those rights.
HANDLE tokenFor(bool plainUser) {
    HANDLE own = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &own);
    if (!plainUser) return own;
    Sid sid = administrators();
    SID_AND_ATTRIBUTES disabled{sid.data(), 0};
    HANDLE plain = nullptr;
    const BOOL made =
        CreateRestrictedToken(own, DISABLE_MAX_PRIVILEGE, 1, &disabled, 0, nullptr, 0, nullptr, &plain);
    CloseHandle(own);
    if (made == FALSE) throw Failure("no token of a plain user");
    return plain;
}

bool isAdministrator(HANDLE token) {
    HANDLE copy = nullptr;
    if (DuplicateToken(token, SecurityIdentification, &copy) == FALSE) throw Failure("no copy of a token");
    Sid sid = administrators();
    BOOL member = FALSE;
    CheckTokenMembership(copy, sid.data(), &member);
    CloseHandle(copy);
    return member != FALSE;
}

DWORD exitCode(HANDLE process) {
    DWORD status = 0;
    if (WaitForSingleObject(process, patience) != WAIT_OBJECT_0) throw Failure("the program does not end");
    GetExitCodeProcess(process, &status);
    return status;
}

struct Started {
    HANDLE process = nullptr; ///< to be closed
    bool administrator = false;
};

Started launch(std::wstring commandLine, bool asPlainUser) {
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    const HANDLE token = tokenFor(asPlainUser);
    if (CreateProcessAsUserW(token, nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &start, &process) == FALSE)
        throw Failure("the program cannot be started");
    HANDLE own = nullptr;
    OpenProcessToken(process.hProcess, TOKEN_ALL_ACCESS, &own);
    const bool administrator = isAdministrator(own);
    for (const HANDLE handle : {token, own, process.hThread})
        CloseHandle(handle);
    return {process.hProcess, administrator};
}

} // namespace

std::string runCommandLine(std::wstring commandLine, bool asPlainUser) {
    const Started started = launch(std::move(commandLine), asPlainUser);
    const DWORD status = exitCode(started.process);
    CloseHandle(started.process);
    return json::object({{"status", json::number(static_cast<long long>(status))},
                         {"administrator", json::boolean(started.administrator)}});
}

std::string startCommandLine(std::wstring commandLine, bool asPlainUser) {
    const Started started = launch(std::move(commandLine), asPlainUser);
    CloseHandle(started.process);
    return json::object({{"administrator", json::boolean(started.administrator)}});
}

} // namespace probe
