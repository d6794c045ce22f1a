#pragma once

namespace toolkit {

/// Sets a flag as long as it lives: the end of the program leaves a handler by an exception.
class ScopedFlag {
public:
    explicit ScopedFlag(bool& flag) noexcept : flag_(flag) { flag_ = true; }
    ScopedFlag(const ScopedFlag&) = delete;
    ScopedFlag& operator=(const ScopedFlag&) = delete;
    ~ScopedFlag() { flag_ = false; }

private:
    bool& flag_;
};

} // namespace toolkit
