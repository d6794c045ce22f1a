// Measures how long programs take to start: start_time PAIRS COMMAND [COMMAND]
// Starts the commands in turn, PAIRS times, and writes a line for each turn: the milliseconds from the start
// of each until its window is seen and it waits for input. "controls COMMAND" writes how many windows are in
// its window.

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

constexpr DWORD patience = 30'000; // milliseconds

struct Search {
    DWORD process = 0;
    HWND window = nullptr;
};

BOOL CALLBACK lookAt(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<Search*>(parameter);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == search.process && IsWindowVisible(window) != FALSE) search.window = window;
    return search.window == nullptr ? TRUE : FALSE;
}

BOOL CALLBACK count(HWND /*window*/, LPARAM parameter) {
    ++*reinterpret_cast<int*>(parameter);
    return TRUE;
}

/// A running program; it is ended when this object goes.
class Started {
public:
    explicit Started(std::string command) {
        STARTUPINFOA start{};
        start.cb = sizeof start;
        if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                           &process_) == FALSE)
            throw std::runtime_error("cannot start " + command);
    }
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;
    ~Started() {
        TerminateProcess(process_.hProcess, 0);
        WaitForSingleObject(process_.hProcess, patience);
        CloseHandle(process_.hThread);
        CloseHandle(process_.hProcess);
    }

    /// Its window, once it is seen and the program waits for input.
    HWND window() const {
        if (WaitForInputIdle(process_.hProcess, patience) != 0)
            throw std::runtime_error("the program does not wait");
        Search search{process_.dwProcessId, nullptr};
        const ULONGLONG end = GetTickCount64() + patience;
        while (EnumWindows(lookAt, reinterpret_cast<LPARAM>(&search)), search.window == nullptr) {
            if (GetTickCount64() > end) throw std::runtime_error("there is no window");
            Sleep(1);
        }
        return search.window;
    }

private:
    PROCESS_INFORMATION process_{};
};

double milliseconds(const std::string& command) {
    LARGE_INTEGER frequency;
    LARGE_INTEGER before;
    LARGE_INTEGER after;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&before);
    const Started started(command);
    static_cast<void>(started.window());
    QueryPerformanceCounter(&after);
    return static_cast<double>(after.QuadPart - before.QuadPart) * 1000 /
           static_cast<double>(frequency.QuadPart);
}

void run(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == "controls") {
        int controls = 0;
        EnumChildWindows(Started(argv[2]).window(), count, reinterpret_cast<LPARAM>(&controls));
        std::printf("%d\n", controls);
        return;
    }
    for (int turn = 0; argc > 2 && turn < std::atoi(argv[1]); ++turn) {
        for (int i = 2; i < argc; ++i)
            std::printf("%.2f ", milliseconds(argv[i]));
        std::printf("\n");
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        run(argc, argv);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
}
