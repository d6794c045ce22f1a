#include "tools/fat32format/windows/second_process.h"

#include "tools/fat32format/windows/elevation.h"
#include "tools/fat32format/windows/first_process.h"

#include <windows.h>

namespace fat32format {

using platform::windows::UniqueHandle;

namespace {

/// Who waits learns who this is, and may not act in this one's name.
UniqueHandle openPipe(const std::wstring& name) {
    return UniqueHandle(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION,
                                    nullptr));
}

bool isServedByThisProgram(const UniqueHandle& pipe) {
    ULONG id = 0;
    if (GetNamedPipeServerProcessId(pipe.get(), &id) == FALSE) return false;
    const UniqueHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
    const std::wstring own = imageOf(GetCurrentProcess(), PROCESS_NAME_NATIVE);
    const std::wstring other = process ? imageOf(process.get(), PROCESS_NAME_NATIVE) : std::wstring();
    return !own.empty() && CompareStringOrdinal(own.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

} // namespace

std::unique_ptr<PipeDialogue> PipeDialogue::connect(std::uint64_t number) {
    UniqueHandle pipe = openPipe(pipeName(number));
    DWORD mode = PIPE_READMODE_MESSAGE;
    if (!pipe || !isServedByThisProgram(pipe) ||
        SetNamedPipeHandleState(pipe.get(), &mode, nullptr, nullptr) == FALSE)
        return nullptr;
    return std::make_unique<PipeDialogue>(MessagePipe(std::move(pipe)));
}

void PipeDialogue::print(const std::string& text) {
    for (const Message& message : printMessages(text)) {
        if (!pipe_.send(message)) return;
    }
}

std::optional<std::string> PipeDialogue::readLine() {
    if (!pipe_.send({Message::Kind::Ask, {}})) return std::nullopt;
    const auto message = pipe_.receive();
    if (!message || message->kind != Message::Kind::Line) return std::nullopt;
    return message->text;
}

void PipeDialogue::end() {
    pipe_.send({Message::Kind::End, {}});
}

} // namespace fat32format
