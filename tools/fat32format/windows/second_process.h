// The process that has an administrator's rights, and nobody to talk to but the one that has started it.
#pragma once

#include "tools/fat32format/windows/dialogue.h"
#include "tools/fat32format/windows/message_pipe.h"

#include <cstdint>
#include <memory>

namespace fat32format {

/// Through the pipe to the first process. When that one ends, the input has ended, and what is printed is
/// lost: a run that has begun to write goes on to its end. A volume of which the first sector has been
/// written has lost its contents in any case, and half a file system is of no use to anybody.
class PipeDialogue : public Dialogue {
public:
    explicit PipeDialogue(MessagePipe pipe) : pipe_(std::move(pipe)) {}

    /// To the process that waits at the pipe of that number; none when there is none, or it was started from
    /// another file than this one.
    static std::unique_ptr<PipeDialogue> connect(std::uint64_t number);

    void print(const std::string& text) override;
    std::optional<std::string> readLine() override;
    /// False as well when the first process has said something that it was not asked for.
    bool isThere() override { return pipe_.isQuiet(); }
    /// Nothing more will be printed or asked.
    void end();

private:
    MessagePipe pipe_;
};

} // namespace fat32format
