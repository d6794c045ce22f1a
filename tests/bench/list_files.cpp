// Seconds that the recursive listing of a drive takes: list_files ROOT

#include "drive/file_listing.h"
#include "toolkit/backend.h"
#include "toolkit/dispatch.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 2) return EXIT_FAILURE;
    toolkit::run(argv[0], [&] {
        std::vector<std::string> names;
        std::vector<std::int16_t> attributes;
        std::int32_t count = 0;
        const auto started = std::chrono::steady_clock::now();
        drive::GetAllFiles(argv[1], names, attributes, true, count);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - started;
        std::printf("%d %.6f\n", count, taken.count());
        std::fflush(stdout);
        toolkit::endAtOnce();
    });
    std::_Exit(EXIT_SUCCESS);
}
