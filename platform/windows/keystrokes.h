// Typing for a program that this one has started. Whatever is typed reaches that program only.
#pragma once

#include <string_view>

#include <windows.h>

namespace platform::windows {

/// Types a text into the console of a process, as its keyboard would. False as long as the process has none,
/// and when this program has one itself: then it may be the same, and others may share it.
/// https://learn.microsoft.com/windows/console/attachconsole
bool typeIntoConsole(DWORD process, std::string_view text);

/// Types a text into the active window if that is one of the process, and waits for up to a second until it
/// is processed. A console's window is left out: the console itself takes the keys sooner.
/// https://learn.microsoft.com/windows/win32/api/winuser/nf-winuser-sendinput
void typeIntoWindow(DWORD process, std::string_view text);

} // namespace platform::windows
