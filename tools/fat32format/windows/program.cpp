#include "tools/fat32format/windows/program.h"

#include "base/whole_number.h"
#include "tools/fat32format/windows/console_dialogue.h"
#include "tools/fat32format/windows/second_process.h"

#include <windows.h>

#include <exception>
#include <optional>
#include <string_view>

namespace fat32format {

namespace {

constexpr std::string_view pipeOption = "--pipe=";

int number(Status status) {
    return static_cast<int>(status);
}

/// Libraries come from the system's folder, never from the program's, where a download may have put one; and
/// no box stands in the way of whoever waits for the end.
/// https://learn.microsoft.com/windows/win32/api/libloaderapi/nf-libloaderapi-setdefaultdlldirectories
/// https://learn.microsoft.com/windows/win32/api/errhandlingapi/nf-errhandlingapi-seterrormode
void prepareProcess() {
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}

/// No memory, or an error of the C++ library's.
int guarded(Dialogue& dialogue, const std::function<int()>& work) {
    try {
        return work();
    } catch (const std::exception& error) {
        dialogue.print(printable(error.what()) + '\n');
        return number(Status::Failed);
    }
}

int runSecond(std::span<const std::string> arguments, const Surroundings& surroundings) {
    const auto pipe =
        base::wholeNumber<std::uint64_t>(std::string_view(arguments.back()).substr(pipeOption.size()));
    const auto options = parseArguments(arguments.first(arguments.size() - 1));
    if (!pipe || !options) return number(Status::Usage);
    const auto dialogue = PipeDialogue::connect(*pipe);
    if (!dialogue) return number(Status::Failed);
    const int status = guarded(*dialogue, [&] {
        if (surroundings.isElevated()) return number(surroundings.format(*dialogue, *options));
        dialogue->print("Windows has started the formatter without an administrator's rights. "
                        "Nothing has been changed.\n");
        return number(Status::NotAuthorised);
    });
    dialogue->end();
    return status;
}

int runFirst(Dialogue& dialogue, std::span<const std::string> arguments, const Surroundings& surroundings) {
    if (asksForHelp(arguments)) {
        dialogue.print(std::string(usage).append(help));
        return number(Status::Done);
    }
    const auto options = parseArguments(arguments);
    if (!options) {
        dialogue.print(std::string(usage));
        return number(Status::Usage);
    }
    if (!surroundings.isElevated()) return formatElevated(*options, dialogue, surroundings.start);
    return number(surroundings.format(dialogue, *options));
}

} // namespace

int run(std::span<const std::string> arguments, const Surroundings& surroundings) {
    prepareProcess();
    ConsoleDialogue dialogue;
    return guarded(dialogue, [&] {
        if (!arguments.empty() && arguments.back().starts_with(pipeOption))
            return runSecond(arguments, surroundings);
        return runFirst(dialogue, arguments, surroundings);
    });
}

} // namespace fat32format
