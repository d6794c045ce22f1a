#include "tools/fat32format/size_text.h"

#include <gtest/gtest.h>

using namespace fat32format;

TEST(SizeText, IsAsDisksAreSold) {
    EXPECT_EQ(sizeText(0), "0.0 kB");
    EXPECT_EQ(sizeText(512), "0.5 kB");
    EXPECT_EQ(sizeText(999'999), "999.9 kB");
    EXPECT_EQ(sizeText(1'000'000), "1.0 MB");
    EXPECT_EQ(sizeText(500'107'862'016), "500.1 GB");
    EXPECT_EQ(sizeText(18'000'207'937'536), "18.0 TB");
    EXPECT_EQ(sizeText(18'446'744'073'709'551'615U), "18446.7 PB");
}
