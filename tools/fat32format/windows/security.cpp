#include "tools/fat32format/windows/security.h"

#include <windows.h>

#include <sddl.h>

#include <array>
#include <memory>

namespace fat32format {

using platform::windows::UniqueHandle;

namespace {

struct LocalFreer {
    void operator()(void* memory) const { LocalFree(memory); }
};
using LocalMemory = std::unique_ptr<void, LocalFreer>;

/// The user that this process runs as, "S-1-5-21-..."; empty when it cannot be told.
std::wstring userSid() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return {};
    const UniqueHandle owned(token);
    struct {
        TOKEN_USER user;
        std::array<unsigned char, SECURITY_MAX_SID_SIZE> sid;
    } answer{};
    DWORD size = 0;
    wchar_t* text = nullptr;
    if (GetTokenInformation(token, TokenUser, &answer, sizeof answer, &size) == FALSE ||
        ConvertSidToStringSidW(answer.user.User.Sid, &text) == FALSE)
        return {};
    const LocalMemory memory(text);
    return text;
}

/// Of a text in the language of security descriptors.
/// https://learn.microsoft.com/windows/win32/secauthz/security-descriptor-string-format
LocalMemory descriptor(const std::wstring& text) {
    void* made = nullptr;
    ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1, &made, nullptr);
    return LocalMemory(made);
}

} // namespace

UniqueHandle pipeForOneOther(const std::wstring& name, std::size_t bytes) {
    const std::wstring user = userSid();
    if (user.empty()) return {};
    const LocalMemory rights = descriptor(L"D:P(A;;GA;;;" + user + L")(A;;GA;;;BA)");
    if (!rights) return {};
    SECURITY_ATTRIBUTES attributes{sizeof attributes, rights.get(), FALSE};
    const auto size = static_cast<DWORD>(bytes);
    return UniqueHandle(CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, size, size, 0,
        &attributes));
}

void letAdministratorsSeeThisProcess() {
    const std::wstring user = userSid();
    const std::wstring everything = L"0x1fffff"; // PROCESS_ALL_ACCESS
    const std::wstring look = L"0x1000";         // PROCESS_QUERY_LIMITED_INFORMATION
    const LocalMemory rights = descriptor(L"D:(A;;" + everything + L";;;" + user + L")(A;;" + everything +
                                          L";;;SY)(A;;" + look + L";;;BA)");
    if (!user.empty() && rights)
        SetKernelObjectSecurity(GetCurrentProcess(), DACL_SECURITY_INFORMATION, rights.get());
}

} // namespace fat32format
