#include "platform/cRegistry.h"

#include "platform/registry.h"
#include "registry_fake.h"

#include <gtest/gtest.h>

using fake::registry;
using Calls = std::vector<std::string>;
using Variant = cRegistry::Variant;

namespace {

constexpr std::uint32_t root = platform::registryCurrentUser;
const std::string path = "Software\\Test";
const std::string place = "80000001\\Software\\Test";

class Registry : public testing::Test {
protected:
    void SetUp() override {
        fake::resetRegistry();
        registry().keys[place];
    }
    void TearDown() override { fake::resetRegistry(); }

    static fake::RegistryValue& stored(const std::string& name) { return registry().keys.at(place).at(name); }
    static void store(const std::string& name, std::uint32_t type, const std::string& data) {
        registry().keys[place][name] = {type, data};
    }

    const cRegistry registry_{};
};

TEST_F(Registry, KeyExistOpensForReadingAndCloses) {
    EXPECT_EQ(registry_.RegKeyExist(root, path), 0);
    EXPECT_EQ(registry().calls, (Calls{"open 25", "close"}));
    EXPECT_EQ(platform::openRegistryHandles(), 0U);
}

TEST_F(Registry, KeyExistReturnsWhyTheKeyCannotBeOpened) {
    EXPECT_EQ(registry_.RegKeyExist(root, "Software\\Other"), platform::RegistryFileNotFound);
    EXPECT_EQ(registry_.RegKeyExist(7, path), platform::RegistryInvalidHandle);
    EXPECT_EQ(registry().calls, (Calls{"open 25", "open 25"}));
}

TEST_F(Registry, KeyExistIgnoresTheStatusOfClosing) {
    registry().closeStatus = platform::RegistryInvalidHandle;
    EXPECT_EQ(registry_.RegKeyExist(root, path), 0);
}

TEST_F(Registry, KeyCreateFlushesAndCloses) {
    EXPECT_EQ(registry_.RegKeyCreate(root, "Software\\New"), 1);
    EXPECT_EQ(registry().calls, (Calls{"create 63 option 0", "flush", "close"}));
    EXPECT_TRUE(registry().keys.contains("80000001\\Software\\New"));
    EXPECT_EQ(platform::openRegistryHandles(), 0U);
}

TEST_F(Registry, KeyCreateOfAnExistingKeyOpensIt) {
    EXPECT_EQ(registry_.RegKeyCreate(root, path), 2);
    EXPECT_EQ(platform::openRegistryHandles(), 0U);
}

TEST_F(Registry, KeyCreateReturnsZeroOnAFailure) {
    EXPECT_EQ(registry_.RegKeyCreate(7, path), 0);
    EXPECT_EQ(registry().calls, (Calls{"create 63 option 0"}));
}

TEST_F(Registry, KeyCreateLeavesTheKeyOpenWhenItCannotBeFlushed) {
    registry().flushStatus = platform::RegistryIoFailed;
    EXPECT_EQ(registry_.RegKeyCreate(root, "Software\\New"), 1);
    EXPECT_EQ(registry_.RegKeyCreate(root, path), 2);
    EXPECT_EQ(platform::openRegistryHandles(), 2U);
}

TEST_F(Registry, KeyDeleteReturnsTheStatusOfTheDelete) {
    registry().keys[place + "\\Below"];
    EXPECT_EQ(registry_.RegKeyDelete(root, path), platform::RegistryAccessDenied);
    EXPECT_EQ(registry_.RegKeyDelete(root, path + "\\Below"), 0);
    EXPECT_EQ(registry_.RegKeyDelete(root, path), 0);
    EXPECT_EQ(registry_.RegKeyDelete(root, path), platform::RegistryFileNotFound);
    EXPECT_EQ(registry().calls, Calls(4, "delete key"));
}

TEST_F(Registry, FieldDeleteDeletesTheValue) {
    store("Name", platform::RegistryDword, "1234");
    EXPECT_EQ(registry_.RegFieldDelete(root, path, "Name"), 0);
    EXPECT_TRUE(registry().keys.at(place).empty());
    EXPECT_EQ(registry().calls, (Calls{"open 63", "delete value", "close"}));
}

TEST_F(Registry, FieldDeleteOfAMissingValueSucceeds) {
    EXPECT_EQ(registry_.RegFieldDelete(root, path, "Missing"), 0);
    EXPECT_EQ(platform::openRegistryHandles(), 0U);
}

TEST_F(Registry, FieldDeleteReturnsTheStatusOfOpeningOrClosing) {
    EXPECT_EQ(registry_.RegFieldDelete(root, "Software\\Other", "Name"), platform::RegistryFileNotFound);
    registry().closeStatus = platform::RegistryIoFailed;
    EXPECT_EQ(registry_.RegFieldDelete(root, path, "Name"), platform::RegistryIoFailed);
}

TEST_F(Registry, ValueSetWritesIntegersAsDword) {
    EXPECT_EQ(registry_.RegValueSet(root, path, "Small", std::int16_t{-2}), 0);
    EXPECT_EQ(registry_.RegValueSet(root, path, "Large", std::int32_t{0x12345678}), 0);
    EXPECT_EQ(stored("Small").type, platform::RegistryDword);
    EXPECT_EQ(stored("Small").data, "\xFE\xFF\xFF\xFF");
    EXPECT_EQ(stored("Large").data, "\x78\x56\x34\x12");
    EXPECT_EQ(registry().calls, (Calls{"open 63", "set", "close", "open 63", "set", "close"}));
}

TEST_F(Registry, ValueSetWritesTextWithItsNul) {
    EXPECT_EQ(registry_.RegValueSet(root, path, "Text", "abc"), 0);
    EXPECT_EQ(registry_.RegValueSet(root, path, "Empty", ""), 0);
    EXPECT_EQ(registry_.RegValueSet(root, path, "Umlaut", "B\xC3\xBCro"), 0);
    EXPECT_EQ(stored("Text").type, platform::RegistryText);
    EXPECT_EQ(stored("Text").data, std::string("abc\0", 4));
    EXPECT_EQ(stored("Empty").data, std::string(1, '\0'));
    EXPECT_EQ(stored("Umlaut").data, std::string("B\xFCro\0", 5));
}

TEST_F(Registry, ValueSetKeepsANulInsideOfAText) {
    EXPECT_EQ(registry_.RegValueSet(root, path, "Text", std::string("a\0b", 3)), 0);
    EXPECT_EQ(stored("Text").data, std::string("a\0b\0", 4));
}

TEST_F(Registry, ValueSetWritesNothingOfOtherTypesAndSucceeds) {
    const std::vector<Variant> others = {std::monostate{}, 1.5F, 1.5, cRegistry::Date{40000.25}, true};
    for (const Variant& value : others)
        EXPECT_EQ(registry_.RegValueSet(root, path, "Name", value), 0);
    EXPECT_TRUE(registry().keys.at(place).empty());
    EXPECT_EQ(platform::openRegistryHandles(), 0U);
}

TEST_F(Registry, ValueSetDoesNotTellWhetherItWrote) {
    registry().setStatus = platform::RegistryDiskFull;
    EXPECT_EQ(registry_.RegValueSet(root, path, "Name", std::int32_t{1}), 0);
    EXPECT_TRUE(registry().keys.at(place).empty());
}

TEST_F(Registry, ValueSetReturnsTheStatusOfOpeningOrClosing) {
    EXPECT_EQ(registry_.RegValueSet(root, "Software\\Other", "Name", "x"), platform::RegistryFileNotFound);
    registry().closeStatus = platform::RegistryIoFailed;
    EXPECT_EQ(registry_.RegValueSet(root, path, "Name", "x"), platform::RegistryIoFailed);
}

TEST_F(Registry, ValueGetOfATextKeepsTheNulAndABlank) {
    store("Text", platform::RegistryText, std::string("abc\0", 4));
    Variant value;
    EXPECT_EQ(registry_.RegValueGet(root, path, "Text", value), 0);
    EXPECT_EQ(std::get<std::string>(value), std::string("abc\0 ", 5));
    EXPECT_EQ(registry().calls, (Calls{"open 25", "query size", "query data", "close"}));
    EXPECT_EQ(registry().buffers, std::vector<std::uint32_t>{5});
    EXPECT_EQ(platform::openRegistryHandles(), 0U);
}

TEST_F(Registry, ValueGetOfATextDecodesIt) {
    store("Text", platform::RegistryText, std::string("B\xFCro\0", 5));
    Variant value;
    EXPECT_EQ(registry_.RegValueGet(root, path, "Text", value), 0);
    EXPECT_EQ(std::get<std::string>(value), std::string("B\xC3\xBCro\0 ", 7));
}

TEST_F(Registry, ValueGetOfAnEmptyTextIsABlank) {
    store("Text", platform::RegistryText, "");
    Variant value;
    EXPECT_EQ(registry_.RegValueGet(root, path, "Text", value), 0);
    EXPECT_EQ(std::get<std::string>(value), " ");
}

TEST_F(Registry, ValueGetOfABinaryIsItsBytes) {
    store("Few", platform::RegistryBinary, std::string("\0\xFF ", 3));
    store("Most", platform::RegistryBinary, std::string(512, 'x'));
    store("None", platform::RegistryBinary, "");
    Variant value;
    EXPECT_EQ(registry_.RegValueGet(root, path, "Few", value), 0);
    EXPECT_EQ(std::get<std::string>(value), std::string("\0\xFF ", 3));
    EXPECT_EQ(registry_.RegValueGet(root, path, "Most", value), 0);
    EXPECT_EQ(std::get<std::string>(value), std::string(512, 'x'));
    EXPECT_EQ(registry_.RegValueGet(root, path, "None", value), 0);
    EXPECT_EQ(std::get<std::string>(value), "");
    EXPECT_EQ(registry().buffers, (std::vector<std::uint32_t>{512, 512, 512}));
    EXPECT_EQ(platform::openRegistryHandles(), 0U);
}

TEST_F(Registry, ValueGetOfALongBinaryFailsAndLeavesTheKeyOpen) {
    store("Long", platform::RegistryBinary, std::string(513, 'x'));
    Variant value = std::int32_t{5};
    EXPECT_EQ(registry_.RegValueGet(root, path, "Long", value), platform::RegistryMoreData);
    EXPECT_EQ(std::get<std::int32_t>(value), 5);
    EXPECT_EQ(platform::openRegistryHandles(), 1U);
}

TEST_F(Registry, ValueGetOfADwordIsAnInteger) {
    store("Number", platform::RegistryDword, "\xFE\xFF\xFF\xFF");
    Variant value;
    EXPECT_EQ(registry_.RegValueGet(root, path, "Number", value), 0);
    EXPECT_EQ(std::get<std::int32_t>(value), -2);
    EXPECT_EQ(registry().buffers, std::vector<std::uint32_t>{4});
}

TEST_F(Registry, ValueGetOfAnotherTypeHandsNothingBack) {
    constexpr std::uint32_t multipleTexts = 7;
    store("Texts", multipleTexts, std::string("a\0b\0\0", 5));
    Variant value = std::int32_t{5};
    EXPECT_EQ(registry_.RegValueGet(root, path, "Texts", value), 0);
    EXPECT_EQ(std::get<std::int32_t>(value), 5);
    EXPECT_EQ(registry().calls, (Calls{"open 25", "query size", "close"}));
}

TEST_F(Registry, ValueGetOfAMissingValueLeavesTheKeyOpen) {
    Variant value;
    EXPECT_EQ(registry_.RegValueGet(root, path, "Missing", value), platform::RegistryFileNotFound);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(value));
    EXPECT_EQ(platform::openRegistryHandles(), 1U);
}

