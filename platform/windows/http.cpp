#include "platform/http.h"

#include "platform/blocking.h"
#include "platform/http_address.h"
#include "platform/http_pace.h"
#include "platform/windows/ansi_text.h"

#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t readAhead = 1024ULL * 1024;
constexpr std::size_t blockSize = 16ULL * 1024;
constexpr int maxRedirects = 10;
constexpr auto longestLook =
    std::chrono::milliseconds(100); // at one time, so that nobody waits for it for long
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

/// Length in bytes that the server announced; as a text, because it may have more than 32 bits.
std::optional<std::uint64_t> announcedLengthOf(HINTERNET request) {
    const std::string text = header(request, HTTP_QUERY_CONTENT_LENGTH);
    std::uint64_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    if (error != std::errc() || end == text.data()) return std::nullopt;
    return length;
}

/// What the thread that waits in the library and the one that waits for it have in common. The library's own
/// time-outs end a silence and nothing else, and no call of it can be asked to come back earlier: so a thread
/// makes the calls, and is left to itself when they take too long.
struct Transfer : std::enable_shared_from_this<Transfer> {
    // The thread's side.

    /// An address is asked for, the first one or that of a redirect; false when nobody waits for it any more.
    bool beginOpening();
    void beginReading(std::optional<std::uint64_t> length);
    /// Waits until there is room; false when nobody waits for more.
    bool store(std::string_view bytes);
    void end(bool whole);
    /// The last that the thread does.
    void finish();

    // The other side.

    /// Waits until so many bytes are there or no more come, but no longer than until then.
    void waitFor(std::size_t wanted, Clock::time_point end);
    std::size_t read(std::span<char> buffer);
    /// Leaves the thread to itself, which then closes what it has open as soon as the library lets it. True
    /// when it has, and has nothing left to do.
    bool abandon();
    bool isFinished() const;
    std::optional<InternetRequest::Silence> silence() const;

    mutable std::mutex mutex;
    std::condition_variable changed;
    const HttpTimeouts timeouts = httpTimeouts();
    HttpPace pace{timeouts, Clock::now()};
    Clock::time_point opening = Clock::now();
    bool opened = false;
    bool waitedFor = false;
    std::string received;
    std::size_t handedOut = 0;
    std::size_t limit = readAhead; ///< of what is received and not handed out; at least what is asked for
    std::uint64_t total = 0;
    std::optional<std::uint64_t> announced;
    bool ended = false;
    bool whole = false;
    bool abandoned = false;
    bool finished = false;

private:
    std::size_t available() const { return received.size() - handedOut; }
    Clock::time_point deadline() const;
    std::size_t take(std::span<char> buffer);
};

bool Transfer::beginOpening() {
    const std::lock_guard lock(mutex);
    opening = Clock::now();
    return !abandoned;
}

void Transfer::beginReading(std::optional<std::uint64_t> length) {
    const std::lock_guard lock(mutex);
    announced = length;
    opened = true;
    pace.restart(Clock::now());
    changed.notify_all();
}

bool Transfer::store(std::string_view bytes) {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return abandoned || available() < limit; });
    if (abandoned) return false;
    if (handedOut > received.size() / 2) received.erase(0, std::exchange(handedOut, 0));
    received += bytes;
    total += bytes.size();
    pace.arrived(bytes.size(), Clock::now());
    changed.notify_all();
    return true;
}

/// The library takes a connection that was closed too early for the end of the file.
void Transfer::end(bool regular) {
    const std::lock_guard lock(mutex);
    whole = regular && !abandoned && total >= announced.value_or(0);
}

void Transfer::finish() {
    const std::lock_guard lock(mutex);
    ended = true;
    finished = true;
    changed.notify_all();
}

/// While an address is opened the library connects and reads the headers; which of both it does is not told.
Clock::time_point Transfer::deadline() const {
    return opened ? pace.deadline() : opening + timeouts.connect + timeouts.silence;
}

void Transfer::waitFor(std::size_t wanted, Clock::time_point end) {
    std::unique_lock lock(mutex);
    changed.wait_until(lock, end, [this, wanted] { return ended || available() >= wanted; });
}

std::size_t Transfer::read(std::span<char> buffer) {
    std::unique_lock lock(mutex);
    limit = std::max(buffer.size(), readAhead);
    changed.notify_all();
    pace.resume(Clock::now());
    waitedFor = true;
    while (!ended && available() < buffer.size()) {
        if (Clock::now() < deadline()) {
            const Clock::time_point end = std::min(deadline(), Clock::now() + longestLook);
            lock.unlock();
            blocking(
                [self = shared_from_this(), wanted = buffer.size(), end] { self->waitFor(wanted, end); });
            lock.lock();
        } else {
            ended = abandoned = true;
        }
    }
    waitedFor = false;
    pace.suspend(Clock::now());
    return take(buffer);
}

std::size_t Transfer::take(std::span<char> buffer) {
    const std::size_t count = std::min(buffer.size(), available());
    std::copy_n(received.data() + handedOut, count, buffer.data());
    handedOut += count;
    return count;
}

/// A thread that does not hang in the library is gone in no time.
bool Transfer::abandon() {
    constexpr auto grace = std::chrono::seconds(1);
    std::unique_lock lock(mutex);
    const bool tooLate = std::exchange(abandoned, true);
    changed.notify_all();
    if (!tooLate) changed.wait_for(lock, grace, [this] { return finished; });
    return finished;
}

