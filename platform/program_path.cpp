#include "platform/program_path.h"

#include "platform/program_folder.h"

namespace platform {

std::string withBackslash(std::string folder) {
    if (!folder.ends_with('\\')) folder += '\\';
    return folder;
}

std::string programPath() {
    return withBackslash(programFolder());
}

} // namespace platform
