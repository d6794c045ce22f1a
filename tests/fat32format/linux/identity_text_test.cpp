#include "tools/fat32format/linux/identity_text.h"

#include <gtest/gtest.h>

using fat32format::DiskIdentity;
using fat32format::parseIdentity;

TEST(DiskIdentityText, SequenceSizeAndSerial) {
    EXPECT_EQ(parseIdentity("sequence=7,size=500107862016,serial=0123456789"),
              (DiskIdentity{7, 500'107'862'016, "0123456789"}));
    EXPECT_EQ(parseIdentity("sequence=18446744073709551615,size=1,serial="),
              (DiskIdentity{18'446'744'073'709'551'615U, 1, ""}));
}

TEST(DiskIdentityText, SerialIsPercentEncoded) {
    EXPECT_EQ(parseIdentity("sequence=7,size=1,serial=A%20%2c%2C%25%C3%A4=,")->serial, "A ,,%\xC3\xA4=,");
}

TEST(DiskIdentityText, AnythingElseIsNone) {
    for (const char* text : {"",
                             "sequence=7",
                             "sequence=7,size=1",
                             "sequence=7,size=1,serial",
                             "size=1,sequence=7,serial=A",
                             " sequence=7,size=1,serial=A",
                             "sequence=7, size=1,serial=A",
                             "sequence=,size=1,serial=A",
                             "sequence=7,size=,serial=A",
                             "sequence=0,size=1,serial=A",
                             "sequence=7,size=0,serial=A",
                             "sequence=-7,size=1,serial=A",
                             "sequence=+7,size=1,serial=A",
                             "sequence=0x7,size=1,serial=A",
                             "sequence=18446744073709551616,size=1,serial=A",
                             "sequence=7,size=1,serial=%",
                             "sequence=7,size=1,serial=%4",
                             "sequence=7,size=1,serial=%4G",
                             "sequence=7,size=1,serial=% 4",
                             "sequence=7,size=1,serial=%-4"})
        EXPECT_FALSE(parseIdentity(text).has_value()) << text;
}
