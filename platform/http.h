// Fetching by HTTP. Time-outs: 60 s to connect, 30 s without a byte, 60 s with less than 1 KB of the file.
// Redirects are followed, 10 at the most; nothing but http and https is fetched, redirects included, and none
// leads from https to http. An error page is content like any other, and so is a redirect that does not say
// where to. What is compressed stays so. Nothing is kept of what a server says: no cookies, no cached files;
// and nobody logs in by itself.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

/// Access type: the system's proxy settings. Windows: INTERNET_OPEN_TYPE_PRECONFIG.
constexpr std::int32_t internetOpenPreconfig = 0;
/// Past every cache. Windows: INTERNET_FLAG_RELOAD.
constexpr std::uint32_t internetFlagReload = 0x80000000;

/// A session under one agent text. Windows: `InternetOpenA`,
/// https://learn.microsoft.com/windows/win32/api/wininet/nf-wininet-internetopena
class InternetSession {
public:
    InternetSession(std::string_view agent, std::int32_t accessType);
    InternetSession(const InternetSession&) = delete;
    InternetSession& operator=(const InternetSession&) = delete;
    ~InternetSession();

private:
    friend class InternetRequest;
    struct State;
    std::unique_ptr<State> state_;
};

/// One file being read. A request that could not be opened is a request that reads nothing. The session must
/// outlive it. Windows: `InternetOpenUrlA`,
/// https://learn.microsoft.com/windows/win32/api/wininet/nf-wininet-internetopenurla
class InternetRequest {
public:
    /// The address is UTF-8; characters that no address may hold are escaped.
    InternetRequest(InternetSession& session, std::string_view url, std::uint32_t flags);
    InternetRequest(const InternetRequest&) = delete;
    InternetRequest& operator=(const InternetRequest&) = delete;
    ~InternetRequest();

    /// Waits until the buffer is full or the file ends, and returns the number of bytes stored; 0 at the end
    /// of the file. After a connection that was lost or a time-out, what came before is handed out, then 0.
    /// Windows: `InternetReadFile`,
    /// https://learn.microsoft.com/windows/win32/api/wininet/nf-wininet-internetreadfile
    std::size_t read(std::span<char> buffer);

    /// Whether the end of the file has been reached, and all of the file had come: false after a lost
    /// connection or a time-out, and when less came than the server announced. A server that announces
    /// nothing ends a file by closing the connection; and one that is cut in the middle of a chunk is told
    /// from a whole one on Linux only.
    bool complete() const;

    /// How long nothing has come, and how long it will still be waited for if nothing does. No value when
    /// nobody waits: outside of read().
    struct Silence {
        std::chrono::milliseconds lasted;
        std::chrono::milliseconds left;
    };
    std::optional<Silence> silence() const;

    /// Length in bytes that the server announced; no value when it did not, or before the first read().
    /// Whether so much comes is another matter. Windows: `HttpQueryInfoA`, HTTP_QUERY_CONTENT_LENGTH.
    std::optional<std::uint64_t> announcedLength() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
