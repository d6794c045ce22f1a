#pragma once

#include "platform/windows/unique_handle.h"
#include "tools/fat32format/windows/message.h"

#include <optional>

namespace fat32format {

/// An end of a named pipe that carries messages, opened for overlapped use. The other end may be gone at any
/// time, and may send anything.
/// https://learn.microsoft.com/windows/win32/ipc/named-pipe-type-read-and-wait-modes
class MessagePipe {
public:
    MessagePipe() = default;
    explicit MessagePipe(platform::windows::UniqueHandle pipe);

    /// False when the other end is gone, or the message is none that may be sent.
    bool send(const Message& message);
    /// Waits for a message; no value when the other end is gone or has sent what is no message. After that
    /// the pipe is closed, and all the rest fails.
    std::optional<Message> receive();
    /// Whether the other end is there and has said nothing that was not received. Does not wait.
    bool isQuiet() const;
    void close() { pipe_.close(); }

private:
    platform::windows::UniqueHandle pipe_;
    platform::windows::UniqueHandle done_; ///< set when an operation is finished
};

} // namespace fat32format