std::optional<InternetRequest::Silence> Transfer::silence() const {
    using std::chrono::milliseconds;
    const std::lock_guard lock(mutex);
    if (!waitedFor) return std::nullopt;
    const Clock::time_point now = Clock::now();
    return InternetRequest::Silence{
        std::chrono::duration_cast<milliseconds>(now - (opened ? pace.lastSign() : opening)),
        std::max(std::chrono::duration_cast<milliseconds>(deadline() - now), milliseconds(0))};
}

bool Transfer::isFinished() const {
    const std::lock_guard lock(mutex);
    return finished;
}

/// A thread and what it works on.
struct Worker {
    std::shared_ptr<Transfer> transfer;
    std::thread thread;
};

/// Threads that hang in the library. None is ever detached: the compiler's library, for which a detached
/// thread that ends at that moment has ended twice, would give what it keeps of it to two others. The list
/// outlives the program's statics, as its threads may.
std::vector<Worker>& hangingWorkers() {
    static auto* const workers = new std::vector<Worker>;
    return *workers;
}

void joinFinishedWorkers() {
    std::erase_if(hangingWorkers(), [](Worker& worker) {
        if (!worker.transfer->isFinished()) return false;
        worker.thread.join();
        return true;
    });
}

/// Redirects are followed here and not by the library, which would follow them to anywhere and any number of
/// them.
Handle open(Transfer& transfer, HINTERNET session, std::optional<std::string> address, DWORD flags) {
    for (int redirects = 0; address && redirects <= maxRedirects; ++redirects) {
        if (!transfer.beginOpening()) break;
        Handle handle(InternetOpenUrlA(session, address->c_str(), nullptr, 0, flags, 0));
        if (!handle) break;
        const std::string location =
            isRedirect(status(handle.get())) ? header(handle.get(), HTTP_QUERY_LOCATION) : std::string();
        if (location.empty()) return handle;
        address = redirectTarget(location, *address);
    }
    return Handle();
}

/// Only what is there already is read: a read of more would not return before all of it has come.
void receive(Transfer& transfer, HINTERNET request) {
    std::array<char, blockSize> block;
    for (;;) {
        DWORD available = 0;
        DWORD count = 0;
        if (InternetQueryDataAvailable(request, &available, 0, 0) == FALSE) return;
        const DWORD wanted = std::min<DWORD>(std::max<DWORD>(available, 1), block.size());
        const BOOL read = InternetReadFile(request, block.data(), wanted, &count);
        if (count > 0 && !transfer.store({block.data(), count})) return;
        if (read == FALSE || count == 0) return transfer.end(read != FALSE);
    }
}

/// Who closes a session closes its requests, and their numbers are given out again. So the thread has a share
/// of the session, and what it reads and closes is its own however long it takes.
void run(const std::shared_ptr<Transfer>& transfer, std::shared_ptr<const Handle> session,
         const std::string& address, DWORD flags) {
    try {
        const Handle handle = open(*transfer, session->get(), address, flags);
        if (handle) {
            transfer->beginReading(announcedLengthOf(handle.get()));
            receive(*transfer, handle.get());
        }
    } catch (...) { // an exception that left the thread would end the program
        transfer->end(false);
    }
    session.reset();
    transfer->finish();
}

void setTimeout(HINTERNET session, DWORD option, std::chrono::milliseconds time) {
    auto milliseconds = static_cast<DWORD>(time.count());
    InternetSetOptionA(session, option, &milliseconds, sizeof milliseconds);
}

} // namespace

struct InternetSession::State {
    std::shared_ptr<const Handle> handle; ///< each thread has a share of it
};

InternetSession::InternetSession(std::string_view agent, std::int32_t accessType)
    : state_(std::make_unique<State>()) {
    state_->handle = std::make_shared<const Handle>(InternetOpenA(
        windows::nearestAnsi(agent).c_str(), static_cast<DWORD>(accessType), nullptr, nullptr, 0));
    setTimeout(state_->handle->get(), INTERNET_OPTION_CONNECT_TIMEOUT, httpTimeouts().connect);
    setTimeout(state_->handle->get(), INTERNET_OPTION_RECEIVE_TIMEOUT, httpTimeouts().silence);
}

InternetSession::~InternetSession() = default;

struct InternetRequest::State {
    Worker worker;
    Transfer& transfer() const { return *worker.transfer; }
};

InternetRequest::InternetRequest(InternetSession& session, std::string_view url, std::uint32_t flags) {
    const std::optional<std::string> address = httpAddress(url);
    if (!address) return;
    joinFinishedWorkers();
    hangingWorkers().reserve(hangingWorkers().size() + 1); // the end of a request cannot fail
    auto state = std::make_unique<State>();
    state->worker.transfer = std::make_shared<Transfer>();
    try {
        state->worker.thread =
            std::thread(run, state->worker.transfer, session.state_->handle, *address, libraryFlags(flags));
    } catch (const std::system_error&) {
        return; // the system has no thread to spare
    }
    state_ = std::move(state);
}

InternetRequest::~InternetRequest() {
    if (!state_) return;
    if (state_->transfer().abandon())
        state_->worker.thread.join();
    else
        hangingWorkers().push_back(std::move(state_->worker));
}

std::size_t InternetRequest::read(std::span<char> buffer) {
    return state_ ? state_->transfer().read(buffer) : 0;
}

std::optional<InternetRequest::Silence> InternetRequest::silence() const {
    return state_ ? state_->transfer().silence() : std::nullopt;
}

bool InternetRequest::complete() const {
    if (!state_) return false;
    const std::lock_guard lock(state_->transfer().mutex);
    return state_->transfer().whole;
}

std::optional<std::uint64_t> InternetRequest::announcedLength() const {
    if (!state_) return std::nullopt;
    const std::lock_guard lock(state_->transfer().mutex);
    return state_->transfer().announced;
}

} // namespace platform
