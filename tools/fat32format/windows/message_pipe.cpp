#include "tools/fat32format/windows/message_pipe.h"

#include <windows.h>

#include <utility>

namespace fat32format {

using platform::windows::UniqueHandle;

MessagePipe::MessagePipe(UniqueHandle pipe)
    : pipe_(std::move(pipe)), done_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

bool MessagePipe::send(const Message& message) {
    const auto bytes = bytesOf(message);
    if (!pipe_ || !done_ || !bytes) return false;
    OVERLAPPED operation{};
    operation.hEvent = done_.get();
    DWORD written = 0;
    if (WriteFile(pipe_.get(), bytes->data(), static_cast<DWORD>(bytes->size()), nullptr, &operation) ==
            FALSE &&
        GetLastError() != ERROR_IO_PENDING)
        return false;
    return GetOverlappedResult(pipe_.get(), &operation, &written, TRUE) != FALSE && written == bytes->size();
}

/// A message of more than the longest one does not fit, which is an error of the reading.
std::optional<Message> MessagePipe::receive() {
    if (!pipe_ || !done_) return std::nullopt;
    std::string bytes(longestMessage, '\0');
    OVERLAPPED operation{};
    operation.hEvent = done_.get();
    DWORD count = 0;
    const bool isRead = (ReadFile(pipe_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), nullptr,
                                  &operation) != FALSE ||
                         GetLastError() == ERROR_IO_PENDING) &&
                        GetOverlappedResult(pipe_.get(), &operation, &count, TRUE) != FALSE;
    bytes.resize(count);
    auto message = isRead ? parseMessage(bytes) : std::nullopt;
    if (!message) close();
    return message;
}

bool MessagePipe::isQuiet() const {
    DWORD available = 0;
    return pipe_ && PeekNamedPipe(pipe_.get(), nullptr, 0, nullptr, &available, nullptr) != FALSE &&
           available == 0;
}

} // namespace fat32format
