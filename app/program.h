// What there is once in the program and what every part of it reaches.
#pragma once

#include <memory>
#include <string_view>

class cDrive;
class cRegistry;
class cTray;
class frmMain;

namespace app {

/// The program's version; the server names the one that is current.
constexpr std::string_view programVersion = "1.5";

constexpr std::string_view programTitle = "Orvanta USB-Stick Internetupdate Tool ";

/// The program-wide objects: created when the main window loads, released in a fixed order when it closes.
struct Program {
    Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    std::unique_ptr<cTray> Tray;
    std::unique_ptr<cDrive> Drive;
    std::unique_ptr<cRegistry> Registry;
    frmMain* MainWindow = nullptr; ///< null before its load and after the release
    bool OpenOnArrival = false;    ///< a stick that arrives is opened, too; nothing sets it
};

} // namespace app
