// What a stick or a folder of this system can hold that Windows does not know: links, pipes, devices, names
// of any bytes, names that differ in case alone.
#include "platform/linux/files/path.h"

#include "platform/profile.h"
#include "platform/program_folder.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/sysmacros.h>
#include <sys/un.h>

#include <array>

using namespace platform;
using namespace conformance;
namespace fs = std::filesystem;

namespace {

class Path : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(outside);
        put(outside / "secret", "secret");
    }

    /// Nothing can be done with the path, whatever it is asked for.
    static void expectNothingThere(const std::string& path, FileResult expected) {
        std::string contents;
        std::array<char, 100> buffer{};
        EXPECT_EQ(fileAttributes(path), std::nullopt) << path;
        EXPECT_EQ(fileLength(path), std::nullopt) << path;
        EXPECT_EQ(readWholeFile(path, contents), expected) << path;
        EXPECT_EQ(writeWholeFile(path, "changed"), expected) << path;
        EXPECT_EQ(copyFile(R"(E:\file)", path), expected) << path;
        EXPECT_EQ(copyFile(path, R"(E:\copy)"), expected) << path;
        EXPECT_EQ(deleteFile(path), expected) << path;
        EXPECT_EQ(profileSection("s", buffer, path), 0U) << path;
        EXPECT_FALSE(writeProfileString("s", "k", "v", path)) << path;
        FoundFile found;
        EXPECT_FALSE(FileSearch(path).next(found)) << path;
    }

    static std::vector<std::string> names(std::string_view path) {
        std::vector<std::string> all;
        FileSearch search(path);
        for (FoundFile found; search.next(found);)
            all.push_back(found.name);
        return all;
    }

    static std::ptrdiff_t openFiles() { return entries("/proc/self/fd"); }

    Drives drives;
    fs::path stick = drives.add('E', DriveRemovable);
    fs::path outside = stick.parent_path() / "outside";
};

} // namespace

TEST_F(Path, ALinkNeverLeadsOutOfADrive) {
    put(stick / "file", "file");
    fs::create_symlink(outside / "secret", stick / "link");
    fs::create_symlink("../outside/secret", stick / "relative");
    fs::create_symlink(outside / "new", stick / "dangling");
    for (const auto& path : {R"(E:\link)", R"(E:\LINK)", R"(E:\relative)", R"(E:\dangling)"}) {
        expectNothingThere(path, FileResult::PathNotFound);
    }
    EXPECT_EQ(get(outside / "secret"), "secret");
    EXPECT_EQ(entries(outside), 1);
    EXPECT_TRUE(fs::is_symlink(stick / "link"));
    EXPECT_EQ(names(R"(E:\*.*)"), std::vector<std::string>{"file"});
}

TEST_F(Path, AFolderLinkNeverLeadsOutOfADrive) {
    put(stick / "file", "file");
    fs::create_directory_symlink(outside, stick / "folder");
    fs::create_directory_symlink("/", stick / "root");
    expectNothingThere(R"(E:\folder\secret)", FileResult::PathNotFound);
    expectNothingThere(R"(E:\folder\new)", FileResult::PathNotFound);
    expectNothingThere(R"(E:\root\etc\passwd)", FileResult::PathNotFound);
    EXPECT_EQ(fileAttributes(R"(E:\folder)"), std::nullopt);
    EXPECT_EQ(fileAttributes(R"(E:\folder\)"), std::nullopt);
    EXPECT_TRUE(names(R"(E:\folder\*.*)").empty());
    EXPECT_EQ(entries(outside), 1);
}

TEST_F(Path, ALinkWithinTheDriveIsNoFileEither) {
    put(stick / "file", "file");
    fs::create_symlink("file", stick / "link");
    expectNothingThere(R"(E:\link)", FileResult::PathNotFound);
    EXPECT_EQ(get(stick / "file"), "file");
}

