#include "format/disk_text.h"

#include "fake.h"

#include <gtest/gtest.h>

TEST(DiskText, LeavesOutWhatIsNotKnown) {
    const auto text = [](const std::string& maker, const std::string& model, std::uint64_t size,
                         const std::string& label) {
        return format::diskText({maker, model, size, label});
    };
    fake::reset();
    EXPECT_EQ(text("", "", 0, ""), "");
    EXPECT_EQ(text("", "", 1024 * 1024, ""), "1,0 MB");
    EXPECT_EQ(text("", "", 1024 * 1024 * 1024, "X"), "1,0 GB, Bezeichnung \"X\"");
    EXPECT_EQ(text("WD      ", "", 0, ""), "WD");
    EXPECT_EQ(text("", "  Elements ", 0, ""), "Elements");
    EXPECT_EQ(text("Samsung", "SAMSUNG T5", 0, ""), "SAMSUNG T5");
    EXPECT_EQ(text("", "two\r\nlines\x7f", 0, "\t"), "two  lines");
}
