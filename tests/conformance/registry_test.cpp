#include "platform/registry.h"

#include "tests/conformance/environment_registry.h"
#include "tests/conformance/known_difference.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

using namespace platform;

namespace {

constexpr std::uint32_t readRight = 25;
constexpr std::uint32_t fullRight = 63;
constexpr RegistryKey noKey = 0;

struct Data {
    std::int32_t status = -1;
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    std::string bytes;
};

class Registry : public testing::Test {
protected:
    void SetUp() override { openBefore_ = openRegistryHandles(); }
    void TearDown() override {
        for (const RegistryKey key : opened_)
            regCloseKey(key);
    }

    std::string below(const std::string& name) const { return place_.path() + '\\' + name; }

    /// Handles opened since the test began.
    std::size_t openHandles() const { return openRegistryHandles() - openBefore_; }

    RegistryKey create(const std::string& path, std::uint32_t rights = fullRight) {
        RegistryKey key = noKey;
        RegistryDisposition disposition{};
        EXPECT_EQ(regCreateKey(registryCurrentUser, path, registryNonVolatile, rights, key, disposition), 0);
        opened_.push_back(key);
        return key;
    }

    RegistryKey open(const std::string& path, std::uint32_t rights = readRight) {
        RegistryKey key = noKey;
        EXPECT_EQ(regOpenKey(registryCurrentUser, path, rights, key), 0);
        opened_.push_back(key);
        return key;
    }

    static std::int32_t openStatus(const std::string& path) {
        RegistryKey key = noKey;
        const std::int32_t status = regOpenKey(registryCurrentUser, path, readRight, key);
        if (status == RegistrySuccess) regCloseKey(key);
        return status;
    }

    static Data query(RegistryKey key, const std::string& name, std::uint32_t room = 1000) {
        Data data;
        std::string buffer(room, '#');
        data.size = room;
        data.status = regQueryValue(key, name, data.type, buffer.data(), data.size);
        if (data.status == RegistrySuccess) data.bytes = buffer.substr(0, data.size);
        return data;
    }

