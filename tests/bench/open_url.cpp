// Seconds that OpenURL takes for one file, with the window shown and its status bar counting dots:
// open_url URL

#include "app/frmMain.h"
#include "app/program.h"
#include "online/download.h"
#include "toolkit/backend.h"
#include "toolkit/dispatch.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

int main(int argc, char** argv) {
    if (argc != 2) return EXIT_FAILURE;
    const auto program = std::make_unique<app::Program>();
    std::unique_ptr<frmMain> window;
    toolkit::run(argv[0], [&] {
        window = std::make_unique<frmMain>(*program);
        window->show();
        window->Timer1.setEnabled(false); // the check for updates is no part of this
        const auto started = std::chrono::steady_clock::now();
        const std::string text =
            online::OpenURL({window->StatusBar1.panel(2), window->prgUpdate}, argv[1], "1");
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - started;
        std::printf("%zu %.6f\n", text.size(), taken.count());
        std::fflush(stdout);
        toolkit::endAtOnce();
    });
    std::_Exit(EXIT_SUCCESS);
}
