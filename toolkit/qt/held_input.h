// What the user does while a wait paints: kept, and done afterwards.
#pragma once

namespace toolkit::qt {

/// Keeps the user's input from all windows as long as it lives; it comes to them among the held events,
/// before what the user does next. What is dropped on a window is refused. The wish to close a window is no
/// input, nor is what the window manager does with windows.
class HeldInput {
public:
    HeldInput();
    HeldInput(const HeldInput&) = delete;
    HeldInput& operator=(const HeldInput&) = delete;
    ~HeldInput();

private:
    bool before_;
};

} // namespace toolkit::qt
