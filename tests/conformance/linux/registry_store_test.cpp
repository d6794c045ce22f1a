// The registry's file: what it looks like, what becomes of a damaged one, and several processes at one file.

#include "tests/conformance/linux/registry_test_store.h"
#include "tests/conformance/linux/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace conformance;

namespace {

class RegistryFileTest : public testing::Test {
protected:
    RegistryStore store() const { return RegistryStore(file_); }

    static mode_t modeOf(const fs::path& path) {
        struct stat info {};
        return stat(path.c_str(), &info) == 0 ? info.st_mode & 0777U : 0;
    }

    std::vector<std::string> filesBeside() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(file_.parent_path()))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    TemporaryFolder folder_;
    fs::path file_ = folder_.path() / "config" / "program" / "registry";
};

TEST_F(RegistryFileTest, ReadingCreatesNothing) {
    RegistryStore registry = store();
    EXPECT_EQ(valueOf(registry, "Name"), "(none)");
    EXPECT_EQ(registry.flush(), 0);
    const auto refuse = [](const RegistryTree&, std::optional<RegistryRecord>&) -> std::int32_t {
        return platform::RegistryFileNotFound;
    };
    EXPECT_EQ(registry.change(refuse), platform::RegistryFileNotFound);
    EXPECT_TRUE(fs::is_empty(folder_.path()));
}

TEST_F(RegistryFileTest, TheFirstChangeCreatesTheFileForItsUserAlone) {
    RegistryStore registry = store();
    ASSERT_EQ(setValue(registry, "Name", "x"), 0);
    EXPECT_EQ(modeOf(folder_.path() / "config"), 0700U);
    EXPECT_EQ(modeOf(file_.parent_path()), 0700U);
    EXPECT_EQ(modeOf(file_), 0600U);
    EXPECT_EQ(filesBeside(), std::vector<std::string>{"registry"});
}

TEST_F(RegistryFileTest, TheFormatIsTheDocumentedOne) {
    RegistryStore registry = store();
    ASSERT_EQ(setValue(registry, "Folder", "E:\\B\xFCro \"5%\"\n"), 0);
    EXPECT_EQ(contentsOf(file_), "orvanta-usbtool registry 1\n"
                                 "9EFAEB49 value 1 3 \"Folder\" \"E:\\B%FCro %225%25%22%0A\"\n");
}

TEST_F(RegistryFileTest, EveryByteOfNamesAndDataIsKept) {
    std::string everyByte;
    for (int i = 0; i < 256; ++i)
        everyByte += static_cast<char>(i);
    RegistryStore registry = store();
    const auto key = createKeys(registry, {everyByte, everyByte});
    ASSERT_EQ(setValue(registry, everyByte, everyByte, key + 1), 0);
    RegistryStore other = store();
    EXPECT_EQ(valueOf(other, everyByte, key + 1), everyByte);
    EXPECT_EQ(allOf(other), allOf(registry));
}

TEST_F(RegistryFileTest, NamesKeepTheirCase) {
    RegistryStore registry = store();
    createKeys(registry, {"MixedCase"});
    ASSERT_EQ(setValue(registry, "ValueName", "1"), 0);
    ASSERT_EQ(setValue(registry, "VALUENAME", "2"), 0);
    const std::string all = allOf(registry);
    EXPECT_NE(all.find("\"MixedCase\""), std::string::npos);
    EXPECT_NE(all.find("\"ValueName\" \"2\""), std::string::npos);
}

TEST_F(RegistryFileTest, AChangeOfAnotherProcessIsSeenAtOnce) {
    RegistryStore mine = store();
    RegistryStore theirs = store();
    ASSERT_EQ(setValue(mine, "Name", "1"), 0);
    EXPECT_EQ(valueOf(theirs, "Name"), "1");
    ASSERT_EQ(setValue(theirs, "Name", "2"), 0);
    EXPECT_EQ(valueOf(mine, "Name"), "2");
    const auto key = createKeys(mine, {"Key"});
    ASSERT_EQ(deleteKey(theirs, key), 0);
    EXPECT_EQ(valueOf(mine, "Name", key), "(none)");
    EXPECT_GT(createKeys(mine, {"Key"}), key) << "a number is given twice";
}

