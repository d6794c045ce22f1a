#pragma once

#include "tools/fat32format/system.h"
#include "tools/fat32format/windows/device.h"
#include "tools/fat32format/windows/dialogue.h"

namespace fat32format {

/// Windows as it is. Nothing is run by it. There is no table of drives: a letter means its own disk. A
/// target's node is the letter with its colon; a volume's node is what people call it.
class WindowsSystem : public System {
public:
    /// The dialogue outlives it.
    explicit WindowsSystem(Dialogue& dialogue);
    /// On another machine than this one, which outlives it, too.
    WindowsSystem(Dialogue& dialogue, Machine& machine) : dialogue_(dialogue), machine_(machine) {}

    std::string tableProblem() override { return {}; }
    std::optional<Target> targetOf(char letter) override;
    std::optional<Volume> inspect(const std::string& node) override;
    Opened open(const Volume& volume, Access access) override;
    bool unmount(const Mount& mount) override;
    std::uint32_t randomNumber() override;
    std::string systemsOwn() override;

    void print(const std::string& text) override { dialogue_.print(text); }
    std::optional<std::string> readLine() override { return dialogue_.readLine(); }
    bool isAskerThere() override { return dialogue_.isThere(); }

private:
    Dialogue& dialogue_;
    Machine& machine_;
};

} // namespace fat32format