TEST_F(Path, ThePathOfADriveMayItselfBeALink) {
    put(stick / "file", "x");
    const fs::path moved = stick.parent_path() / "moved";
    fs::rename(stick, moved);
    fs::create_directory_symlink(moved, stick);
    EXPECT_EQ(fileLength(R"(E:\file)"), 1U);
}

TEST_F(Path, PipesSocketsAndDevicesAreRefusedAtOnce) {
    put(stick / "file", "file");
    ASSERT_EQ(mkfifo((stick / "pipe").c_str(), 0666), 0);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (stick / "socket").string().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(listener);

    expectNothingThere(R"(E:\pipe)", FileResult::PathFileAccess);
    expectNothingThere(R"(E:\socket)", FileResult::PathFileAccess);
    EXPECT_EQ(names(R"(E:\*.*)"), std::vector<std::string>{"file"});
}

TEST_F(Path, DevicesAreRefused) {
    put(stick / "file", "file");
    if (mknod((stick / "zero").c_str(), S_IFCHR | 0666, makedev(1, 5)) != 0)
        GTEST_SKIP() << "only root makes devices";
    expectNothingThere(R"(E:\zero)", FileResult::PathFileAccess);
}

TEST_F(Path, TheVeryNameGoesBeforeOneThatDiffersInCase) {
    for (const auto& name : {"file", "File", "FILE"})
        put(stick / name, name);
    std::string contents;
    for (const std::string name : {"file", "File", "FILE"}) {
        EXPECT_EQ(readWholeFile("E:\\" + name, contents), FileResult::Ok);
        EXPECT_EQ(contents, name);
    }
    EXPECT_EQ(readWholeFile(R"(E:\fILE)", contents), FileResult::Ok);
    EXPECT_EQ(contents, "FILE") << "the first by its bytes";
}

TEST_F(Path, NamesThatNoPathCanNameAreNotFound) {
    for (const std::string name :
         {"a:b", "NUL", "com1.txt", "x\\y", "..\\x", "dot.", "blank ", "new\nline", "\xFF\xFE", "*", "..."}) {
        put(stick / name, "x");
    }
    fs::create_directory(stick / "a\\..");
    put(stick / "good", "x");
    EXPECT_EQ(names(R"(E:\*.*)"), std::vector<std::string>{"good"});
}

TEST_F(Path, OtherPathsLeadNowhere) {
    put(stick / "file", "x");
    const auto current = fs::current_path();
    fs::current_path(stick);
    for (const std::string& path :
         {std::string("file"), std::string(R"(\file)"), std::string(R"(.\file)"), std::string("E:file"),
          (stick / "file").string(), std::string("/etc/passwd"), "//" + stick.string() + "/file",
          std::string(R"(\\?\E:\file)"), std::string(R"(EE:\file)"), std::string("\xC3\x84:\\file"),
          std::string("E:\\\xFF"), std::string("E:\\\xC3")}) {
        expectNothingThere(path, FileResult::PathNotFound);
    }
    fs::current_path(current);
    EXPECT_EQ(entries(stick), 1);
}

TEST_F(Path, LinksInTheProgramFolderAreFollowed) {
    const fs::path own = programFolder();
    const std::string ownPath = programFolder();
    put(outside / "linked.ini", "[s]\r\nk=1\r\n");
    fs::create_symlink(outside / "linked.ini", own / "Linked.ini");
    fs::create_directory_symlink(outside, own / "folder");

    EXPECT_EQ(fileAttributes(ownPath + R"(\linked.ini)"), FileArchive);
    EXPECT_EQ(fileLength(ownPath + R"(\folder\secret)"), 6U);
    EXPECT_TRUE(writeProfileString("s", "k", "2", ownPath + R"(\linked.ini)"));
    EXPECT_EQ(get(outside / "linked.ini"), "[s]\r\nk=2\r\n") << "what the link leads to is replaced";
    EXPECT_TRUE(fs::is_symlink(own / "Linked.ini"));
    EXPECT_EQ(names(ownPath + R"(\folder\*)").size(), 4U);

    fs::remove(own / "Linked.ini");
    fs::remove(own / "folder");
}

