// The list of all files below a folder.

#include "main_window.h"

#include "drive/file_listing.h"

using unit::MainWindow;

class FileListing : public MainWindow {
protected:
    FileListing() {
        folder("D:\\Filme");
        folder("D:\\Filme\\Neu");
        putFile("D:\\a.txt", "");
        putFile("D:\\Filme\\b.txt", "");
        putFile("D:\\Filme\\Neu\\c.txt", "");
    }

    static void folder(const std::string& path) { computer().files[path] = {"", platform::FileDirectory}; }

    std::vector<std::string> list(const std::string& path, bool recursion) {
        drive::GetAllFiles(path, names, attributes, recursion, count);
        return {names.begin(), names.begin() + count};
    }

    std::vector<std::string> names;
    std::vector<std::int16_t> attributes;
    std::int32_t count = 0;
};

TEST_F(FileListing, WithoutRecursionHasTheFilesOnly) {
    EXPECT_EQ(list("D:\\", false), std::vector<std::string>{"D:\\a.txt"});
    EXPECT_EQ(computer().pumps, 1);
}

TEST_F(FileListing, WithRecursionHasTheFoldersAndWhatIsBelow) {
    const std::vector<std::string> expected = {"D:\\Filme", "D:\\Filme\\Neu", "D:\\Filme\\Neu\\c.txt",
                                               "D:\\Filme\\b.txt", "D:\\a.txt"};
    EXPECT_EQ(list("D:\\", true), expected);
    EXPECT_EQ(computer().pumps, 3) << "events run at every folder";
    EXPECT_EQ(attributes[0], 16);
    EXPECT_EQ(attributes[4], 32);
}

TEST_F(FileListing, ABackslashIsAppendedWhereItIsMissing) {
    EXPECT_EQ(list("D:\\Filme", false), std::vector<std::string>{"D:\\Filme\\b.txt"});
}

TEST_F(FileListing, GoesOnBehindWhatIsThere) {
    list("D:\\", false);
    EXPECT_EQ(list("D:\\Filme", false), (std::vector<std::string>{"D:\\a.txt", "D:\\Filme\\b.txt"}));
    EXPECT_EQ(count, 2);
}

TEST_F(FileListing, TheArraysGrowByAHundred) {
    for (int i = 100; i < 350; ++i)
        putFile("D:\\Filme\\Neu\\f" + std::to_string(i), "");
    EXPECT_EQ(list("D:\\Filme\\Neu", false).size(), 251U);
    EXPECT_EQ(names.size(), 300U);
    EXPECT_EQ(attributes.size(), 300U);
}

TEST_F(FileListing, AnArrayGrowsBeforeItsLastEntryIsUsed) {
    for (int i = 100; i < 199; ++i)
        putFile("D:\\Filme\\Neu\\f" + std::to_string(i), "");
    EXPECT_EQ(list("D:\\Filme\\Neu", false).size(), 100U);
    EXPECT_EQ(names.size(), 200U) << "entry 99 was the last one";
    EXPECT_EQ(attributes.size(), 200U);
}

TEST_F(FileListing, NamesGrowAlreadyWhenItIsEntered) {
    names = {"first", "second"};
    attributes = {1, 2};
    count = 1;
    list("D:\\none", false);
    EXPECT_EQ(names.size(), 102U);
    EXPECT_EQ(names[0], "first");
    EXPECT_EQ(names[1], "second");
    EXPECT_EQ(attributes.size(), 2U);
}

TEST_F(FileListing, ACountBeyondTheArraysIsAnError) {
    const auto error = [this](std::int32_t given) {
        count = given;
        return unit::errorOf([this] { list("D:\\", false); });
    };
    EXPECT_EQ(error(-1), 9);
    EXPECT_EQ(error(1), 9);
    names.resize(500);
    EXPECT_EQ(error(300), 9) << "the other array is shorter";
}

TEST_F(FileListing, AFolderThatDoesNotExistHasNone) {
    EXPECT_TRUE(list("D:\\none", true).empty());
    EXPECT_EQ(count, 0);
}

TEST_F(FileListing, EndsWithTheProgram) {
    start();
    computer().onPump = [this] { close(); };
    EXPECT_THROW(list("D:\\", true), toolkit::Unwind);
}
