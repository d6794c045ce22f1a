#include "toolkit/qt/end_signals.h"

#include "toolkit/qt/form.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>

#include <sys/socket.h>
#include <unistd.h>

namespace toolkit::qt {

namespace {

constexpr std::array endSignals = {SIGTERM, SIGINT, SIGHUP};

volatile std::sig_atomic_t writeEnd = -1;

/// Writing is nearly all that a signal handler may do.
extern "C" void signalled(int) {
    const int savedError = errno;
    const char byte = 1;
    static_cast<void>(!::write(writeEnd, &byte, sizeof byte));
    errno = savedError;
}

void handle(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int number : endSignals) {
        struct sigaction before = {};
        // "nohup" lets a program go on when its terminal goes.
        const bool ignored = sigaction(number, nullptr, &before) == 0 && before.sa_handler == SIG_IGN;
        if (number != SIGHUP || !ignored) sigaction(number, &action, nullptr);
    }
}

} // namespace

EndSignals::EndSignals() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0) return;
    readEnd_ = ends[0];
    writeEnd = ends[1];
    auto* notifier = new QSocketNotifier(readEnd_, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] { read(); });
    handle(signalled);
}

EndSignals::~EndSignals() {
    if (readEnd_ < 0) return;
    handle(SIG_DFL);
    ::close(writeEnd);
    writeEnd = -1;
    ::close(readEnd_);
}

void EndSignals::read() {
    std::array<char, 16> bytes{};
    if (::read(readEnd_, bytes.data(), bytes.size()) > 0) requestProgramClose();
}

} // namespace toolkit::qt
