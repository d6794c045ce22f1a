// The desktop's shell: opening documents, folders and web addresses with the program that goes with them.
#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

/// Handle of a window; 0 stands for the desktop window.
using ShellOwner = std::intptr_t;

constexpr int showNormal = 1; ///< Windows: SW_SHOWNORMAL

/// Codes of shellExecute(); more than 32 is success.
enum ShellCode : int {
    ShellFileNotFound = 2,
    ShellPathNotFound = 3,
    ShellAccessDenied = 5,
    ShellNoAssociation = 31,
    ShellAccepted = 33,
};

/// Carries out `verb` ("open") on a document, folder or address. Returns at once; does not wait for what it
/// starts. Windows: `ShellExecuteA`,
/// https://learn.microsoft.com/windows/win32/api/shellapi/nf-shellapi-shellexecutea
int shellExecute(ShellOwner owner, std::string_view verb, std::string_view file, std::string_view parameters,
                 std::string_view directory, int showCommand);

/// Shows a folder in the desktop's file browser, as shellExecute() with the verb "open" does, and returns its
/// codes. For anything that is no folder nothing is started: ShellPathNotFound. The folder is handed over in
/// a form that can mean nothing else, whatever it is called ("Fotos.exe") and whatever lies beside it.
int showFolder(ShellOwner owner, std::string_view folder);

/// Starts the shell's open-with chooser by its command line, "rundll32.exe shell32.dll,OpenAs_RunDLL " and
/// the file, in a normal window with the focus; false when it could not be started.
bool startOpenWithChooser(std::string_view commandLine);

} // namespace platform