TEST_F(RegistryFileTest, HistoryDoesNotPileUp) {
    RegistryStore registry = store();
    RegistryStore other = store();
    const auto key = createKeys(registry, {"Key"});
    const auto last = createKeys(registry, {"Last"});
    ASSERT_EQ(deleteKey(registry, last), 0);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(setValue(registry, "Name", std::to_string(i) + std::string(1000, '.')), 0);
    EXPECT_LT(fs::file_size(file_), 100'000U);
    EXPECT_EQ(valueOf(other, "Name"), "999" + std::string(1000, '.'));
    EXPECT_EQ(allOf(other), allOf(registry));
    EXPECT_GT(createKeys(other, {"Next"}), last) << "a number is given twice";
    EXPECT_EQ(createKeys(other, {"Below"}) > key, true);
    EXPECT_EQ(filesBeside(), std::vector<std::string>{"registry"});
}

TEST_F(RegistryFileTest, AKeyOfADeletedFileIsGone) {
    RegistryStore registry = store();
    const auto key = createKeys(registry, {"Key"});
    fs::remove(file_);
    EXPECT_EQ(valueOf(registry, "Name", key), "(none)");
    EXPECT_GT(createKeys(registry, {"Other"}), key);
}

TEST_F(RegistryFileTest, HalfALineAtTheEndIsAChangeThatWasNotMade) {
    std::vector<std::string> states; // after each change
    std::vector<std::size_t> sizes;
    {
        RegistryStore registry = store();
        const auto note = [&] {
            states.push_back(allOf(registry));
            sizes.push_back(contentsOf(file_).size());
        };
        ASSERT_EQ(setValue(registry, "A", "first"), 0);
        note();
        const auto key = createKeys(registry, {"One", "Two", "Three"});
        note();
        ASSERT_EQ(setValue(registry, "B", std::string("\0\n\"", 3), key), 0);
        note();
        ASSERT_EQ(deleteKey(registry, key + 2), 0);
        note();
    }
    const std::string whole = contentsOf(file_);
    const std::string nothing = RegistryTree().lines();
    std::size_t made = 0;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        if (made < sizes.size() && length == sizes[made]) ++made;
        const std::string& expected = made == 0 ? nothing : states[made - 1];
        writeContents(file_, whole.substr(0, length));
        RegistryStore registry = store();
        ASSERT_EQ(allOf(registry), expected) << length << " bytes";
        ASSERT_EQ(contentsOf(file_).size(), length) << "reading has changed the file";
        ASSERT_EQ(setValue(registry, "New", "value"), 0);
        RegistryStore other = store();
        ASSERT_EQ(valueOf(other, "New"), "value");
        ASSERT_EQ(allOf(other), allOf(registry));
        ASSERT_EQ(filesBeside(), std::vector<std::string>{"registry"}) << length << " bytes";
    }
}

TEST_F(RegistryFileTest, ADamagedLineIsPassedOverAndTheFileKept) {
    {
        RegistryStore registry = store();
        for (const char* const name : {"A", "B", "C"})
            ASSERT_EQ(setValue(registry, name, name), 0);
    }
    const std::string good = contentsOf(file_);
    for (std::size_t i = 0; i < good.size(); ++i) {
        std::string bad = good;
        bad[i] = static_cast<char>(bad[i] ^ 4);
        writeContents(file_, bad);
        RegistryStore registry = store();
        const bool lost =
            valueOf(registry, "A") != "A" || valueOf(registry, "B") != "B" || valueOf(registry, "C") != "C";
        ASSERT_TRUE(lost || i < good.find('\n') + 1) << i;
        ASSERT_EQ(filesBeside(), std::vector<std::string>{"registry"}) << "reading must not mend";
        ASSERT_EQ(setValue(registry, "New", "value"), 0);
        RegistryStore other = store();
        ASSERT_EQ(allOf(other), allOf(registry));
        ASSERT_EQ(valueOf(other, "New"), "value");
        // Without its end the last line is one that was never written.
        const bool unfinished = i == good.size() - 1;
        if (!unfinished) {
            ASSERT_EQ(contentsOf(file_.string() + ".damaged-1"), bad) << i;
            fs::remove(file_.string() + ".damaged-1");
        }
    }
}

