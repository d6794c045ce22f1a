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
    LibraryNotLoaded = 48,
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

/// What the user can do about an error of that number; UTF-8. Never empty.
const char* advice(ErrorNumber number);

/// Raised where the program has no recovery; toolkit::dispatch() reports it, and is the end of it.
class RuntimeError : public std::runtime_error {
public:
    /// `subject` names what the error is about (a path, a control); empty when there is nothing to name.
    /// `advice` says what the user can do about it, where more is known than the number; else that of the
    /// number.
    explicit RuntimeError(ErrorNumber number, std::string subject = {}, std::string advice = {});

    ErrorNumber number() const noexcept { return number_; }
    const std::string& subject() const noexcept { return subject_; }
    const std::string& advice() const noexcept { return advice_; }

private:
    ErrorNumber number_;
    std::string subject_;
    std::string advice_;
};

} // namespace base
