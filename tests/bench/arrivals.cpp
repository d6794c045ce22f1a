// A stick that goes and comes 1,000 times: milliseconds that one time takes, the median of the first hundred
// and of the last, and the kilobytes by which the program grows between them.

#include "app/frmMain.h"
#include "app/program.h"
#include "drive/cDrive.h"
#include "drive/device_monitor.h"
#include "toolkit/backend.h"
#include "toolkit/dispatch.h"
#include "toolkit/pump.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::size_t arrivals = 1000;
constexpr std::size_t compared = 100;

double median(std::vector<double>::iterator begin) {
    std::vector<double> times(begin, begin + compared);
    std::sort(times.begin(), times.end());
    return times[compared / 2];
}

long kilobytesInUse() {
    std::ifstream file("/proc/self/status");
    for (std::string word; file >> word;)
        if (word == "VmRSS:") {
            long kilobytes = 0;
            file >> kilobytes;
            return kilobytes;
        }
    return 0;
}

} // namespace

int main(int, char** argv) {
    const auto program = std::make_unique<app::Program>();
    std::unique_ptr<frmMain> window;
    toolkit::run(argv[0], [&] {
        window = std::make_unique<frmMain>(*program);
        window->show();
        window->Timer1.setEnabled(false); // the check for updates is no part of this
        std::vector<double> times;
        long before = 0;
        while (times.size() < arrivals) {
            if (times.size() == compared) before = kilobytesInUse();
            const auto started = std::chrono::steady_clock::now();
            drive::deviceRemoved(*program->Drive);
            drive::deviceArrived(*program->Drive, false);
            toolkit::DoEvents();
            times.push_back(Milliseconds(std::chrono::steady_clock::now() - started).count());
        }
        std::printf("%.4f %.4f %ld\n", median(times.begin()), median(times.end() - compared),
                    kilobytesInUse() - before);
        std::fflush(stdout);
        toolkit::endAtOnce();
    });
    std::_Exit(EXIT_SUCCESS);
}
