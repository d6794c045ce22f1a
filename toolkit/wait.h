// Waiting for what may block, with a window that lives.
#pragma once

#include <functional>

namespace toolkit {

/// Does the job in the worker thread and returns when it is done; what it throws is thrown here. Meanwhile
/// windows are painted, moved and minimised and answer the window manager, and that is all that happens:
/// input, timers and messages of the system wait, and are handled where events are handled next. Only a wish
/// to end the program ends the wait: it throws Unwind, within half a second, and leaves a job that takes
/// longer to itself. So the job owns what it uses.
void waitPainting(const std::function<void()>& job);

/// While it exists, its function is called about every tenth of a second of every wait that paints. It may
/// change what controls show, and does nothing else.
class WaitObserver {
public:
    explicit WaitObserver(std::function<void()> look);
    WaitObserver(const WaitObserver&) = delete;
    WaitObserver& operator=(const WaitObserver&) = delete;
    ~WaitObserver();

private:
    friend void waitPainting(const std::function<void()>& job);
    std::function<void()> look_;
    WaitObserver* outer_;
};

} // namespace toolkit
