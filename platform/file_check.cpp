#include "platform/file_check.h"

#include <utility>

namespace platform {

/// A FileResult has the value of its error number.
base::ErrorNumber errorNumber(FileResult result) {
    return static_cast<base::ErrorNumber>(result);
}

void check(FileResult result, std::string_view subject, std::string advice) {
    if (result == FileResult::Ok) return;
    throw base::RuntimeError(errorNumber(result), std::string(subject), std::move(advice));
}

} // namespace platform
