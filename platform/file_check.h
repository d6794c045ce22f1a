// What a file operation came to, as the error that ends the program.
#pragma once

#include "base/runtime_error.h"
#include "platform/files.h"

#include <string>
#include <string_view>

namespace platform {

/// The error that a failure is. `result` is not Ok.
base::ErrorNumber errorNumber(FileResult result);

/// Throws base::RuntimeError with that error and the subject, a path, unless the result is Ok. `advice` as of
/// that error.
void check(FileResult result, std::string_view subject, std::string advice = {});

} // namespace platform
