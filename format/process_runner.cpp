#include "format/process_runner.h"

#include "platform/process.h"
#include "toolkit/message_box.h"
#include "toolkit/pump.h"

#include <cstdint>

namespace Module1 {

namespace {

void appendAvailable(platform::Pipe& pipe, std::uint32_t available, std::string& output) {
    std::string buffer(available, '\0');
    std::uint32_t count = 0;
    if (pipe.read(buffer, count))
        output.append(buffer, 0, count);
    else
        toolkit::messageBox("Reading data from file failed!", toolkit::Exclamation);
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
    do {
        std::uint32_t available = 0;
        pipe.peek(available);
        if (available > 0)
            appendAvailable(pipe, available, output);
        else if (isOver(process, pipe))
            break;
        toolkit::DoEvents();
    } while (!goesOn || goesOn());
    return output;
}

} // namespace Module1
