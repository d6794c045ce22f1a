// The registry's file: what it looks like, what becomes of a damaged one, and several processes at one file.

#include "tests/conformance/linux/registry_test_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace conformance;

namespace {

using Files = std::vector<std::string>;

class RegistryFileTest : public testing::Test {
protected:
    RegistryStore store() const { return RegistryStore(file_); }

    static mode_t modeOf(const fs::path& path) {
        struct stat info {};
        return stat(path.c_str(), &info) == 0 ? info.st_mode & 0777U : 0;
    }

    /// A key below the user's.
    static Names below(Names names) {
        names.insert(names.begin(), userKey.front());
        return names;
    }

    RegistryFolder folder_;
    fs::path file_ = folder_.file();
};

TEST_F(RegistryFileTest, ReadingCreatesNothing) {
    RegistryStore registry = store();
    EXPECT_EQ(valueOf(registry, "Name"), "(none)");
    EXPECT_EQ(registry.flush(), 0);
    registry.saveSoon();
    EXPECT_TRUE(fs::is_empty(folder_.outside()));
}

TEST_F(RegistryFileTest, TheFirstChangeCreatesTheFileForItsUserAlone) {
    RegistryStore registry = store();
    ASSERT_EQ(setValue(registry, "Name", "x"), 0);
    EXPECT_EQ(modeOf(folder_.config()), 0700U);
    EXPECT_EQ(modeOf(file_.parent_path()), 0700U);
    EXPECT_EQ(modeOf(file_), 0600U);
    EXPECT_EQ(modeOf(file_.string() + ".lock"), 0600U);
    EXPECT_EQ(filesBeside(file_), Files());
}

TEST_F(RegistryFileTest, TheFormatIsTheDocumentedOne) {
    RegistryStore registry = store();
    ASSERT_EQ(setValue(registry, "Folder", "E:\\B\xFCro \"5%\"\n", below({"Software"})), 0);
    EXPECT_EQ(contentsOf(file_),
              "orvanta-usbtool registry 2\n"
              "7FAA79F8 key HKEY_CURRENT_USER\n"
              "1E75AB31 key HKEY_CURRENT_USER\\Software\n"
              "AF05BC10 value HKEY_CURRENT_USER\\Software 3 Folder E:\\B%FCro%20%225%25%22%0A\n");
}

TEST_F(RegistryFileTest, EveryByteOfNamesAndDataIsKept) {
    std::string everyByte;
    for (int i = 0; i < 256; ++i)
        everyByte += static_cast<char>(i);
    std::string keyName = everyByte;
    std::erase(keyName, '\\');
    const Names key = below({keyName, keyName});
    RegistryStore registry = store();
    ASSERT_EQ(setValue(registry, everyByte, everyByte, key), 0);
    RegistryStore other = store();
    EXPECT_EQ(valueOf(other, everyByte, key), everyByte);
    EXPECT_EQ(allOf(other), allOf(registry));
}

TEST_F(RegistryFileTest, NamesKeepTheirCase) {
    RegistryStore registry = store();
    ASSERT_EQ(createKey(registry, below({"MixedCase"})), 0);
    ASSERT_EQ(createKey(registry, below({"MIXEDCASE"})), 0);
    ASSERT_EQ(setValue(registry, "ValueName", "1"), 0);
    ASSERT_EQ(setValue(registry, "VALUENAME", "2"), 0);
    const std::string all = allOf(registry);
    EXPECT_NE(all.find("\\MixedCase\n"), std::string::npos);
    EXPECT_EQ(all.find("MIXEDCASE"), std::string::npos);
    EXPECT_NE(all.find(" ValueName 2\n"), std::string::npos);
}

TEST_F(RegistryFileTest, WhatAnotherProcessHasSavedIsSeenAtOnce) {
    RegistryStore mine = store();
    RegistryStore theirs = store();
    ASSERT_EQ(setValue(mine, "Name", "1"), 0);
    EXPECT_EQ(valueOf(theirs, "Name"), "1");
    ASSERT_EQ(setValue(theirs, "Name", "2"), 0);
    EXPECT_EQ(valueOf(mine, "Name"), "2");
}

TEST_F(RegistryFileTest, AKeyStaysTheSameOneUntilItIsDeleted) {
    const Names key = below({"Key"});
    RegistryStore mine = store();
    RegistryStore theirs = store();
    ASSERT_EQ(createKey(mine, key), 0);
    const std::weak_ptr<RegistryNode> opened = mine.top().find(key);
    ASSERT_EQ(setValue(theirs, "Name", "x", key), 0);
    ASSERT_EQ(valueOf(mine, "Name", key), "x");
    EXPECT_EQ(opened.lock(), mine.top().find(key));
    ASSERT_EQ(deleteKey(theirs, key), 0);
    ASSERT_EQ(mine.refresh(), 0);
    EXPECT_TRUE(opened.expired());
    ASSERT_EQ(createKey(mine, key), 0);
    EXPECT_TRUE(opened.expired()) << "a key of the same name is another one";
}

TEST_F(RegistryFileTest, ChangesThatAreNotSavedYetAreMadeOnWhatOthersHaveSaved) {
    RegistryStore mine = store();
    RegistryStore theirs = store();
    ASSERT_EQ(setValue(theirs, "Kept", "1", below({"Key"})), 0);
    ASSERT_EQ(change(mine, valueChange("Mine", "1", below({"Key"}))), 0);
    ASSERT_EQ(change(mine, valueChange("Mine", "1", below({"New"}))), 0);
    const std::weak_ptr<RegistryNode> opened = mine.top().find(below({"New"}));
    EXPECT_EQ(valueOf(theirs, "Mine", below({"Key"})), "(none)");
    ASSERT_EQ(setValue(theirs, "Theirs", "2", below({"Key"})), 0);
    EXPECT_EQ(valueOf(mine, "Theirs", below({"Key"})), "2");
    EXPECT_EQ(valueOf(mine, "Mine", below({"Key"})), "1");
    EXPECT_FALSE(opened.expired());
    ASSERT_EQ(mine.flush(), 0);
    for (RegistryStore* const registry : {&mine, &theirs}) {
        EXPECT_EQ(valueOf(*registry, "Kept", below({"Key"})), "1");
        EXPECT_EQ(valueOf(*registry, "Theirs", below({"Key"})), "2");
        EXPECT_EQ(valueOf(*registry, "Mine", below({"Key"})), "1");
        EXPECT_EQ(valueOf(*registry, "Mine", below({"New"})), "1");
    }
}

TEST_F(RegistryFileTest, ManyChangesAreSavedTogether) {
    RegistryStore mine = store();
    RegistryStore theirs = store();
    ASSERT_EQ(change(mine, valueChange("Count", "0")), 0);
    mine.saveSoon();
    EXPECT_EQ(valueOf(theirs, "Count"), "0") << "what stands alone is saved at once";
    int seen = 0;
    std::string last = "0";
    constexpr int changes = 2000;
    for (int i = 1; i <= changes; ++i) {
        ASSERT_EQ(change(mine, valueChange("Count", std::to_string(i))), 0);
        mine.saveSoon();
        if (const std::string now = valueOf(theirs, "Count"); now != last) {
            last = now;
            ++seen;
        }
    }
    EXPECT_LT(seen, changes / 4);
    ASSERT_EQ(mine.flush(), 0);
    EXPECT_EQ(valueOf(theirs, "Count"), std::to_string(changes));
}

TEST_F(RegistryFileTest, WhatIsNotSavedYetIsAtTheEnd) {
    {
        RegistryStore registry = store();
        ASSERT_EQ(change(registry, valueChange("Name", "x")), 0);
    }
    RegistryStore other = store();
    EXPECT_EQ(valueOf(other, "Name"), "x");
}

TEST_F(RegistryFileTest, AProgramThatEndsHasSavedWhatItClosed) {
    const pid_t program = fork();
    if (program == 0) {
        constexpr int keys = 50;
        for (int i = 0; i < keys; ++i) {
            platform::RegistryKey key = 0;
            platform::RegistryDisposition disposition{};
            const std::string path = "Closed\\" + std::to_string(i);
            if (platform::regCreateKey(platform::registryCurrentUser, path, platform::registryNonVolatile,
                                       platform::RegistrySetValue, key, disposition) != 0)
                _exit(1);
            platform::regCloseKey(key);
        }
        std::exit(0); // NOLINT(concurrency-mt-unsafe): as a program ends
    }
    int state = 0;
    waitpid(program, &state, 0);
    ASSERT_TRUE(WIFEXITED(state));
    ASSERT_EQ(WEXITSTATUS(state), 0);
    RegistryStore registry = store();
    ASSERT_EQ(registry.refresh(), 0);
    const auto closed = registry.top().find(below({"Closed"}));
    ASSERT_TRUE(closed);
    EXPECT_EQ(closed->subkeys.size(), 50U);
}

TEST_F(RegistryFileTest, HistoryDoesNotPileUp) {
    RegistryStore registry = store();
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(setValue(registry, "Name", std::to_string(i) + std::string(1000, '.')), 0);
    EXPECT_LT(fs::file_size(file_), 1200U);
    EXPECT_EQ(filesBeside(file_), Files());
}

TEST_F(RegistryFileTest, AKeyOfADeletedFileIsGone) {
    RegistryStore registry = store();
    ASSERT_EQ(setValue(registry, "Name", "x", below({"Key"})), 0);
    const std::weak_ptr<RegistryNode> opened = registry.top().find(below({"Key"}));
    fs::remove(file_);
    EXPECT_EQ(valueOf(registry, "Name", below({"Key"})), "(none)");
    EXPECT_TRUE(opened.expired());
    ASSERT_EQ(setValue(registry, "Other", "x"), 0);
    EXPECT_EQ(contentsOf(file_).find("\\Key"), std::string::npos);
}

TEST_F(RegistryFileTest, OfACutOffFileTheWholeLinesCount) {
    {
        RegistryStore registry = store();
        ASSERT_EQ(setValue(registry, "A", "first"), 0);
        ASSERT_EQ(setValue(registry, "B", std::string("\0\n\"", 3), below({"One", "Two"})), 0);
    }
    const std::string whole = contentsOf(file_);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        writeContents(file_, whole.substr(0, length));
        RegistryStore registry = store();
        const std::size_t lines = whole[length] == '\n' ? length : whole.substr(0, length).rfind('\n') + 1;
        RegistryNode expected;
        platform::linux::readRegistryText(whole.substr(0, lines), expected);
        ASSERT_EQ(allOf(registry), platform::linux::registryText(expected)) << length << " bytes";
        ASSERT_EQ(contentsOf(file_).size(), length) << "reading has changed the file";
        ASSERT_EQ(setValue(registry, "New", "value"), 0);
        RegistryStore other = store();
        ASSERT_EQ(valueOf(other, "New"), "value");
        ASSERT_EQ(allOf(other), allOf(registry));
        const std::string kept = file_.string() + ".damaged-1";
        ASSERT_EQ(fs::exists(kept), lines != length) << length << " bytes";
        if (lines != length) {
            ASSERT_EQ(contentsOf(kept), whole.substr(0, length));
        }
        fs::remove(kept);
    }
}

