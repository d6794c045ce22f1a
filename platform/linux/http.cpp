// Downloads by libcurl's multi interface: nothing moves but inside read(), and little is read ahead.
// https://curl.se/libcurl/c/libcurl-multi.html
#include "platform/http.h"

#include "base/letters.h"
#include "platform/blocking.h"
#include "platform/http_address.h"
#include "platform/http_pace.h"
#include "platform/linux/base/libcurl.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <optional>
#include <string_view>
#include <utility>

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;

constexpr long receiveBufferSize = 128L * 1024; // few calls a megabyte, and it stays in the processor's cache
constexpr std::size_t readAhead = 128UL * 1024; // a fast server fills many times curl's buffer in one go
constexpr std::size_t largestHead = 256UL * 1024; // all headers of a request, its redirects included
constexpr long maxRedirects = 10;
constexpr const char* allowedProtocols = "http,https";
constexpr const char* secureProtocol = "https";

struct ListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

/// A write to a connection that the server has closed must not end the program. libcurl leaves that to its
/// caller once it is told to stay away from signals; the previous setting is put back for the sake of started
/// programs.
class BrokenPipeIgnored {
public:
    BrokenPipeIgnored() {
        struct sigaction ignore = {};
        ignore.sa_handler = SIG_IGN;
        sigaction(SIGPIPE, &ignore, &previous_);
    }
    BrokenPipeIgnored(const BrokenPipeIgnored&) = delete;
    BrokenPipeIgnored& operator=(const BrokenPipeIgnored&) = delete;
    ~BrokenPipeIgnored() { sigaction(SIGPIPE, &previous_, nullptr); }

private:
    struct sigaction previous_ = {};
};

/// What libcurl gave. Whoever waits for it in another thread has a share of it.
struct Handles {
    Handles() {
        static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
        if (started != CURLE_OK) return;
        multi = curl_multi_init();
        easy = curl_easy_init();
    }
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;
    ~Handles() {
        const BrokenPipeIgnored guard;
        curl_multi_remove_handle(multi, easy);
        curl_easy_cleanup(easy);
        curl_multi_cleanup(multi);
    }

    CURLM* multi = nullptr; // of its own: one request's reading moves no other
    CURL* easy = nullptr;
    std::unique_ptr<curl_slist, ListDeleter> headers;
    Clock::time_point handedOver; ///< when a wait last went to another thread
};

/// Waits until there is something to do; false when that cannot be waited for.
bool poll(const std::shared_ptr<Handles>& handles, std::chrono::milliseconds longest) {
    const auto look = [handles](std::chrono::milliseconds time, int& ready) {
        return curl_multi_poll(handles->multi, nullptr, 0, static_cast<int>(time.count()), &ready) ==
               CURLM_OK;
    };
    // Waiting in another thread lets the window live, and costs two changes of threads. So short waits are
    // done here, but not one after the other without end.
    const bool windowIsDue = Clock::now() - handles->handedOver >= std::chrono::milliseconds(50);
    const auto here = std::chrono::milliseconds(windowIsDue ? 1 : 10);
    int ready = 0;
    if (!look(std::min(here, longest), ready)) return false;
    if (ready > 0 || longest <= here) return true;
    const bool looked = blocking([look, longest] {
        int ignored = 0;
        return look(longest, ignored);
    });
    handles->handedOver = Clock::now();
    return looked;
}

} // namespace

struct InternetSession::State {
    std::string agent;
    bool systemProxy = true;
};

InternetSession::InternetSession(std::string_view agent, std::int32_t accessType)
    : state_(std::make_unique<State>()) {
    state_->agent = agent;
    state_->systemProxy = accessType == internetOpenPreconfig;
}

InternetSession::~InternetSession() = default;

struct InternetRequest::State {
    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void configure(const std::string& address, const std::string& agent, bool systemProxy);
    void forgetCaches();
    void stayOnSecureServers();
    void begin();
    void fill(std::size_t wanted);
    std::size_t take(std::span<char> buffer);

