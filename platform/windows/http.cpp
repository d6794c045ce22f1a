#include "platform/http.h"

#include "platform/http_address.h"
#include "platform/windows/ansi_text.h"

#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace platform {

namespace {

constexpr int maxRedirects = 10;
constexpr DWORD longestAddress = 64 * 1024;

/// An internet handle, closed when this object goes.
class Handle {
public:
    explicit Handle(HINTERNET handle = nullptr) : handle_(handle) {}
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        if (handle_ != nullptr) InternetCloseHandle(handle_);
    }

    explicit operator bool() const { return handle_ != nullptr; }
    HINTERNET get() const { return handle_; }

private:
    HINTERNET handle_;
};

DWORD status(HINTERNET request) {
    DWORD number = 0;
    DWORD size = sizeof number;
    HttpQueryInfoA(request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &number, &size, nullptr);
    return number;
}

bool isRedirect(DWORD status) {
    return status / 100 == 3;
}

/// A header of the answer; empty when it has none of that kind.
std::string header(HINTERNET request, DWORD which) {
    std::string text(longestAddress, '\0');
    DWORD size = longestAddress;
    if (HttpQueryInfoA(request, which, text.data(), &size, nullptr) == FALSE) return {};
    text.resize(size);
    return text;
}

/// Where a redirect leads; no value when that is nowhere it may lead.
std::optional<std::string> redirectTarget(const std::string& location, const std::string& address) {
    std::string target(longestAddress, '\0');
    DWORD length = longestAddress;
    if (InternetCombineUrlA(address.c_str(), location.c_str(), target.data(), &length, ICU_BROWSER_MODE) ==
        FALSE)
        return std::nullopt;
    target.resize(length);
    return mayLeadTo(address, target) ? httpAddress(target) : std::nullopt;
}

/// "Past every cache" means those on the way, too, which the library does not ask for on every system. And it
/// keeps nothing of what it sees: no cookies, no files, and no name is given to a server that asks for one.
DWORD libraryFlags(std::uint32_t flags) {
    const DWORD reload = (flags & internetFlagReload) != 0 ? INTERNET_FLAG_PRAGMA_NOCACHE : 0;
    return flags | reload | INTERNET_FLAG_NO_AUTO_REDIRECT | INTERNET_FLAG_NO_COOKIES |
           INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_NO_AUTH;
}

} // namespace

struct InternetSession::State {
    Handle handle;
};

InternetSession::InternetSession(std::string_view agent, std::int32_t accessType)
    : state_(std::make_unique<State>()) {
    state_->handle = Handle(InternetOpenA(windows::nearestAnsi(agent).c_str(), static_cast<DWORD>(accessType),
                                          nullptr, nullptr, 0));
}

InternetSession::~InternetSession() = default;

struct InternetRequest::State {
    Handle handle;
    bool ended = false;
};

/// Redirects are followed here and not by the library, which would follow them to anywhere and any number of
/// them.
InternetRequest::InternetRequest(InternetSession& session, std::string_view url, std::uint32_t flags) {
    std::optional<std::string> address = httpAddress(url);
    for (int redirects = 0; address && redirects <= maxRedirects; ++redirects) {
        Handle handle(InternetOpenUrlA(session.state_->handle.get(), address->c_str(), nullptr, 0,
                                       libraryFlags(flags), 0));
        if (!handle) return;
        const std::string location =
            isRedirect(status(handle.get())) ? header(handle.get(), HTTP_QUERY_LOCATION) : std::string();
        if (location.empty()) {
            state_ = std::make_unique<State>();
            state_->handle = std::move(handle);
            return;
        }
        address = redirectTarget(location, *address);
    }
}

InternetRequest::~InternetRequest() = default;

std::size_t InternetRequest::read(std::span<char> buffer) {
    std::size_t stored = 0;
    while (state_ && !state_->ended && stored < buffer.size()) {
        const auto wanted = static_cast<DWORD>(std::min<std::size_t>(buffer.size() - stored, MAXLONG));
        DWORD count = 0;
        const BOOL read = InternetReadFile(state_->handle.get(), buffer.data() + stored, wanted, &count);
        stored += count; // also after a connection that was lost
        state_->ended = read == FALSE || count == 0;
    }
    return stored;
}

std::optional<std::uint64_t> InternetRequest::announcedLength() const {
    DWORD length = 0;
    DWORD size = sizeof length;
    constexpr DWORD what = HTTP_QUERY_CONTENT_LENGTH | HTTP_QUERY_FLAG_NUMBER;
    if (!state_ || HttpQueryInfoA(state_->handle.get(), what, &length, &size, nullptr) == FALSE)
        return std::nullopt;
    return length;
}

} // namespace platform