TEST_F(RegistryFileTest, ADamagedLineIsPassedOverAndTheFileKept) {
    const std::array<std::string, 3> names = {"A", "B", "C"};
    {
        RegistryStore registry = store();
        for (const std::string& name : names)
            ASSERT_EQ(setValue(registry, name, name), 0);
    }
    const std::string good = contentsOf(file_);
    const std::size_t firstValue = good.find('\n', good.find(" key ")) + 1;
    for (std::size_t i = 0; i < good.size(); ++i) {
        std::string bad = good;
        bad[i] = static_cast<char>(bad[i] ^ 4);
        writeContents(file_, bad);
        RegistryStore registry = store();
        const auto lost = std::count_if(names.begin(), names.end(), [&](const std::string& name) {
            return valueOf(registry, name) != name;
        });
        const bool joined = good[i] == '\n' && i >= firstValue && i + 1 < good.size(); // with the next line
        ASSERT_EQ(lost, i < firstValue - 1 ? 0 : joined ? 2 : 1) << i;
        ASSERT_EQ(filesBeside(file_), Files()) << "reading must not mend";
        ASSERT_EQ(setValue(registry, "New", "value"), 0);
        RegistryStore other = store();
        ASSERT_EQ(allOf(other), allOf(registry));
        ASSERT_EQ(valueOf(other, "New"), "value");
        ASSERT_EQ(contentsOf(file_.string() + ".damaged-1"), bad) << i;
        fs::remove(file_.string() + ".damaged-1");
    }
}

