#include "app/frmMain.h"
#include "app/program.h"
#include "platform/volumes.h"
#include "toolkit/backend.h"

#include <cstdlib>
#include <memory>

int main(int argc, char** argv) {
    // They outlive the event loop, and stay untouched when the program ends at once.
    const auto program = std::make_unique<app::Program>();
    std::unique_ptr<frmMain> mainWindow;

    const toolkit::Ending ending = toolkit::run(argc, argv, [&] {
        mainWindow = std::make_unique<frmMain>(*program);
        mainWindow->show();
    });

    platform::releaseVolumes();
    if (ending.atOnce) std::_Exit(ending.status);
    return ending.status;
}
