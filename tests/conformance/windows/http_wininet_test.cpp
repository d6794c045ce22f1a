// What only the Windows side can be asked: what its library does on its own.
#include "platform/http.h"

#include "tests/conformance/environment_server.h"

#include <windows.h>

#include <wininet.h>

#include <gtest/gtest.h>

#include <array>

using conformance::FaultServer;
using namespace platform;

namespace {

std::string fetch(const std::string& url) {
    InternetSession session("agent", internetOpenPreconfig);
    InternetRequest request(session, url, internetFlagReload);
    std::string content;
    std::array<char, 2048> buffer = {};
    while (const std::size_t count = request.read(buffer))
        content.append(buffer.data(), count);
    return content;
}

bool isCached(const std::string& url) {
    DWORD size = 0;
    return GetUrlCacheEntryInfoA(url.c_str(), nullptr, &size) != FALSE ||
           GetLastError() == ERROR_INSUFFICIENT_BUFFER;
}

} // namespace

TEST(HttpWinINet, NothingIsCached) {
    const FaultServer server;
    EXPECT_EQ(fetch(server.url("/cacheable")), "keep this");
    EXPECT_FALSE(isCached(server.url("/cacheable")));
    EXPECT_EQ(fetch(server.url("/bytes/100000")).size(), 100000U);
    EXPECT_FALSE(isCached(server.url("/bytes/100000")));
}

TEST(HttpWinINet, NobodyLogsInWithWhatTheAddressHolds) {
    const FaultServer server;
    std::string url = server.url("/login/Basic");
    url.insert(url.find("127."), "user:word@");
    EXPECT_EQ(fetch(url), "login: none");
}
