// Room for texts that stand below each other.

#include "toolkit/share_room.h"

#include <gtest/gtest.h>

using toolkit::shareRoom;
using Heights = std::vector<int>;

TEST(ShareRoom, EachGetsWhatItNeedsAndTheLastTheRest) {
    EXPECT_EQ(shareRoom({10, 20, 10}, 100), (Heights{10, 20, 70}));
    EXPECT_EQ(shareRoom({30, 30}, 60), (Heights{30, 30}));
}

TEST(ShareRoom, ALongOneLeavesTheShortOnesTheirs) {
    EXPECT_EQ(shareRoom({10, 500, 10, 10}, 100), (Heights{10, 70, 10, 10}));
}

TEST(ShareRoom, SeveralLongOnesGetAlike) {
    EXPECT_EQ(shareRoom({500, 500, 20}, 100), (Heights{40, 40, 20}));
    EXPECT_EQ(shareRoom({500, 500}, 101), (Heights{50, 51}));
}

TEST(ShareRoom, NobodyNeedsAny) {
    EXPECT_EQ(shareRoom({}, 100), Heights{});
    EXPECT_EQ(shareRoom({0, 0}, 10), (Heights{0, 10}));
}