    const std::shared_ptr<Handles> handles = std::make_shared<Handles>();
    CURLM* const multi = handles->multi;
    CURL* const easy = handles->easy;
    HttpTimeouts timeouts = httpTimeouts();
    HttpPace pace{timeouts, Clock::now()};
    std::string received;
    std::size_t handedOut = 0;
    std::size_t limit = readAhead; ///< of what is received and not handed out; at least what is asked for
    bool paused = false;
    bool ended = false;
    bool whole = false;
    bool connecting = true;
    Clock::time_point connectingSince = Clock::now();
    bool waitedFor = false;
    std::size_t headBytes = 0;
    bool leadsOn = false; ///< the headers are those of a redirect to somewhere

private:
    std::size_t available() const { return received.size() - handedOut; }
    void connects();
    void resume();
    void step();
    void wait();
    bool arrivedWhole() const;
    void noteRedirect(std::string_view headerLine);

    static std::size_t onBody(char* data, std::size_t size, std::size_t count, void* request);
    static std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* request);
    static int onNameLookup(void* resolver, void* reserved, void* request);
    static int onSocket(void* request, curl_socket_t socket, curlsocktype purpose);
    static int onConnected(void* request, char* remote, char* local, int remotePort, int localPort);
};

void InternetRequest::State::configure(const std::string& address, const std::string& agent,
                                       bool systemProxy) {
    curl_easy_setopt(easy, CURLOPT_URL, address.c_str());
    curl_easy_setopt(easy, CURLOPT_USERAGENT, agent.c_str());
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, allowedProtocols);
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, allowedProtocols);
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, maxRedirects);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    // What a server compresses unasked stays so, also when it says that it is for the way only.
    curl_easy_setopt(easy, CURLOPT_HTTP_CONTENT_DECODING, 0L);
    curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, receiveBufferSize);
    // libcurl counts a millisecond that has begun as one that is over.
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(timeouts.connect.count() + 1));
    // A name server that says nothing holds its thread longer than the time-out; do not wait for that thread.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    if (!systemProxy) curl_easy_setopt(easy, CURLOPT_PROXY, "");
}

void InternetRequest::State::forgetCaches() {
    for (const char* header : {"Cache-Control: no-cache", "Pragma: no-cache"})
        if (curl_slist* longer = curl_slist_append(handles->headers.get(), header)) {
            (void)handles->headers.release(); // the same list, or its new beginning
            handles->headers.reset(longer);
        }
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, handles->headers.get());
}

/// Once a server is one by https, no redirect leads to one that is not.
void InternetRequest::State::stayOnSecureServers() {
    const char* scheme = nullptr;
    curl_easy_getinfo(easy, CURLINFO_SCHEME, &scheme);
    if (scheme != nullptr && base::startsWithNoCase(scheme, secureProtocol))
        curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, secureProtocol);
}

void InternetRequest::State::begin() {
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &State::onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &State::onHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_RESOLVER_START_FUNCTION, &State::onNameLookup);
    curl_easy_setopt(easy, CURLOPT_RESOLVER_START_DATA, this);
    curl_easy_setopt(easy, CURLOPT_SOCKOPTFUNCTION, &State::onSocket);
    curl_easy_setopt(easy, CURLOPT_SOCKOPTDATA, this);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &State::onConnected);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
    ended = curl_multi_add_handle(multi, easy) != CURLM_OK;
}

std::size_t InternetRequest::State::onBody(char* data, std::size_t size, std::size_t count, void* request) {
    auto& self = *static_cast<State*>(request);
    if (self.available() >= self.limit) {
        self.paused = true;
        return CURL_WRITEFUNC_PAUSE; // curl offers the same bytes again
    }
    self.received.append(data, size * count);
    self.pace.arrived(size * count, Clock::now());
    return size * count;
}

std::size_t InternetRequest::State::onHeader(char* data, std::size_t size, std::size_t count, void* request) {
    auto& self = *static_cast<State*>(request);
    self.headBytes += size * count;
    if (self.headBytes > largestHead) return 0; // an error
    self.noteRedirect({data, size * count});
    self.pace.arrived(0, Clock::now());
    return size * count;
}

/// libcurl counts an answer as a redirect when it has one of the codes and says where to.
void InternetRequest::State::noteRedirect(std::string_view headerLine) {
    constexpr std::string_view location = "Location:";
    if (base::startsWithNoCase(headerLine, "HTTP/")) leadsOn = false;
    if (!base::startsWithNoCase(headerLine, location)) return;
    long code = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &code);
    const bool somewhere =
        headerLine.substr(location.size()).find_first_not_of(" \t\r\n") != std::string_view::npos;
    if (code / 100 == 3 && somewhere) leadsOn = true;
}

