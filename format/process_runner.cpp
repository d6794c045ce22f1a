#include "format/process_runner.h"

#include "platform/process.h"
#include "toolkit/message_box.h"
#include "toolkit/pump.h"

#include <chrono>
#include <cstdint>

using namespace std::chrono_literals;

namespace Module1 {

namespace {

/// How long one look after the program waits for something to happen; window events wait as long.
constexpr auto pause = 10ms;

/// False when there is nothing to read.
bool appendAvailable(platform::Pipe& pipe, std::string& output) {
    std::uint32_t available = 0;
    pipe.peek(available);
    if (available == 0) return false;
    std::string buffer(available, '\0');
    std::uint32_t count = 0;
    if (pipe.read(buffer, count))
        output.append(buffer, 0, count);
    else
        toolkit::messageBox("Reading data from file failed!", toolkit::Exclamation);
    return true;
}

/// The program may write and end between the look into the pipe and the look at the program, so an end counts
/// only with an empty pipe after it.
bool isOver(platform::Process& process, const platform::Pipe& pipe) {
    if (!process.ended()) return false;
    std::uint32_t available = 0;
    pipe.peek(available);
    return available == 0;
}

} // namespace

std::string runConsoleProgram(const std::string& commandLine, const std::function<bool()>& goesOn) {
    std::string output;
    platform::Pipe pipe;
    if (!pipe.created()) {
        toolkit::messageBox("Anonymous pipe could not be created!", toolkit::Exclamation);
        return output;
    }
    platform::Process process(commandLine, pipe);
    if (!process.started()) {
        toolkit::messageBox("New process could not be created!", toolkit::Exclamation);
        return output;
    }
    process.answer("y");
    for (;;) {
        const bool hasWritten = appendAvailable(pipe, output);
        if (!hasWritten && isOver(process, pipe)) return output;
        toolkit::DoEvents();
        if (goesOn && !goesOn()) break;
        if (!hasWritten) process.wait(pause);
    }
    if (!process.ended()) return {};
    appendAvailable(pipe, output);
    return output;
}

} // namespace Module1