TEST_F(Path, NativePathsOfWhatExists) {
    fs::create_directory(stick / "Folder");
    put(stick / "Folder" / "File", "x");
    EXPECT_EQ(linux::nativePath(R"(E:\)"), stick.string() + "/");
    EXPECT_EQ(linux::nativePath(R"(e:\folder)"), (stick / "Folder").string());
    EXPECT_EQ(linux::nativePath(R"(E:\folder\..\FOLDER\file)"), (stick / "Folder" / "File").string());
    EXPECT_EQ(linux::nativePath(R"(E:\missing)"), std::nullopt);
    EXPECT_EQ(linux::nativePath(R"(E:\folder\file\)"), std::nullopt);
    EXPECT_EQ(linux::nativePath(R"(X:\)"), std::nullopt);
    EXPECT_EQ(linux::nativePath("/etc"), std::nullopt);
}

TEST_F(Path, ADotInFrontHides) {
    put(stick / ".hidden", "x");
    EXPECT_EQ(fileAttributes(R"(E:\.hidden)"), FileArchive | FileHidden);
    fs::create_directory(stick / ".folder");
    EXPECT_EQ(fileAttributes(R"(E:\.folder)"), FileDirectory);
}

TEST_F(Path, CopyingReplacesAHiddenFile) {
    put(stick / "file", "new");
    put(stick / ".hidden", "old");
    EXPECT_EQ(copyFile(R"(E:\file)", R"(E:\.hidden)"), FileResult::Ok);
    EXPECT_EQ(get(stick / ".hidden"), "new");
    EXPECT_EQ(writeWholeFile(R"(E:\.hidden)", "new"), FileResult::Ok) << "writing does not";
}

TEST_F(Path, CopyingKeepsThePermissions) {
    put(stick / "file", "x");
    fs::permissions(stick / "file", fs::perms{0741});
    ASSERT_EQ(copyFile(R"(E:\file)", R"(E:\copy)"), FileResult::Ok);
    EXPECT_EQ(fs::status(stick / "copy").permissions(), fs::perms{0741});
}

TEST_F(Path, AHardLinkIsTheSameFile) {
    put(stick / "file", "text");
    fs::create_hard_link(stick / "file", stick / "other");
    EXPECT_EQ(copyFile(R"(E:\file)", R"(E:\other)"), FileResult::PermissionDenied);
    EXPECT_EQ(get(stick / "file"), "text");
}

TEST_F(Path, WritingAProfileKeepsThePermissions) {
    put(stick / "USB.ini", "");
    fs::permissions(stick / "USB.ini", fs::perms{0640});
    const bool owned = chown((stick / "USB.ini").c_str(), 12345, 12346) == 0; // as root alone
    ASSERT_TRUE(writeProfileString("s", "k", "v", R"(E:\USB.ini)"));
    struct stat info {};
    ASSERT_EQ(stat((stick / "USB.ini").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777U, 0640U);
    if (owned) {
        EXPECT_EQ(info.st_uid, 12345U);
        EXPECT_EQ(info.st_gid, 12346U);
    }
}

TEST_F(Path, NothingStaysOpen) {
    put(stick / "file", "x");
    fs::create_symlink("/etc/passwd", stick / "link");
    const auto before = openFiles();
    std::string contents;
    for (const std::string path :
         {R"(E:\file)", R"(E:\link)", R"(E:\missing)", R"(E:\a\b)", R"(E:\)", R"(X:\)"}) {
        static_cast<void>(fileAttributes(path));
        static_cast<void>(readWholeFile(path, contents));
        static_cast<void>(copyFile(path, R"(E:\copy)"));
        static_cast<void>(writeProfileString("s", "k", "v", path));
        static_cast<void>(names(path + "\\*.*"));
        static_cast<void>(names(path));
        static_cast<void>(deleteFile(path));
    }
    EXPECT_EQ(openFiles(), before);
}
