#include "platform/file_check.h"

#include <string>

namespace platform {

/// A FileResult has the value of its error number.
base::ErrorNumber errorNumber(FileResult result) {
    return static_cast<base::ErrorNumber>(result);
}

void check(FileResult result, std::string_view subject) {
    if (result != FileResult::Ok) throw base::RuntimeError(errorNumber(result), std::string(subject));
}

} // namespace platform
