#pragma once

#include "platform/windows/unique_handle.h"
#include "tools/fat32format/windows/dialogue.h"

#include <string_view>

namespace fat32format {

/// This process's console and standard files. There is one at the most, made before any other file is opened.
///
/// The answer comes from the standard input when that is a pipe or a file: a line, which ends with CR, LF or
/// the input; and a "y" behind which nothing comes for a quarter of a second, as if the key had been pressed.
/// A program that writes "yes" must not stop in between. When it is a console, or when there is none, it is
/// the next key of the console that this process is attached to, without Return; no value without a console.
/// "y" is the key "y" alone; modifiers such as Shift are no key. Keys that were pressed before count,
/// too, for a program may answer beforehand; but not when the words go to a console as well: then somebody
/// sits there, and only those count that are pressed after the words before the question.
/// https://learn.microsoft.com/windows/console/readconsoleinput
/// https://learn.microsoft.com/windows/console/flushconsoleinputbuffer
///
/// What is printed goes to the standard output, with CR LF at the end of a line; a console gets the
/// characters, anything else UTF-8. Without a standard output it goes to the console, if there is one; what
/// cannot be written is lost without a word.
class ConsoleDialogue : public Dialogue {
public:
    /// Takes the standard files away from the C library. A number that was handed over as one and means no
    /// open file counts as none, and whatever is opened under it later is not written to.
    ConsoleDialogue();

    void print(const std::string& text) override;
    std::optional<std::string> readLine() override;

private:
    std::optional<std::string> readBytes();
    std::optional<std::string> readKey();
    bool moreFollows() const;
    void printOnConsole(std::string_view text);
    void printBytes(std::string_view bytes);

    platform::windows::UniqueHandle input_;    ///< none when it is the console
    platform::windows::UniqueHandle keyboard_; ///< the console, until the question is answered
    platform::windows::UniqueHandle output_;
    bool outputIsConsole_ = false;
};

} // namespace fat32format
