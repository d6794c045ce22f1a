// Plays the formatter of hard disks. What it does is told by the file "formatter.txt" beside it, a word a
// line: it notes how it was called, then "answer" waits for the answer and notes it, "key" does so at the
// keyboard of its console, "hang" never ends, "status 3" sets its exit status, and any other line is written
// as it stands; "part " in front of it leaves out the line end.
#include <windows.h>

#include <conio.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

namespace {

std::string folder() {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string text = path;
    return text.substr(0, text.rfind('\\') + 1);
}

void note(const std::string& name, const std::string& text) {
    const std::string path = folder() + name;
    std::ofstream(path + ".part", std::ios::binary) << text << '\n';
    MoveFileExA((path + ".part").c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING);
}

/// From the standard input, which may be the console, a pipe, or gone.
std::string answer() {
    std::string line;
    std::getline(std::cin, line);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

bool startsWith(const std::string& text, const std::string& head) {
    return text.compare(0, head.size(), head) == 0;
}

} // namespace

int main(int count, char** arguments) {
    std::string call;
    for (int i = 1; i < count; ++i)
        call += (i > 1 ? " " : "") + std::string(arguments[i]);
    note("number", std::to_string(GetCurrentProcessId()));
    note("called", call);
    int status = 0;
    std::ifstream script(folder() + "formatter.txt");
    for (std::string line; std::getline(script, line);) {
        if (line == "answer") {
            std::cout << "Warning: all data will be lost. Proceed (y/n)?" << std::flush;
            note("answered", answer());
        } else if (line == "key") {
            note("answered", std::string(1, static_cast<char>(_getch())));
        } else if (line == "hang") {
            note("hanging", "");
            Sleep(INFINITE);
        } else if (startsWith(line, "status ")) {
            status = std::atoi(line.c_str() + 7);
        } else if (startsWith(line, "part ")) {
            std::cout << line.substr(5) << std::flush;
        } else if (startsWith(line, "many ")) {
            std::cout << std::string(static_cast<std::size_t>(std::atoi(line.c_str() + 5)), 'x');
        } else {
            std::cout << line << std::endl;
        }
    }
    return status;
}
