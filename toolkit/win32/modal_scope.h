#pragma once

#include <windows.h>

#include <vector>

namespace toolkit::win32 {

/// As long as it lives every visible window of the program but one is deaf.
class ModalScope {
public:
    /// `modal` is the window that stays; null disables all that are there.
    explicit ModalScope(HWND modal);
    ModalScope(const ModalScope&) = delete;
    ModalScope& operator=(const ModalScope&) = delete;
    ~ModalScope() { end(); }

    /// Comes before the modal window is hidden: the system would put another program in front.
    void end();

private:
    std::vector<HWND> deaf_;
};

} // namespace toolkit::win32