    conformance::RegistryPlace place_;

private:
    std::size_t openBefore_ = 0;
    std::vector<RegistryKey> opened_;
};

TEST_F(Registry, AMissingKeyIsNotFound) {
    EXPECT_EQ(openStatus(below("Missing")), RegistryFileNotFound);
    EXPECT_EQ(regDeleteKey(registryCurrentUser, below("Missing")), RegistryFileNotFound);
    EXPECT_EQ(openHandles(), 0U);
}

TEST_F(Registry, CreatingTellsWhetherTheKeyWasThere) {
    for (const auto expected : {RegistryCreatedNewKey, RegistryOpenedExistingKey}) {
        RegistryKey key = noKey;
        RegistryDisposition disposition{};
        ASSERT_EQ(
            regCreateKey(registryCurrentUser, below("Key"), registryNonVolatile, fullRight, key, disposition),
            0);
        EXPECT_EQ(disposition, expected);
        EXPECT_EQ(regCloseKey(key), 0);
    }
    EXPECT_EQ(openStatus(below("Key")), 0);
}

TEST_F(Registry, CreatingAKeyCreatesThoseAboveIt) {
    create(below("A\\B\\C"));
    EXPECT_EQ(openStatus(below("A")), 0);
    EXPECT_EQ(openStatus(below("A\\B")), 0);
    EXPECT_EQ(openStatus(below("A\\B\\C")), 0);
    EXPECT_EQ(openStatus(below("A\\C")), RegistryFileNotFound);
}

TEST_F(Registry, PathsAreRelativeToAnOpenKey) {
    const RegistryKey parent = create(below("Parent"), readRight);
    RegistryKey child = noKey;
    RegistryDisposition disposition{};
    // The rights of the handle do not matter here.
    ASSERT_EQ(regCreateKey(parent, "Child", registryNonVolatile, fullRight, child, disposition), 0);
    EXPECT_EQ(regCloseKey(child), 0);
    EXPECT_EQ(openStatus(below("Parent\\Child")), 0);
    EXPECT_EQ(regDeleteKey(parent, "Child"), 0);
    EXPECT_EQ(openStatus(below("Parent\\Child")), RegistryFileNotFound);
}

TEST_F(Registry, AnEmptyPathIsTheKeyItself) {
    const RegistryKey key = create(below("Key"));
    ASSERT_EQ(regSetValue(key, "Name", RegistryBinary, "x"), 0);
    RegistryKey again = noKey;
    ASSERT_EQ(regOpenKey(key, "", readRight, again), 0);
    EXPECT_NE(again, key);
    EXPECT_EQ(query(again, "Name").bytes, "x");
    EXPECT_EQ(regCloseKey(again), 0);
}

TEST_F(Registry, APredefinedKeyNeedNotBeClosed) {
    RegistryKey key = noKey;
    ASSERT_EQ(regOpenKey(registryCurrentUser, "", readRight, key), 0);
    EXPECT_EQ(key, registryCurrentUser);
    EXPECT_EQ(openHandles(), 0U);
    EXPECT_EQ(regCloseKey(key), 0);
    EXPECT_EQ(openStatus(""), 0);
}

TEST_F(Registry, EveryPredefinedKeyCanBeRead) {
    for (const RegistryKey root :
         {registryClassesRoot, registryCurrentUser, registryLocalMachine, registryUsers}) {
        RegistryKey key = noKey;
        EXPECT_EQ(regOpenKey(root, "", readRight, key), 0);
        EXPECT_EQ(regOpenKey(root, "No such key of that name", readRight, key), RegistryFileNotFound);
        regCloseKey(key);
    }
}

TEST_F(Registry, NamesMatchRegardlessOfCase) {
    const RegistryKey key = create(below("Gr\xF6\xDF"
                                         "e"));
    EXPECT_EQ(openStatus(below("GR\xD6\xDF"
                               "E")),
              0);
    ASSERT_EQ(regSetValue(key, "Schl\xFCssel", RegistryBinary, "old"), 0);
    ASSERT_EQ(regSetValue(key, "SCHL\xDCSSEL", RegistryBinary, "new"), 0);
    EXPECT_EQ(query(key, "schl\xFCssel").bytes, "new");
    EXPECT_EQ(regDeleteValue(key, "sCHL\xDCssel"), 0);
    EXPECT_EQ(query(key, "Schl\xFCssel").status, RegistryFileNotFound);
}

TEST_F(Registry, TextEndsAtItsFirstNul) {
    create(below("Key"));
    EXPECT_EQ(openStatus(below(std::string("Key\0more", 8))), 0);
    const RegistryKey key = open(below("Key"), fullRight);
    ASSERT_EQ(regSetValue(key, std::string("Name\0more", 9), RegistryBinary, "x"), 0);
    EXPECT_EQ(query(key, "Name").bytes, "x");
}

TEST_F(Registry, AnUnknownHandleIsInvalid) {
    RegistryKey key = create(below("Key"));
    ASSERT_EQ(regCloseKey(key), 0);
    RegistryDisposition disposition{};
    RegistryKey other = noKey;
    EXPECT_EQ(regCloseKey(key), RegistryInvalidHandle);
    EXPECT_EQ(regOpenKey(key, "x", readRight, other), RegistryInvalidHandle);
    EXPECT_EQ(regCreateKey(key, "x", registryNonVolatile, fullRight, other, disposition),
              RegistryInvalidHandle);
    EXPECT_EQ(regFlushKey(key), RegistryInvalidHandle);
    EXPECT_EQ(regDeleteKey(key, "x"), RegistryInvalidHandle);
    EXPECT_EQ(regDeleteValue(key, "x"), RegistryInvalidHandle);
    EXPECT_EQ(regSetValue(key, "x", RegistryBinary, "x"), RegistryInvalidHandle);
    EXPECT_EQ(query(key, "x").status, RegistryInvalidHandle);
    EXPECT_EQ(regOpenKey(noKey, "x", readRight, other), RegistryInvalidHandle);
}

TEST_F(Registry, OpenHandlesAreCounted) {
    const RegistryKey first = create(below("Key"));
    const RegistryKey second = open(below("Key"));
    EXPECT_NE(first, second);
    EXPECT_EQ(openHandles(), 2U);
    EXPECT_EQ(regCloseKey(first), 0);
    EXPECT_EQ(openHandles(), 1U);
    EXPECT_EQ(regCloseKey(second), 0);
    EXPECT_EQ(openHandles(), 0U);
}

TEST_F(Registry, AReadOnlyHandleChangesNoValue) {
    ASSERT_EQ(regSetValue(create(below("Key")), "Name", RegistryBinary, "x"), 0);
    const RegistryKey key = open(below("Key"), readRight);
    EXPECT_EQ(regSetValue(key, "Name", RegistryBinary, "y"), RegistryAccessDenied);
    EXPECT_EQ(regDeleteValue(key, "Name"), RegistryAccessDenied);
    EXPECT_EQ(query(key, "Name").bytes, "x");
}

TEST_F(Registry, AWriteOnlyHandleReadsNoValue) {
    const RegistryKey key = create(below("Key"), RegistrySetValue);
    EXPECT_EQ(regSetValue(key, "Name", RegistryBinary, "x"), 0);
    EXPECT_EQ(query(key, "Name").status, RegistryAccessDenied);
    EXPECT_EQ(regDeleteValue(key, "Name"), 0);
}

TEST_F(Registry, AKeyWithSubkeysIsNotDeleted) {
    create(below("Key\\Below"));
    EXPECT_EQ(regDeleteKey(registryCurrentUser, below("Key")), RegistryAccessDenied);
    EXPECT_EQ(openStatus(below("Key\\Below")), 0);
    EXPECT_EQ(regDeleteKey(registryCurrentUser, below("Key\\Below")), 0);
    EXPECT_EQ(regDeleteKey(registryCurrentUser, below("Key")), 0);
    EXPECT_EQ(openStatus(below("Key")), RegistryFileNotFound);
}

TEST_F(Registry, AKeyIsDeletedWithItsValues) {
    ASSERT_EQ(regSetValue(create(below("Key")), "Name", RegistryBinary, "x"), 0);
    ASSERT_EQ(regDeleteKey(registryCurrentUser, below("Key")), 0);
    EXPECT_EQ(query(create(below("Key")), "Name").status, RegistryFileNotFound);
}

TEST_F(Registry, AHandleOfADeletedKeyCanOnlyBeClosed) {
    const RegistryKey key = create(below("Key"));
    ASSERT_EQ(regDeleteKey(registryCurrentUser, below("Key")), 0);
    create(below("Key")); // another one
    EXPECT_EQ(regSetValue(key, "Name", RegistryBinary, "x"), RegistryKeyDeleted);
    EXPECT_EQ(query(key, "Name").status, RegistryKeyDeleted);
    EXPECT_EQ(regDeleteValue(key, "Name"), RegistryKeyDeleted);
    EXPECT_EQ(regCloseKey(key), 0);
}

TEST_F(Registry, AValueComesBackAsItWasSet) {
    const RegistryKey key = create(below("Key"));
    std::string everyByte;
    for (int i = 0; i < 256; ++i)
        everyByte += static_cast<char>(i);
    const std::array<std::pair<std::uint32_t, std::string>, 5> values = {{
        {RegistryBinary, everyByte},
        {RegistryBinary, ""},
        {RegistryText, std::string("abc\0", 4)},
        {RegistryDword, "\x01\x02\x03\x04"},
        {RegistryNone, "\r\n\"%"},
    }};
    for (const auto& [type, bytes] : values) {
        ASSERT_EQ(regSetValue(key, "Name", type, bytes), 0); // the type changes, too
        const Data data = query(key, "Name");
        EXPECT_EQ(data.status, 0);
        EXPECT_EQ(data.type, type);
        EXPECT_EQ(data.bytes, bytes);
    }
}

TEST_F(Registry, TextBeyondAsciiComesBack) {
    const std::string letters = "\xE4 \xDF \x80"; // a with dots, sharp s, the sign of the euro
    const RegistryKey key = create(below(letters));
    const std::string text = letters + '\0';
    ASSERT_EQ(regSetValue(key, letters, RegistryText, text), 0);
    const Data data = query(open(below(letters)), letters);
    EXPECT_EQ(data.type, RegistryText);
    EXPECT_EQ(data.size, text.size());
    EXPECT_EQ(data.bytes, text);
}

TEST_F(Registry, AnEmptyNameIsTheDefaultValue) {
    const RegistryKey key = create(below("Key"));
    EXPECT_EQ(query(key, "").status, RegistryFileNotFound);
    ASSERT_EQ(regSetValue(key, "", RegistryBinary, "default"), 0);
    EXPECT_EQ(query(key, "").bytes, "default");
    EXPECT_EQ(regDeleteValue(key, ""), 0);
    EXPECT_EQ(query(key, "").status, RegistryFileNotFound);
}

TEST_F(Registry, ValueNamesMayHoldSeparators) {
    const RegistryKey key = create(below("Key"));
    ASSERT_EQ(regSetValue(key, "C:\\a b\\", RegistryBinary, "x"), 0);
    EXPECT_EQ(query(key, "C:\\a b\\").bytes, "x");
    EXPECT_EQ(openStatus(below("Key\\C:")), RegistryFileNotFound);
}

TEST_F(Registry, WithoutABufferOnlyTypeAndSizeAreTold) {
    const RegistryKey key = create(below("Key"));
    ASSERT_EQ(regSetValue(key, "Name", RegistryBinary, "12345"), 0);
    std::uint32_t type = 0;
    std::uint32_t size = 1;
    EXPECT_EQ(regQueryValue(key, "Name", type, nullptr, size), 0);
    EXPECT_EQ(type, RegistryBinary);
    EXPECT_EQ(size, 5U);
}

TEST_F(Registry, ASmallBufferIsToldTheSizeThatWouldDo) {
    const RegistryKey key = create(below("Key"));
    ASSERT_EQ(regSetValue(key, "Name", RegistryBinary, std::string(600, 'x')), 0);
    const Data small = query(key, "Name", 512);
    EXPECT_EQ(small.status, RegistryMoreData);
    EXPECT_EQ(small.size, 600U);
    EXPECT_EQ(query(key, "Name", 599).status, RegistryMoreData);
    EXPECT_EQ(query(key, "Name", 600).bytes, std::string(600, 'x'));
}

TEST_F(Registry, ABufferIsNotTouchedBehindTheData) {
    const RegistryKey key = create(below("Key"));
    ASSERT_EQ(regSetValue(key, "Name", RegistryBinary, "abc"), 0);
    std::string buffer(10, '#');
    std::uint32_t type = 0;
    auto size = static_cast<std::uint32_t>(buffer.size());
    ASSERT_EQ(regQueryValue(key, "Name", type, buffer.data(), size), 0);
    EXPECT_EQ(buffer, "abc#######");
}

TEST_F(Registry, DeletingAMissingValueIsNotFound) {
    EXPECT_EQ(regDeleteValue(create(below("Key")), "Missing"), RegistryFileNotFound);
}

TEST_F(Registry, ManyValuesAndLongDataAreKept) {
    const RegistryKey key = create(below("Key"));
    const std::string large(100'000, '\xFF');
    ASSERT_EQ(regSetValue(key, "Large", RegistryBinary, large), 0);
    for (int i = 0; i < 300; ++i)
        ASSERT_EQ(regSetValue(key, std::to_string(i), RegistryBinary, std::to_string(-i)), 0);
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(query(key, std::to_string(i)).bytes, std::to_string(-i));
    EXPECT_EQ(query(key, "Large", 100'000).bytes, large);
}

TEST_F(Registry, LongNamesArePossibleUpToTheirLimit) {
    if (!conformance::knownDifference(conformance::Differs::Wine, "a path has 260 characters at the most",
                                      "Wine 8.0, dlls/kernelbase/registry.c")) {
        create(below(std::string(255, 'k')));
        EXPECT_EQ(openStatus(below(std::string(255, 'K'))), 0);
    }
    RegistryKey key = noKey;
    RegistryDisposition disposition{};
    EXPECT_NE(regCreateKey(registryCurrentUser, below(std::string(256, 'k')), registryNonVolatile, fullRight,
                           key, disposition),
              0);
    const RegistryKey holder = create(below("Key"));
    const std::string name(16383, 'v');
    EXPECT_EQ(regSetValue(holder, name, RegistryBinary, "x"), 0);
    EXPECT_EQ(query(holder, name).bytes, "x");
    EXPECT_NE(regSetValue(holder, name + 'v', RegistryBinary, "x"), 0);
}

TEST_F(Registry, FlushingSucceeds) {
    const RegistryKey key = create(below("Key"));
    EXPECT_EQ(regFlushKey(key), 0);
    EXPECT_EQ(regSetValue(key, "Name", RegistryBinary, "x"), 0);
    EXPECT_EQ(regFlushKey(key), 0);
    EXPECT_EQ(regFlushKey(registryCurrentUser), 0);
}

} // namespace
