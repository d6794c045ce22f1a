// How messages are handled, the same way in every loop of the program: the main one, that of a modal window
// and the pump.
#pragma once

#include <windows.h>

#include <chrono>
#include <functional>

namespace toolkit::win32 {

/// The program starts: loops run.
void startLoops();

/// Makes every loop return, those of message boxes and menus included.
void endLoops();

bool loopsEnd();

/// Handles messages until `done` says so or the program ends.
void loopUntil(const std::function<bool()>& done);

/// Handles the messages that are there, for so long at the most.
void handlePending(std::chrono::milliseconds longest);

/// Handles what a window must not wait for, for so long or until endPainting(): painting, what other programs
/// and the system ask it, its frame. All input of the user stays where it is, in its order.
void handlePaintingOnly(std::chrono::milliseconds longest);

/// Makes handlePaintingOnly() return, also one that has not begun yet. For every thread.
void endPainting();

/// Is an arrow key being handled? It chooses the option button that it leads to.
bool arrowKeyMoves();

/// A message box that is open, as long as this lives.
class OpenBox {
public:
    explicit OpenBox(HWND box);
    OpenBox(const OpenBox&) = delete;
    OpenBox& operator=(const OpenBox&) = delete;
    ~OpenBox();

private:
    HWND box_;
};

} // namespace toolkit::win32
