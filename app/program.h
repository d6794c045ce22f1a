#pragma once

#include <memory>

class cDrive;
class cRegistry;
class cTray;
class frmMain;

namespace app {

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
