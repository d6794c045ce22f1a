#include "tests/driver/windows/said.h"

#include "tests/driver/windows/common_controls.h"
#include "tests/driver/windows/names.h"
#include "tests/driver/windows/request.h"
#include "tests/driver/windows/target.h"

#include <future>
#include <mutex>
#include <thread>
#include <utility>

namespace probe {

namespace {

std::mutex guard;
std::vector<Said> list;

/// A child is a panel of a status bar, counted from 1.
Said said(HWND window, LONG child) {
    std::string name(nameOf(GetDlgCtrlID(window)));
    if (child == CHILDID_SELF) return {name, textOf(window)};
    name += '_' + std::to_string(child);
    return {name, contentsOf(Part{name, window, static_cast<int>(child) - 1}).text};
}

constexpr UINT heardMessage = WM_APP;

/// The text is asked for later: while it is, the next event may come.
void CALLBACK heard(HWINEVENTHOOK, DWORD, HWND window, LONG object, LONG child, DWORD, DWORD) {
    if (object != OBJID_CLIENT) return;
    PostThreadMessageW(GetCurrentThreadId(), heardMessage, reinterpret_cast<WPARAM>(window), child);
}

void note(HWND window, LONG child) {
    try {
        const Said now = said(window, child);
        const std::lock_guard lock(guard);
        list.push_back(now);
    } catch (const Failure&) {
        // The program ended before its text was asked for.
    }
}

/// The system calls the hook in the thread that has set it, while that waits for messages.
void listen(std::promise<void> listening) {
    SetWinEventHook(EVENT_OBJECT_LIVEREGIONCHANGED, EVENT_OBJECT_LIVEREGIONCHANGED, nullptr, heard, 0, 0,
                    WINEVENT_OUTOFCONTEXT);
    listening.set_value();
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        if (message.message == heardMessage)
            note(reinterpret_cast<HWND>(message.wParam), static_cast<LONG>(message.lParam));
}

bool startListening() {
    std::promise<void> listening;
    const std::future<void> begun = listening.get_future();
    std::thread(listen, std::move(listening)).detach();
    begun.wait();
    return true;
}

} // namespace

std::vector<Said> takeSaid() {
    [[maybe_unused]] static const bool started = startListening();
    const std::lock_guard lock(guard);
    return std::exchange(list, {});
}

} // namespace probe