// A redirect may lead to another server, and there the time-out for connecting holds again.
void InternetRequest::State::connects() {
    if (!std::exchange(connecting, true)) connectingSince = Clock::now();
}

int InternetRequest::State::onNameLookup(void* /*resolver*/, void* /*reserved*/, void* request) {
    static_cast<State*>(request)->connects();
    return 0;
}

int InternetRequest::State::onSocket(void* request, curl_socket_t /*socket*/, curlsocktype /*purpose*/) {
    static_cast<State*>(request)->connects();
    return CURL_SOCKOPT_OK;
}

int InternetRequest::State::onConnected(void* request, char* /*remote*/, char* /*local*/, int /*remotePort*/,
                                        int /*localPort*/) {
    auto& self = *static_cast<State*>(request);
    self.connecting = false;
    self.pace.restart(Clock::now());
    self.stayOnSecureServers();
    return CURL_PREREQFUNC_OK;
}

void InternetRequest::State::fill(std::size_t wanted) {
    if (ended || available() >= wanted) return;
    received.erase(0, handedOut);
    handedOut = 0;
    limit = std::max(wanted, readAhead);
    pace.resume(Clock::now());
    const BrokenPipeIgnored guard;
    waitedFor = true;
    resume();
    while (!ended && received.size() < wanted)
        step();
    waitedFor = false;
    pace.suspend(Clock::now());
}

void InternetRequest::State::resume() {
    if (!std::exchange(paused, false)) return;
    ended = curl_easy_pause(easy, CURLPAUSE_CONT) != CURLE_OK;
}

/// An error ends the file as its regular end does: what came before it has been received.
void InternetRequest::State::step() {
    const std::size_t before = received.size();
    int running = 0;
    ended = curl_multi_perform(multi, &running) != CURLM_OK || running == 0;
    if (ended) whole = arrivedWhole();
    if (!ended && received.size() == before) wait();
}

/// libcurl counts what the server announced, and chunks.
bool InternetRequest::State::arrivedWhole() const {
    int left = 0;
    const CURLMsg* const message = curl_multi_info_read(multi, &left);
    return message != nullptr && message->msg == CURLMSG_DONE && message->data.result == CURLE_OK;
}

void InternetRequest::State::wait() {
    // Not curl's own low-speed limit: that judges a mean of several seconds, and a slow server is not a
    // silent one.
    auto left = std::chrono::milliseconds(100);
    if (!connecting)
        left = std::min(
            left, std::chrono::duration_cast<std::chrono::milliseconds>(pace.deadline() - Clock::now()));
    ended = left.count() <= 0 || !poll(handles, left);
}

std::size_t InternetRequest::State::take(std::span<char> buffer) {
    const std::size_t count = std::min(buffer.size(), available());
    std::copy_n(received.data() + handedOut, count, buffer.data());
    handedOut += count;
    return count;
}

InternetRequest::InternetRequest(InternetSession& session, std::string_view url, std::uint32_t flags) {
    const std::optional<std::string> address = httpAddress(url);
    if (!address) return;
    loadLibcurl();
    state_ = std::make_unique<State>();
    state_->configure(*address, session.state_->agent, session.state_->systemProxy);
    if ((flags & internetFlagReload) != 0) state_->forgetCaches();
    state_->begin();
}

InternetRequest::~InternetRequest() = default;

std::size_t InternetRequest::read(std::span<char> buffer) {
    if (!state_) return 0;
    state_->fill(buffer.size());
    return state_->take(buffer);
}

std::optional<InternetRequest::Silence> InternetRequest::silence() const {
    using std::chrono::milliseconds;
    if (!state_ || !state_->waitedFor) return std::nullopt;
    const Clock::time_point since = state_->connecting ? state_->connectingSince : state_->pace.lastSign();
    const Clock::time_point end =
        state_->connecting ? since + state_->timeouts.connect : state_->pace.deadline();
    const Clock::time_point now = Clock::now();
    return Silence{std::chrono::duration_cast<milliseconds>(now - since),
                   std::max(std::chrono::duration_cast<milliseconds>(end - now), milliseconds(0))};
}

bool InternetRequest::complete() const {
    return state_ && state_->whole;
}

std::optional<std::uint64_t> InternetRequest::announcedLength() const {
    curl_off_t length = -1;
    if (!state_ || state_->leadsOn ||
        curl_easy_getinfo(state_->easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length) != CURLE_OK ||
        length < 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(length);
}

} // namespace platform
