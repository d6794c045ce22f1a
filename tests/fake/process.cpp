#include "fake_process.h"

#include "platform/process.h"

#include <algorithm>

namespace fake {

namespace {
Console theConsole;
}

Console& console() {
    return theConsole;
}

void resetConsole() {
    theConsole = {};
    accounts() = {};
}

} // namespace fake

namespace platform {

using fake::console;

struct Pipe::State {};

Pipe::Pipe() {
    console().calls.emplace_back("pipe");
    if (!console().pipeFails) state_ = std::make_unique<State>();
}

Pipe::~Pipe() {
    if (state_) console().calls.emplace_back("close pipe");
}

bool Pipe::peek(std::uint32_t& available) const {
    available = static_cast<std::uint32_t>(console().child.unread.size());
    return true;
}

bool Pipe::read(std::span<char> buffer, std::uint32_t& count) {
    count = 0;
    if (console().failingReads > 0) {
        --console().failingReads;
        return false;
    }
    std::string& unread = console().child.unread;
    count = static_cast<std::uint32_t>(std::min(buffer.size(), unread.size()));
    std::copy_n(unread.begin(), count, buffer.begin());
    unread.erase(0, count);
    return true;
}

struct Process::State {};

Process::Process(std::string_view commandLine, Pipe&) {
    console().calls.emplace_back("start");
    console().commandLines.emplace_back(commandLine);
    if (console().startFails) return;
    state_ = std::make_unique<State>();
    console().child = {};
    console().child.running = true;
    if (console().onStart) console().onStart(console().child);
}

Process::~Process() {
    if (!state_) return;
    if (console().child.running) console().calls.emplace_back("end");
    console().child.running = false;
    console().calls.emplace_back("close process");
}

void Process::answer(std::string_view text) {
    console().calls.push_back("answer " + std::string(text));
}

void Process::wait(std::chrono::milliseconds longest) {
    console().waits.push_back(longest);
}

bool Process::ended() {
    if (console().onLook) console().onLook(console().child);
    return !console().child.running;
}

} // namespace platform
