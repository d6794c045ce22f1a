#include "platform/files.h"

#include "platform/program_folder.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

#include <map>

using namespace platform;
using namespace conformance;
namespace fs = std::filesystem;

namespace {

using Entries = std::map<std::string, std::uint32_t>;

class Search : public testing::Test {
protected:
    static Entries all(std::string_view path) {
        FileSearch search(path);
        Entries found;
        for (FoundFile file; search.next(file);) {
            EXPECT_TRUE(found.emplace(file.name, file.attributes).second) << file.name << " came twice";
        }
        FoundFile file;
        EXPECT_FALSE(search.next(file)) << "the end stays the end";
        return found;
    }

    Drives drives;
    fs::path stick = drives.add('E', DriveRemovable);
};

} // namespace

TEST_F(Search, AnEmptyRootHasNoEntries) {
    EXPECT_EQ(all(R"(E:\*.*)"), Entries());
    EXPECT_EQ(all(R"(E:\*)"), Entries());
}

TEST_F(Search, AllOfTheRoot) {
    fs::create_directory(stick / "folder");
    put(stick / "no extension", "x");
    put(stick / named("Größe.txt"), "x");
    const Entries expected = {
        {"folder", FileDirectory}, {"no extension", FileArchive}, {"Größe.txt", FileArchive}};
    EXPECT_EQ(all(R"(E:\*.*)"), expected);
    EXPECT_EQ(all(R"(E:\*)"), expected);
    EXPECT_EQ(all(R"(e:\folder\..\*)"), expected);
}

TEST_F(Search, AFolderHasTheDotsToo) {
    fs::create_directories(stick / "folder" / "deeper");
    put(stick / "folder" / "file", "x");
    const Entries expected = {
        {".", FileDirectory}, {"..", FileDirectory}, {"deeper", FileDirectory}, {"file", FileArchive}};
    EXPECT_EQ(all(R"(E:\folder\*.*)"), expected);
    EXPECT_EQ(all(R"(E:\FOLDER\*)"), expected);
    EXPECT_EQ(all(R"(E:\folder\deeper\*.*)").size(), 2U);
}

TEST_F(Search, TellsReadOnlyFiles) {
    put(stick / "a", "x");
    const ReadOnly guard(stick / "a");
    EXPECT_EQ(all(R"(E:\*.*)"), (Entries{{"a", FileArchive | FileReadOnly}}));
}

TEST_F(Search, OneFileOrFolderByItsOwnName) {
    fs::create_directory(stick / "Folder");
    put(stick / "File.TXT", "x");
    EXPECT_EQ(all(R"(E:\File.TXT)"), (Entries{{"File.TXT", FileArchive}}));
    EXPECT_EQ(all(R"(E:\file.txt)"), (Entries{{"File.TXT", FileArchive}}))
        << "the name as it stands in the folder";
    EXPECT_EQ(all(R"(E:\folder)"), (Entries{{"Folder", FileDirectory}}));
}

TEST_F(Search, NothingWhereNothingIs) {
    put(stick / "file", "x");
    for (const std::string_view path : {R"(E:\missing)", R"(E:\missing\*.*)", R"(E:\file\*.*)", R"(E:\file\)",
                                        R"(E:\)", R"(X:\*.*)", R"(E:\NUL)", R"(E:\a:b)", "", "*", "*.*"}) {
        EXPECT_EQ(all(path), Entries()) << path;
    }
}

TEST_F(Search, ManyEntries) {
    constexpr int count = 1500;
    fs::create_directory(stick / "many");
    for (int i = 0; i < count; ++i)
        put(stick / "many" / std::to_string(i), "");
    EXPECT_EQ(all(R"(E:\many\*.*)").size(), count + 2U);
}

TEST_F(Search, FindsWhatTheProgramFolderHas) {
    put(fs::path(programFolder()) / "search.tmp", "x");
    EXPECT_EQ(all(programFolder() + "\\*.*").count("search.tmp"), 1U);
    EXPECT_EQ(all(programFolder() + "\\SEARCH.tmp"), (Entries{{"search.tmp", FileArchive}}));
    fs::remove(fs::path(programFolder()) / "search.tmp");
}

TEST_F(Search, MayBeLeftInTheMiddle) {
    put(stick / "a", "");
    put(stick / "b", "");
    for (int i = 0; i < 3000; ++i) { // more than a process may have open files
        FileSearch search(R"(E:\*.*)");
        FoundFile file;
        ASSERT_TRUE(search.next(file));
    }
}