TEST_F(RegistryFileTest, AForeignFileIsKept) {
    const std::vector<std::string> foreign = {"x",
                                              "\n",
                                              std::string(100, '\0'),
                                              "orvanta-usbtool registry 2\nnews\n",
                                              "orvanta-usbtool registry 1",
                                              "[Section]\nKey=Value\n"};
    fs::create_directories(file_.parent_path());
    std::vector<std::string> kept;
    for (const std::string& contents : foreign) {
        writeContents(file_, contents);
        RegistryStore registry = store();
        EXPECT_EQ(valueOf(registry, "Name"), "(none)");
        EXPECT_EQ(setValue(registry, "Name", "x"), 0);
        EXPECT_EQ(valueOf(registry, "Name"), "x");
        for (const std::string& name : filesBeside())
            if (name != "registry") kept.push_back(contentsOf(file_.parent_path() / name));
        for (const std::string& name : filesBeside())
            fs::remove(file_.parent_path() / name);
    }
    // The beginning of a proper file holds nothing that could be lost.
    EXPECT_EQ(kept, (std::vector<std::string>{foreign[0], foreign[1], foreign[2], foreign[3], foreign[5]}));
}

TEST_F(RegistryFileTest, SeveralDamagedFilesAreKeptBesideEachOther) {
    fs::create_directories(file_.parent_path());
    for (const char* const contents : {"first\n", "second\n"}) {
        writeContents(file_, contents);
        RegistryStore registry = store();
        ASSERT_EQ(setValue(registry, "Name", "x"), 0);
    }
    EXPECT_EQ(contentsOf(file_.string() + ".damaged-1"), "first\n");
    EXPECT_EQ(contentsOf(file_.string() + ".damaged-2"), "second\n");
}

TEST_F(RegistryFileTest, RecordsThatDoNotFitAreDamage) {
    using Kind = RegistryRecord::Kind;
    constexpr std::uint64_t most = 0xFFFFFFFFFFFFFFFFU;
    const std::vector<RegistryRecord> bad = {
        {Kind::Key, 10, 99, {"parent unknown"}},
        {Kind::Key, 3, 1, {"number taken"}},
        {Kind::Key, most, 1, {"a", "b"}},
        {Kind::Value, 99, 1, {"key unknown", ""}},
        {Kind::Value, 1, most, {"type", ""}},
        {Kind::NoKey, 1, 0, {}},
        {Kind::NoKey, 99, 0, {}},
        {Kind::NoValue, 1, 0, {"unknown"}},
    };
    fs::create_directories(file_.parent_path());
    for (const RegistryRecord& record : bad) {
        writeContents(file_, "orvanta-usbtool registry 1\n" + registryLine(record));
        RegistryStore registry = store();
        EXPECT_EQ(allOf(registry), RegistryTree().lines());
        EXPECT_EQ(setValue(registry, "Name", "x"), 0);
        EXPECT_TRUE(fs::remove(file_.string() + ".damaged-1")) << registryLine(record);
    }
}

