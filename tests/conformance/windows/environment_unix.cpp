#include "tests/conformance/windows/environment_unix.h"

#include <windows.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

namespace conformance {

namespace {

constexpr auto patience = std::chrono::seconds(60);
constexpr DWORD pause = 5; // milliseconds between two looks

} // namespace

void startShell(const std::string& command) {
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    std::string line = "Z:\\bin\\sh -c \"" + command + "\"";
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                       &process) == FALSE)
        throw std::runtime_error("cannot start " + line);
}

void waitForFile(const std::wstring& path) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!std::ifstream(fs::path(path))) { // who has given it its name may still have it open
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("a program of the host does not answer");
        Sleep(pause);
    }
}

std::string outputOfShell(const std::string& command) {
    static int counter = 0;
    const std::string name =
        "shell-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(counter++);
    const fs::path file = fs::temp_directory_path() / name;
    const std::string host = hostPath(fs::temp_directory_path().wstring()) + "/" + name;
    startShell("(" + command + ") > '" + host + ".part'; mv '" + host + ".part' '" + host + "'");
    waitForFile(file.wstring());
    std::string text;
    {
        std::ifstream in(file, std::ios::binary);
        text.assign(std::istreambuf_iterator<char>(in), {});
    }
    fs::remove(file);
    return text;
}

std::string hostPath(const std::wstring& path) {
    using UnixFileName = char*(__cdecl*)(const wchar_t*);
    const FARPROC function = GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name");
    if (function == nullptr) throw std::runtime_error("this is not Wine");
    char* name = reinterpret_cast<UnixFileName>(reinterpret_cast<void*>(function))(path.c_str());
    if (name == nullptr) throw std::runtime_error("the host has no such file");
    std::string result = name;
    HeapFree(GetProcessHeap(), 0, name);
    return result;
}

} // namespace conformance
