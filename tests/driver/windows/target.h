// The program's windows and their parts, as anybody finds them: by process, by the class of a window, which
// is the name of its form, and by the identifier of a control.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

namespace probe {

/// The program's visible windows, the one in front first. Every process whose file bears the program's name
/// counts; there is one at a time.
std::vector<HWND> programWindows();

/// The visible windows of all other programs.
std::vector<HWND> otherWindows();

/// Those of programWindows() that belong to a form or are a message box.
std::vector<HWND> forms();
bool isMessageBox(HWND window);
std::string className(HWND window);

/// The main window, which exists before it is shown. Throws Failure when there is none.
HWND mainWindow();

/// The window of that form. Without a name it is the one that the user has to do with: the first that is not
/// blocked. Throws Failure when there is none.
HWND findWindow(std::string_view name);

/// A part of a window: a control, one of the panels of a status bar, or the window itself.
struct Part {
    std::string name;
    HWND handle = nullptr; ///< of the status bar, for a panel
    int panel = -1;        ///< number of the panel, from 0

    HWND window() const { return GetAncestor(handle, GA_ROOT); }
};

/// The part of that name in a window; without a window's name in the one in front, else in any. Throws
/// Failure.
Part findPart(std::string_view window, std::string_view name);

/// All visible parts of a window.
std::vector<Part> partsOf(HWND window);

/// Sends a message and waits for the answer, with a deadline. Throws Failure when none comes.
LRESULT ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

std::wstring textOf(HWND window);

} // namespace probe
