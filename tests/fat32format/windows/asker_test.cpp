// Who has agreed may be gone before the first write.
#include "tests/fat32format/windows/memory_machine.h"
#include "tools/fat32format/formatter.h"
#include "tools/fat32format/windows/windows_system.h"

#include <gtest/gtest.h>

using namespace fat32format;

namespace {

class LeavingDialogue : public TestDialogue {
public:
    explicit LeavingDialogue(bool leaves) : leaves_(leaves) {}
    bool isThere() override { return !leaves_; }

private:
    bool leaves_;
};

} // namespace

TEST(Asker, WhoIsGoneHasCalledItOff) {
    for (const bool leaves : {false, true}) {
        MemoryMachine machine;
        LeavingDialogue dialogue(leaves);
        WindowsSystem system(dialogue, machine);
        EXPECT_EQ(format(system, {'E', 1, false}), leaves ? Status::Declined : Status::Done);
        EXPECT_EQ(machine.did("dismount"), !leaves);
        EXPECT_EQ(machine.did("write"), !leaves);
    }
}
