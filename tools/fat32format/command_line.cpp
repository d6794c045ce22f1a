#include "tools/fat32format/command_line.h"

#include "base/letters.h"
#include "base/whole_number.h"

#include <bit>

namespace fat32format {

namespace {

/// N of "-cN"; 0 when it is none.
unsigned clusterOption(std::string_view argument) {
    if (!argument.starts_with("-c")) return 0;
    argument.remove_prefix(2);
    const unsigned sectors = base::wholeNumber<unsigned>(argument).value_or(0);
    return sectors <= mostSectorsPerCluster && std::has_single_bit(sectors) ? sectors : 0;
}

/// X of "X:", in upper case; 0 when it is none.
char driveLetter(std::string_view argument) {
    if (argument.size() != 2 || argument[1] != ':') return 0;
    return base::isLetter(argument[0]) ? base::upper(argument[0]) : '\0';
}

} // namespace

bool asksForHelp(std::span<const std::string> arguments) {
    return arguments.size() == 1 &&
           (arguments[0] == "--help" || arguments[0] == "-?" || arguments[0] == "/?");
}

std::optional<Options> parseArguments(std::span<const std::string> arguments) {
    Options options;
    for (const std::string& argument : arguments) {
        if (argument == "--any-bus" && !options.anyBus) {
            options.anyBus = true;
        } else if (const unsigned sectors = clusterOption(argument);
                   sectors != 0 && options.sectorsPerCluster == 0) {
            options.sectorsPerCluster = sectors;
        } else if (const char letter = driveLetter(argument); letter != 0 && options.letter == 0) {
            options.letter = letter;
        } else {
            return std::nullopt;
        }
    }
    if (options.letter == 0 || options.sectorsPerCluster == 0) return std::nullopt;
    return options;
}

} // namespace fat32format
