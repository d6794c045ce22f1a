// A process at the other end of the pipe that does not say what it should: other_end.exe NUMBER WHAT
#include "tools/fat32format/windows/first_process.h"
#include "tools/fat32format/windows/message_pipe.h"
#include "tools/fat32format/windows/security.h"

#include <windows.h>

#include <cstdlib>
#include <string>

using namespace fat32format;
using platform::windows::UniqueHandle;

namespace {

constexpr DWORD patience = 50'000; // milliseconds

void writeRaw(HANDLE pipe, const std::string& bytes) {
    OVERLAPPED operation{};
    DWORD count = 0;
    WriteFile(pipe, bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, &operation);
    GetOverlappedResult(pipe, &operation, &count, TRUE);
}

/// As the formatter would.
int behave(UniqueHandle handle) {
    MessagePipe pipe(std::move(handle));
    pipe.send({Message::Kind::Print, "hello\n"});
    pipe.send({Message::Kind::Ask, {}});
    const auto answer = pipe.receive();
    pipe.send({Message::Kind::Print, answer ? *bytesOf(*answer) : "nothing"});
    pipe.send({Message::Kind::End, {}});
    return 5;
}

int serve(std::uint64_t number) {
    const UniqueHandle pipe = pipeForOneOther(pipeName(number), longestMessage);
    const UniqueHandle ready(OpenEventA(EVENT_MODIFY_STATE, FALSE, "other-end-is-ready"));
    SetEvent(ready.get());
    Sleep(patience);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 1;
    const std::uint64_t number = std::strtoull(argv[1], nullptr, 10);
    const std::string what = argv[2];
    if (what == "early") return 3;
    if (what == "serve") return serve(number);
    if (what == "silent") Sleep(patience);
    UniqueHandle pipe(CreateFileW(pipeName(number).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
    DWORD mode = PIPE_READMODE_MESSAGE;
    if (!pipe || SetNamedPipeHandleState(pipe.get(), &mode, nullptr, nullptr) == FALSE) return 1;
    if (what == "behave") return behave(std::move(pipe));
    writeRaw(pipe.get(), "print hello\n");
    if (what == "escape") writeRaw(pipe.get(), "print \x1B[2J");
    if (what == "bytes") writeRaw(pipe.get(), "print \xFF\xFE");
    if (what == "word") writeRaw(pipe.get(), "format E:");
    if (what == "line") writeRaw(pipe.get(), "line y");
    if (what == "nothing") writeRaw(pipe.get(), "");
    if (what == "oversize") writeRaw(pipe.get(), "print " + std::string(longestMessage, 'x'));
    if (what == "crash") {
        writeRaw(pipe.get(), "end");
        pipe.close();
        ExitProcess(0xC0000005);
    }
    if (what != "vanish") { // until the other one has judged it
        OVERLAPPED operation{};
        char byte = 0;
        DWORD count = 0;
        ReadFile(pipe.get(), &byte, 1, nullptr, &operation);
        GetOverlappedResult(pipe.get(), &operation, &count, TRUE);
    }
    return 0;
}