TEST_F(RegistryFileTest, AForeignFileIsKept) {
    const Files foreign = {"x", "\n", std::string(100, '\0'), "orvanta-usbtool registry 3\nnews\n",
                           "[Section]\nKey=Value\n"};
    for (const std::string& contents : foreign) {
        writeContents(file_, contents);
        RegistryStore registry = store();
        EXPECT_EQ(valueOf(registry, "Name"), "(none)");
        EXPECT_EQ(setValue(registry, "Name", "x"), 0);
        EXPECT_EQ(valueOf(registry, "Name"), "x");
        ASSERT_EQ(filesBeside(file_), Files{"registry.damaged-1"});
        EXPECT_EQ(contentsOf(file_.string() + ".damaged-1"), contents);
        fs::remove(file_.string() + ".damaged-1");
    }
}

TEST_F(RegistryFileTest, TheBeginningOfAFileHoldsNothingThatCouldBeLost) {
    for (const char* const contents : {"", "orvanta-usbtool registry 2"}) {
        writeContents(file_, contents);
        RegistryStore registry = store();
        EXPECT_EQ(setValue(registry, "Name", "x"), 0);
        EXPECT_EQ(filesBeside(file_), Files());
    }
}

TEST_F(RegistryFileTest, SeveralDamagedFilesAreKeptBesideEachOther) {
    for (const char* const contents : {"first\n", "second\n"}) {
        writeContents(file_, contents);
        RegistryStore registry = store();
        ASSERT_EQ(setValue(registry, "Name", "x"), 0);
    }
    EXPECT_EQ(contentsOf(file_.string() + ".damaged-1"), "first\n");
    EXPECT_EQ(contentsOf(file_.string() + ".damaged-2"), "second\n");
}

