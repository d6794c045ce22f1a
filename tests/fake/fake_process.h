// The console programs and the accounts of the computer in memory.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace fake {

/// The console program that the next start begins. A test lets it work in the pump.
struct Child {
    std::string unread; ///< what is in the pipe
    bool running = false;

    void write(const std::string& text) { unread += text; }
    void exit() { running = false; }
};

struct Console {
    bool pipeFails = false;
    bool startFails = false;
    int failingReads = 0;
    std::function<void(Child&)> onStart;
    /// Runs when the program looks whether the child has ended, just before it is told.
    std::function<void(Child&)> onLook;
    Child child;

    // What the program did.
    std::vector<std::chrono::milliseconds> waits;
    std::vector<std::string> commandLines;
    /// "pipe", "start", "answer y", "end" (of a running one), "close process", …
    std::vector<std::string> calls;
};

struct Accounts {
    std::map<std::string, std::vector<std::string>> groups;
    std::string user;
};

Console& console();
Accounts& accounts();

/// New ones.
void resetConsole();

} // namespace fake