TEST_F(Registry, ValueGetLeavesTheKeyOpenWhenTheSecondQueryFails) {
    store("Text", platform::RegistryText, std::string("abc\0", 4));
    store("Number", platform::RegistryDword, "1234");
    registry().dataStatus = platform::RegistryIoFailed;
    Variant value;
    EXPECT_EQ(registry_.RegValueGet(root, path, "Text", value), platform::RegistryIoFailed);
    EXPECT_EQ(registry_.RegValueGet(root, path, "Number", value), platform::RegistryIoFailed);
    EXPECT_EQ(platform::openRegistryHandles(), 2U);
}

TEST_F(Registry, ValueGetReturnsTheStatusOfOpeningOrClosing) {
    store("Number", platform::RegistryDword, "1234");
    Variant value;
    EXPECT_EQ(registry_.RegValueGet(root, "Software\\Other", "Number", value),
              platform::RegistryFileNotFound);
    EXPECT_EQ(platform::openRegistryHandles(), 0U);
    registry().closeStatus = platform::RegistryIoFailed;
    EXPECT_EQ(registry_.RegValueGet(root, path, "Number", value), platform::RegistryIoFailed);
}

TEST_F(Registry, NamesGoInTheAnsiCodePage) {
    registry().keys["80000001\\Software\\B\xFCro"];
    EXPECT_EQ(registry_.RegKeyExist(root, "Software\\B\xC3\xBCro"), 0);
    EXPECT_EQ(registry_.RegValueSet(root, path,
                                    "Gr\xC3\xB6\xC3\x9F"
                                    "e",
                                    std::int32_t{1}),
              0);
    EXPECT_TRUE(registry().keys.at(place).contains("Gr\xF6\xDF"
                                                   "e"));
}

} // namespace
