#pragma once

#include "platform/windows/unique_handle.h"

namespace fat32format::test {

/// An administrator has two tokens: one with the rights of one, one without. This is the one that this
/// process does not run with; none when there is no second one.
/// https://learn.microsoft.com/windows/win32/api/winnt/ns-winnt-token_linked_token
inline platform::windows::UniqueHandle otherToken() {
    HANDLE own = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &own);
    const platform::windows::UniqueHandle owned(own);
    TOKEN_LINKED_TOKEN linked{};
    DWORD size = 0;
    GetTokenInformation(own, TokenLinkedToken, &linked, sizeof linked, &size);
    return platform::windows::UniqueHandle(linked.LinkedToken);
}

} // namespace fat32format::test