/// A line with the checksum that it has to have.
std::string lineOf(const std::string& body) {
    std::uint32_t sum = 0xFFFFFFFFU;
    for (const char c : body) {
        sum ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1) ^ ((sum & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    std::array<char, 9> hex{};
    std::snprintf(hex.data(), hex.size(), "%08X", ~sum);
    return hex.data() + (' ' + body) + '\n';
}

TEST_F(RegistryFileTest, LinesThatSayNothingAreDamage) {
    std::string tooDeep = "key a";
    for (int i = 0; i < 100'000; ++i)
        tooDeep += "\\a";
    const Files bad = {"",
                       "key",
                       "key ",
                       "key \\",
                       "key a b",
                       "no-key a",
                       "key a%",
                       "key a%4",
                       "key a%4x",
                       "value a 1 name",
                       "value a 1 name data more",
                       "value a x name data",
                       "value a 4294967296 name data",
                       "value a -1 name data",
                       "value  1 name data",
                       tooDeep};
    const std::string header = "orvanta-usbtool registry 2\n";
    for (const std::string& body : bad) {
        writeContents(file_, header + lineOf(body) + lineOf("value HKEY_CURRENT_USER 3 Good x"));
        RegistryStore registry = store();
        EXPECT_EQ(valueOf(registry, "Good"), "x") << body.substr(0, 50);
        EXPECT_EQ(registry.top().subkeys.size(), 1U) << body.substr(0, 50);
        EXPECT_EQ(setValue(registry, "Name", "x"), 0);
        EXPECT_TRUE(fs::remove(file_.string() + ".damaged-1")) << body.substr(0, 50);
    }
    writeContents(file_, header + lineOf("value a 4294967295  "));
    RegistryStore registry = store();
    ASSERT_EQ(setValue(registry, "Name", "x"), 0);
    EXPECT_EQ(filesBeside(file_), Files()) << "an empty name and no data are a value";
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
    const fs::path target = folder_.outside() / "elsewhere";
    writeContents(target, "");
    fs::create_directories(file_.parent_path());
    fs::create_symlink(target, file_);
    RegistryStore registry = store();
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(setValue(registry, "Name", std::to_string(i) + std::string(1000, '.')), 0);
    EXPECT_TRUE(fs::is_symlink(file_));
    EXPECT_GT(fs::file_size(target), 1000U);
    RegistryStore other = store();
    EXPECT_EQ(valueOf(other, "Name"), "2" + std::string(1000, '.'));
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
    writeContents(file_, "");
    fs::resize_file(file_, std::uintmax_t{1} << 40);
    RegistryStore registry = store();
    EXPECT_EQ(valueOf(registry, "Name"), "(1016)");
    EXPECT_EQ(setValue(registry, "Name", "x"), platform::RegistryIoFailed);
    EXPECT_EQ(fs::file_size(file_), std::uintmax_t{1} << 40);
}

TEST_F(RegistryFileTest, NoFileGrowsOversized) {
    RegistryStore registry = store();
    ASSERT_EQ(registry.refresh(), 0);
    const auto nothing = [](RegistryNode&) {};
    EXPECT_EQ(registry.change(std::size_t{1} << 28, nothing), 0);
    EXPECT_EQ(registry.change(1, nothing), platform::RegistryDiskFull);
}

TEST_F(RegistryFileTest, AReadOnlyFileCanBeReadOnly) {
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
        fs::permissions(folder_.outside(), fs::perms(0711));
        ASSERT_EQ(chown(file_.parent_path().c_str(), nobody, gid_t(-1)), 0);
        ASSERT_EQ(seteuid(nobody), 0);
    }
    fs::permissions(file_.parent_path(), fs::perms(0300));
    RegistryStore registry = store();
    EXPECT_EQ(change(registry, valueChange("Name", "x")), 0);
    EXPECT_EQ(registry.flush(), platform::RegistryAccessDenied);
    fs::permissions(file_.parent_path(), fs::perms(0700));
    EXPECT_EQ(registry.flush(), 0);
    EXPECT_EQ(filesBeside(file_), Files());
    ASSERT_EQ(seteuid(user), 0);
}

TEST_F(RegistryFileTest, WithoutAFolderNothingCanBeKept) {
    RegistryStore registry{""};
    EXPECT_EQ(valueOf(registry, "Name"), "(none)");
    EXPECT_EQ(setValue(registry, "Name", "x"), platform::RegistryIoFailed);
}

} // namespace
