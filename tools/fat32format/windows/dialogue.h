#pragma once

#include <optional>
#include <string>

namespace fat32format {

/// Where the formatter's words go, and where the answer comes from: this program's own console and standard
/// files, or those of the process that started it with more rights.
class Dialogue {
public:
    Dialogue() = default;
    Dialogue(const Dialogue&) = delete;
    Dialogue& operator=(const Dialogue&) = delete;
    virtual ~Dialogue() = default;

    /// Shows a text, UTF-8 with "\n" at the end of a line, at once.
    virtual void print(const std::string& text) = 0;
    /// A line that the user types, without its end, or the key "y"; no value at the end of the input.
    virtual std::optional<std::string> readLine() = 0;
    /// Whether who was asked is still there.
    virtual bool isThere() { return true; }
};

} // namespace fat32format
