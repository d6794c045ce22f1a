#include "app/command_line.h"
#include "app/frmMain.h"
#include "app/program.h"
#include "platform/console.h"
#include "platform/system_path.h"
#include "platform/volumes.h"
#include "toolkit/backend.h"
#include "toolkit/dispatch.h"
#include "toolkit/worker.h"

#include <cstdlib>
#include <memory>

int main(int argc, char** argv) {
    if (const auto answer = app::answerTo({argv, static_cast<std::size_t>(argc)})) {
        platform::print(*answer);
        return 0;
    }

    // They outlive the event loop, and stay untouched when the program ends at once.
    const auto program = std::make_unique<app::Program>();
    std::unique_ptr<frmMain> mainWindow;

    toolkit::writeSubjectsAs(platform::systemPath);
    const toolkit::Ending ending = toolkit::run(argv[0], [&] {
        mainWindow = std::make_unique<frmMain>(*program);
        mainWindow->show();
    });

    platform::releaseVolumes();
    if (ending.atOnce || toolkit::abandonedJobsRun()) std::_Exit(ending.status);
    return ending.status;
}
