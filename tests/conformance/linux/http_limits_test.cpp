// What only the Linux side can be asked: its time-outs without waiting for them, its memory, its proxies.
#include "platform/http.h"

#include "platform/blocking.h"
#include "platform/http_address.h"
#include "platform/http_timeouts.h"
#include "tests/conformance/environment_server.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <sys/resource.h>

#include <array>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <mutex>
#include <thread>

using conformance::FaultServer;
using namespace platform;
using namespace std::chrono_literals;

namespace {

constexpr auto longTime = 15s; // far below the program's time-outs, far above the test's

/// A name server that says nothing, until it is told to give up.
class HangingResolver {
public:
    static constexpr const char* host = "hanging.invalid";

    void hang() {
        std::unique_lock lock(mutex_);
        ++waiting_;
        changed_.notify_all();
        changed_.wait_for(lock, 2 * longTime, [this] { return released_; });
        --waiting_;
        changed_.notify_all();
    }
    int waiting() {
        const std::lock_guard lock(mutex_);
        return waiting_;
    }
    void release() {
        std::unique_lock lock(mutex_);
        released_ = true;
        changed_.notify_all();
        changed_.wait(lock, [this] { return waiting_ == 0; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool released_ = false;
    int waiting_ = 0;
};

HangingResolver hangingResolver;

class HttpLimits : public testing::Test {
protected:
    void SetUp() override {
        httpTimeouts() = {.connect = 1s, .silence = 1s};
        begin_ = std::chrono::steady_clock::now();
    }
    void TearDown() override {
        httpTimeouts() = {};
        unsetenv("http_proxy");
        unsetenv("no_proxy");
        EXPECT_LT(elapsed(), longTime);
    }

    std::chrono::steady_clock::duration elapsed() const { return std::chrono::steady_clock::now() - begin_; }

    static std::string fetch(const std::string& url, std::int32_t accessType = internetOpenPreconfig) {
        InternetSession session("agent", accessType);
        InternetRequest request(session, url, internetFlagReload);
        std::string content;
        std::array<char, 2048> buffer = {};
        while (const std::size_t count = request.read(buffer))
            content.append(buffer.data(), count);
        return content;
    }

    FaultServer server;

private:
    std::chrono::steady_clock::time_point begin_;
};

} // namespace

// Stands before the C library's function, for libcurl too.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** results) {
    if (name != nullptr && std::strcmp(name, HangingResolver::host) == 0) {
        hangingResolver.hang();
        return EAI_AGAIN;
    }
    using Function = int (*)(const char*, const char*, const addrinfo*, addrinfo**);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(name, service, hints, results);
}

TEST(HttpTimeouts, AreThoseTheProgramPromises) {
    EXPECT_EQ(httpTimeouts().connect, 60s);
    EXPECT_EQ(httpTimeouts().silence, 30s);
}

TEST_F(HttpLimits, ServerThatAcceptsAndSaysNothing) {
    EXPECT_EQ(fetch(server.url("/silent")), "");
    EXPECT_GE(elapsed(), 1s);
}

TEST_F(HttpLimits, ServerThatFallsSilentInMidFile) {
    EXPECT_EQ(fetch(server.url("/silent-after/5000")).size(), 5000U);
    EXPECT_GE(elapsed(), 1s);
}

TEST_F(HttpLimits, SlowServerIsNotASilentOne) {
    httpTimeouts().silence = 2s;
    EXPECT_EQ(fetch(server.url("/slow/8/1/400")).size(), 8U);
    EXPECT_GE(elapsed(), 2s) << "longer than the time-out in all, never at a stretch";
}

TEST_F(HttpLimits, ShortWaitsAreNotHandedOver) {
    static int handedOver = 0;
    setBlockingCallRunner([](const std::function<void()>& call) {
        ++handedOver;
        std::thread(call).join();
    });
    constexpr int pieces = 100;
    EXPECT_EQ(fetch(server.url("/slow/" + std::to_string(pieces) + "/1/3")).size(), std::size_t{pieces});
    EXPECT_GT(handedOver, 0) << "so that the window lives";
    EXPECT_LT(handedOver, pieces / 2);
}

TEST_F(HttpLimits, TimeTheCallerTakesIsNotTheServersSilence) {
    InternetSession session("agent", internetOpenPreconfig);
    InternetRequest request(session, server.url("/slow/20/10/1500"), 0);
    std::array<char, 10> buffer = {};
    ASSERT_EQ(request.read(buffer), 10U);
    std::this_thread::sleep_for(1200ms); // the caller is busy for longer than the time-out
    EXPECT_EQ(request.read(buffer), 10U);
}

TEST_F(HttpLimits, PortThatDoesNotAnswer) {
    EXPECT_EQ(fetch(server.deafUrl()), "");
    EXPECT_GE(elapsed(), 1s);
}

TEST_F(HttpLimits, NameServerThatDoesNotAnswer) {
    EXPECT_EQ(fetch(std::string("http://") + HangingResolver::host + "/file"), "");
    EXPECT_EQ(hangingResolver.waiting(), 1) << "the time-out must not wait for the look-up";
    hangingResolver.release();
}

TEST_F(HttpLimits, LargeFileIsNeverHeld) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer keeps what has been freed";
#endif
    rusage before = {};
    getrusage(RUSAGE_SELF, &before);
    InternetSession session("agent", internetOpenPreconfig);
    InternetRequest request(session, server.url("/bytes/300000000"), 0);
    std::array<char, 2048> buffer = {};
    std::size_t total = 0;
    while (const std::size_t count = request.read(buffer))
        total += count;
    rusage after = {};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_EQ(total, 300000000U);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 16L * 1024) << "kilobytes";
}

TEST_F(HttpLimits, ServerWithoutATrustedCertificateReadsNothing) {
    EXPECT_EQ(fetch(server.secureUrl("/bytes/100")), "");
}

TEST_F(HttpLimits, AnswerWithoutAHeadIsNone) {
    EXPECT_EQ(fetch(server.url("/headless")), "");
}

TEST_F(HttpLimits, SystemProxyIsAskedUnlessTheAccessIsDirect) {
    constexpr std::int32_t internetOpenDirect = 1;
    setenv("http_proxy", server.refusedUrl().c_str(), 1);
    unsetenv("no_proxy");
    EXPECT_EQ(fetch(server.url("/bytes/10")), "");
    EXPECT_EQ(fetch(server.url("/bytes/10"), internetOpenDirect).size(), 10U);
}

TEST(HttpAddress, EscapesWhatIsIllegal) {
    using namespace std::string_literals;
    EXPECT_EQ(httpAddress("HTTP://h/a b\"<>\\^`{|}\x7F"s), "HTTP://h/a%20b%22%3C%3E%5C%5E%60%7B%7C%7D%7F");
    EXPECT_EQ(httpAddress("http://h/\r\n\0x"s), "http://h/%0D%0A%00x");
    EXPECT_EQ(httpAddress("https://u@[::1]:8/%41%zz?a=b&c#d"), "https://u@[::1]:8/%41%zz?a=b&c#d");
}

TEST(HttpAddress, IsNothingWithoutItsScheme) {
    for (const char* address :
         {"", "h", "http:", "http:/x", "http://", "ftp://h/", "file:///x", " http://h/"})
        EXPECT_FALSE(httpAddress(address)) << address;
}
