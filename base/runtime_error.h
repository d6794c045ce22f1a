// The one exception type of the program: an error that nothing handles.
#pragma once

#include <stdexcept>
#include <string>

namespace base {

/// The classic run-time error numbers that this program can end with.
enum class ErrorNumber {
    InvalidProcedureCall = 5,
    Overflow = 6,
    SubscriptOutOfRange = 9,
    DivisionByZero = 11,
    TypeMismatch = 13,
    FileNotFound = 53,
    DeviceIo = 57,
    DiskFull = 61,
    PermissionDenied = 70,
    DiskNotReady = 71,
    PathFileAccess = 75,
    PathNotFound = 76,
    InvalidPicture = 481,
    ControlNotFound = 730,
};

/// The German description that belongs to a number; UTF-8.
const char* description(ErrorNumber number);

/// Raised where the program has no recovery; caught in one place only, toolkit::dispatch().
class RuntimeError : public std::runtime_error {
public:
    /// `subject` names what the error is about (a path, a control); empty when there is nothing to name.
    explicit RuntimeError(ErrorNumber number, std::string subject = {});

    ErrorNumber number() const noexcept { return number_; }
    const std::string& subject() const noexcept { return subject_; }

private:
    ErrorNumber number_;
    std::string subject_;
};

} // namespace base