TEST_F(RegistryFileTest, AFileEditedInPlaceIsReadAnew) {
    RegistryStore registry = store();
    RegistryStore editor = store();
    ASSERT_EQ(setValue(registry, "Name", "1"), 0);
    const std::string one = contentsOf(file_);
    ASSERT_EQ(setValue(registry, "Name", "22222"), 0);
    writeContents(file_, one); // the same file, shorter
    EXPECT_EQ(valueOf(registry, "Name"), "1");
    ASSERT_EQ(setValue(editor, "Name", "3"), 0);
    EXPECT_EQ(valueOf(registry, "Name"), "3");
}

TEST_F(RegistryFileTest, ALinkedFileStaysLinked) {
    const fs::path target = folder_.path() / "elsewhere";
    writeContents(target, "");
    fs::create_directories(file_.parent_path());
    fs::create_symlink(target, file_);
    RegistryStore registry = store();
    for (int i = 0; i < 300; ++i)
        ASSERT_EQ(setValue(registry, "Name", std::to_string(i) + std::string(1000, '.')), 0);
    EXPECT_TRUE(fs::is_symlink(file_));
    EXPECT_GT(fs::file_size(target), 1000U);
}

TEST_F(RegistryFileTest, WhatIsNoFileIsAnError) {
    fs::create_directories(file_);
    RegistryStore registry = store();
    EXPECT_EQ(valueOf(registry, "Name"), "(1016)");
    EXPECT_EQ(setValue(registry, "Name", "x"), platform::RegistryIoFailed);
    fs::remove(file_);
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(valueOf(registry, "Name"), "(1016)");
    EXPECT_EQ(setValue(registry, "Name", "x"), platform::RegistryIoFailed);
}

TEST_F(RegistryFileTest, AnOversizedFileIsLeftAlone) {
    fs::create_directories(file_.parent_path());
    writeContents(file_, "");
    fs::resize_file(file_, std::uintmax_t{1} << 40);
    RegistryStore registry = store();
    EXPECT_EQ(valueOf(registry, "Name"), "(1016)");
    EXPECT_EQ(setValue(registry, "Name", "x"), platform::RegistryIoFailed);
    EXPECT_EQ(fs::file_size(file_), std::uintmax_t{1} << 40);
}

TEST_F(RegistryFileTest, AReadOnlyFileCanBeReadOnly) {
    if (geteuid() == 0) GTEST_SKIP() << "nothing is read-only for root";
    RegistryStore registry = store();
    ASSERT_EQ(setValue(registry, "Name", "x"), 0);
    fs::permissions(file_, fs::perms::owner_read);
    RegistryStore other = store();
    EXPECT_EQ(valueOf(other, "Name"), "x");
    EXPECT_EQ(setValue(other, "Name", "y"), platform::RegistryAccessDenied);
    fs::permissions(file_, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(setValue(other, "Name", "y"), 0);
}

TEST_F(RegistryFileTest, AFolderThatCannotBeOpenedIsNotSynced) {
    constexpr uid_t nobody = 65534; // for root everything is readable
    fs::create_directories(file_.parent_path());
    const uid_t user = geteuid();
    if (user == 0) {
        fs::permissions(folder_.path(), fs::perms(0711));
        ASSERT_EQ(chown(file_.parent_path().c_str(), nobody, gid_t(-1)), 0);
        ASSERT_EQ(seteuid(nobody), 0);
    }
    fs::permissions(file_.parent_path(), fs::perms(0300));
    RegistryStore registry = store();
    EXPECT_EQ(setValue(registry, "Name", "x"), 0);
    EXPECT_EQ(registry.flush(), platform::RegistryIoFailed);
    fs::permissions(file_.parent_path(), fs::perms(0700));
    EXPECT_EQ(registry.flush(), 0);
    ASSERT_EQ(seteuid(user), 0);
}

TEST_F(RegistryFileTest, WithoutAFolderNothingCanBeKept) {
    RegistryStore registry{""};
    EXPECT_EQ(valueOf(registry, "Name"), "(none)");
    EXPECT_EQ(setValue(registry, "Name", "x"), platform::RegistryIoFailed);
}

} // namespace
