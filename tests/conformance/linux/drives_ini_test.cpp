// The drive table in "Drives.ini".
#include "platform/drive_identity.h"
#include "platform/linux/drives/drive_table.h"
#include "platform/linux/drives/drives_ini.h"
#include "platform/profile.h"
#include "platform/volumes.h"

#include "tests/conformance/linux/temporary_folder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <unistd.h>

using conformance::TemporaryFolder;
using namespace platform;
using linux::IniDrive;
using linux::parseDrivesIni;

namespace fs = std::filesystem;

namespace {

using namespace std::string_literals;

std::vector<IniDrive> parse(std::string_view contents) {
    return parseDrivesIni(contents, "/base");
}

std::string letters(std::string_view contents) {
    std::string result;
    for (const IniDrive& drive : parse(contents))
        result += drive.letter;
    return result;
}

class DrivesIni : public testing::Test {
protected:
    DrivesIni() { fs::create_directory(stick); }

public:
    ~DrivesIni() override { fs::remove(file); }

protected:
    void write(const std::string& contents) const { std::ofstream(file, std::ios::binary) << contents; }
    /// A table of one drive, `E:`, in the test's folder, with further keys.
    void writeDrive(const std::string& keys) const {
        write("[E:]\r\nType=2\r\nPath=" + stick.string() + "\r\n" + keys);
    }
    std::string read() const {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static std::uint64_t number(const DiskFreeSpace::Bytes& bytes) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i)
            value += std::uint64_t{bytes[i]} << (8 * i);
        return value;
    }

    TemporaryFolder folder;
    fs::path stick = folder.path() / "stick";
    fs::path file = fs::read_symlink("/proc/self/exe").parent_path() / "Drives.ini";
};

std::string labelOf(const char* root) {
    std::array<char, 256> label{};
    std::array<char, 256> fileSystem{};
    volumeInformation(root, label, fileSystem);
    return label.data();
}

} // namespace

TEST(DrivesIniText, KeysOfADrive) {
    const auto drives =
        parse("[E:]\nType=2\nPath=/mnt/stick/\nLabel=M\xFCller\nFileSystem=FAT32\nTotal=4294967296\nFree=7");
    ASSERT_EQ(drives.size(), 1U);
    EXPECT_EQ(drives[0].letter, 'E');
    EXPECT_EQ(drives[0].type, DriveRemovable);
    EXPECT_EQ(drives[0].folder, "/mnt/stick");
    EXPECT_EQ(drives[0].names.label, "Müller");
    EXPECT_EQ(drives[0].names.fileSystem, "FAT32");
    EXPECT_EQ(drives[0].total, 4'294'967'296U);
    EXPECT_EQ(drives[0].free, 7U);
}

TEST(DrivesIniText, ReadsAsEveryProfileFile) {
    const auto drives =
        parse("; [X:]\r[ f: ] rest\r\n  TYPE = \"3\"\r\n;Path=/no\r\npath\t= sub/folder \r\nPath=/second\r\n"
              "=v\r\nword\r\n[F:]\r\nLabel=another section\r\n");
    ASSERT_EQ(drives.size(), 1U);
    EXPECT_EQ(drives[0].letter, 'F');
    EXPECT_EQ(drives[0].type, DriveFixed);
    EXPECT_EQ(drives[0].folder, "/base/sub/folder");
    EXPECT_EQ(drives[0].names.label, "");
    EXPECT_FALSE(drives[0].total);
}

TEST(DrivesIniText, SectionsAndLinesEndWhereAWriterFindsThem) {
    EXPECT_EQ(letters("[E:]x]\nType=2\nPath=/a\n"), "") << "the name ends at the last bracket";
    EXPECT_EQ(letters("[E:\0]\nType=2\nPath=/a\n"s), "") << "a line ends at its first NUL";
    const auto drives = parse("[E:]\0]\nType=2\0x\nPath=/a\nLabel=ONE\0TWO\n"s);
    ASSERT_EQ(drives.size(), 1U);
    EXPECT_EQ(drives[0].names.label, "ONE");
}

TEST(DrivesIniText, SectionsThatMakeNoDrive) {
    EXPECT_EQ(letters(""), "");
    EXPECT_EQ(letters("Type=2\nPath=/a\n"), "");
    for (const char* name : {"", "E", "EE:", "1:", "E:\\", "Drive", "\xC4:", "["})
        EXPECT_EQ(letters("["s + name + "]\nType=2\nPath=/a\n"), "") << name;
    for (const char* keys :
         {"Type=2", "Path=/a", "Type=\nPath=/a", "Type=two\nPath=/a", "Type=2x\nPath=/a", "Type=-2\nPath=/a",
          "Type=1\nPath=/a", "Type=6\nPath=/a", "Type=2\nPath=", "Type=99999999999999999999999\nPath=/a"})
        EXPECT_EQ(letters("[E:]\n"s + keys), "") << keys;
    EXPECT_EQ(letters("[E:]\nType=2\nPath=/a\nTotal=x\nFree=-1"), "E");
    EXPECT_EQ(letters("[Z:]\nType=4\nPath=/\n[bad\n[E]\nType=2\nPath=/a\n[c:]\nType=3\nPath=/\n"), "CZ");
}

TEST_F(DrivesIni, TotalAloneLeavesWhatTheFilesDoNotUse) {
    writeDrive("Total=1000\r\n");
    std::ofstream(stick / "a") << std::string(300, 'x');
    fs::create_directory(stick / "sub");
    std::ofstream(stick / "sub" / "b") << std::string(200, 'x');
    fs::create_symlink(stick / "a", stick / "link");
    fs::create_directory_symlink(folder.path(), stick / "loop");
    DiskFreeSpace space;
    ASSERT_TRUE(diskFreeSpace("E:\\", space));
    EXPECT_EQ(number(space.total), 1000U);
    EXPECT_EQ(number(space.totalFree), 500U);
    EXPECT_EQ(number(space.freeToCaller), 500U);
    std::ofstream(stick / "c") << std::string(900, 'x');
    ASSERT_TRUE(diskFreeSpace("E:\\", space));
    EXPECT_EQ(number(space.totalFree), 0U);
}

/// Deeper than a path can name.
void makeDeepFolders(const fs::path& base, int levels) {
    int at = open(base.c_str(), O_PATH | O_DIRECTORY);
    for (int i = 0; i < levels && at >= 0; ++i) {
        const bool made = mkdirat(at, "d", 0700) == 0;
        const int next = made ? openat(at, "d", O_PATH | O_DIRECTORY) : -1;
        close(at);
        at = next;
    }
    ASSERT_GE(at, 0);
    close(at);
}

TEST_F(DrivesIni, AFolderThatTakesTooLongToMeasureHasWhatItsFileSystemHas) {
    makeDeepFolders(stick, 20000);
    const fs::space_info system = fs::space(stick);
    writeDrive("Total=" + std::to_string(std::uint64_t{1} << 60U) + "\r\n");
    DiskFreeSpace space;
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(diskFreeSpace("E:\\", space));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(number(space.total), std::uint64_t{1} << 60U);
    EXPECT_LE(number(space.totalFree), system.capacity);
    EXPECT_GT(number(space.totalFree), 0U);
    writeDrive("Total=1000\r\n");
    ASSERT_TRUE(diskFreeSpace("E:\\", space));
    EXPECT_EQ(number(space.totalFree), 1000U) << "no more than there is";
}

TEST_F(DrivesIni, TotalAndFreeAsTheyStand) {
    writeDrive("Total=18446744073709551615\r\nFree=1311768467463790320\r\n");
    DiskFreeSpace space;
    ASSERT_TRUE(diskFreeSpace("E:\\", space));
    EXPECT_EQ(number(space.total), 18'446'744'073'709'551'615U);
    EXPECT_EQ(space.totalFree, (DiskFreeSpace::Bytes{0xF0, 0xDE, 0xBC, 0x9A, 0x78, 0x56, 0x34, 0x12}));
}

TEST_F(DrivesIni, ChangeCountsAtTheNextCall) {
    writeDrive("Label=ONE\r\n");
    EXPECT_EQ(labelOf("E:\\"), "ONE");
    writeDrive("Label=TWO\r\n"); // as long as before, and in the same moment
    EXPECT_EQ(labelOf("E:\\"), "TWO");
}

TEST_F(DrivesIni, AnErrorLeavesTheLastGoodTable) {
    writeDrive("Label=GOOD\r\n");
    ASSERT_EQ(labelOf("E:\\"), "GOOD");
    fs::remove(file);
    fs::create_symlink("/proc/self/mem", file); // a file whose first bytes cannot be read
    testing::internal::CaptureStderr();
    EXPECT_EQ(labelOf("E:\\"), "GOOD");
    EXPECT_EQ(labelOf("E:\\"), "GOOD");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "orvanta-usbtool: Drives.ini kann nicht gelesen werden: Input/output error\n")
        << "told once";
    fs::remove(file);
    EXPECT_EQ(driveType("E:\\"), DriveNoRootDir) << "without the file there is no such table";
}

TEST_F(DrivesIni, AnErrorFromTheBeginningLeavesNoDrives) {
    fs::remove(file);
    EXPECT_EQ(driveType("E:\\"), DriveNoRootDir);
    fs::create_symlink("/proc/self/mem", file);
    std::array<char, 64> buffer{};
    EXPECT_EQ(logicalDriveStrings(buffer), 0U) << "the file is the table, whatever is in it";
    fs::remove(file);
    writeDrive("Label=GOOD\r\n");
    EXPECT_EQ(labelOf("E:\\"), "GOOD");
}

TEST_F(DrivesIni, ALargeFileLeavesTheLastGoodTable) {
    writeDrive("Label=GOOD\r\n");
    ASSERT_EQ(labelOf("E:\\"), "GOOD");
    const std::string large = "[E:]\r\nLabel=LARGE\r\n;" + std::string(largestProfile, 'x');
    write(large);
    testing::internal::CaptureStderr();
    EXPECT_EQ(labelOf("E:\\"), "GOOD");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("mehr als 1 MB"), std::string::npos);
    EXPECT_FALSE(setVolumeLabel("E:\\", "NEW"));
    EXPECT_EQ(read(), large);
}

TEST_F(DrivesIni, ALabelIsReadWhereItIsWritten) {
    const std::string drive = "Type=2\r\nPath=" + stick.string() + "\r\n";
    write("[E:]x]\r\nLabel=NO\r\n[E:\0]\r\n[E:]\r\n"s + drive);
    EXPECT_TRUE(setVolumeLabel("E:\\", "NEW"));
    EXPECT_EQ(labelOf("E:\\"), "NEW");
    write("[E:] \0]\r\n"s + drive + "Label\r\n");
    EXPECT_TRUE(setVolumeLabel("E:\\", "NEWER"));
    EXPECT_EQ(labelOf("E:\\"), "NEWER");
}

TEST_F(DrivesIni, SettingALabelWritesItBack) {
    writeDrive("; kept\r\nLabel=OLD\r\nFileSystem=FAT32\r\n");
    EXPECT_TRUE(setVolumeLabel("E:\\", "Grün €"));
    EXPECT_NE(read().find("; kept\r\nLabel=Gr\xFCn \x80\r\nFileSystem=FAT32\r\n"), std::string::npos)
        << read();
    EXPECT_EQ(labelOf("E:\\"), "Grün €");
    EXPECT_TRUE(setVolumeLabel("E:\\", ""));
    EXPECT_EQ(labelOf("E:\\"), "");
    EXPECT_FALSE(setVolumeLabel("E:\\", "two\nlines"));
}

/// As long as it lives the drive comes and goes, as fast as a file can be replaced.
class Flickering {
public:
    explicit Flickering(const fs::path& file, const std::string& drive)
        : thread_([this, file, drive] {
              const fs::path next = file.string() + ".next";
              for (bool there = true; !ended_; there = !there) {
                  std::ofstream(next, std::ios::binary) << (there ? drive : "[Z:]\r\n");
                  fs::rename(next, file);
              }
          }) {}
    Flickering(const Flickering&) = delete;
    Flickering& operator=(const Flickering&) = delete;
    ~Flickering() {
        ended_ = true;
        thread_.join();
    }

private:
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

/// Else the drive counts as one that has been there all the time, and nobody is told of it any more.
TEST_F(DrivesIni, ADriveThatIsMissedIsToldAsGoneEvenIfItIsBackAlready) {
    constexpr int enough = 300;
    writeDrive("");
    std::string told;
    linux::onDrivesListed([&told](const std::string& letters) { told = letters; });
    {
        const Flickering drive(file, read());
        const std::array<std::function<bool()>, 5> questions{
            [] { return driveType("E:\\") != DriveNoRootDir; },
            [] {
                DiskFreeSpace space;
                return diskFreeSpace("E:\\", space);
            },
            [] {
                std::array<char, 256> label{};
                std::array<char, 256> fileSystem{};
                return volumeInformation("E:\\", label, fileSystem);
            },
            [] { return linux::driveFolder('E').has_value(); },
            [] { return bool(driveIdentity("E:\\")); },
        };
        for (std::size_t i = 0; i < questions.size(); ++i)
            for (int missed = 0; missed < enough && !HasFailure();) {
                told = "E";
                if (questions.at(i)()) continue;
                ++missed;
                EXPECT_EQ(told, "") << "question " << i;
            }
    }
    linux::onDrivesListed({});
}

TEST_F(DrivesIni, LabelIsCutToItsBufferBetweenCharacters) {
    writeDrive("Label=ab\xFC\xFC\r\nFileSystem=FAT32\r\n");
    std::array<char, 4> label{};
    std::array<char, 4> fileSystem{};
    ASSERT_TRUE(volumeInformation("E:\\", label, fileSystem));
    EXPECT_STREQ(label.data(), "ab"); // the next character needs two more bytes, and there is the NUL
    EXPECT_STREQ(fileSystem.data(), "FAT");
}

TEST_F(DrivesIni, FolderOfADrive) {
    writeDrive("");
    EXPECT_EQ(linux::driveFolder('E'), stick.string());
    EXPECT_EQ(linux::driveFolder('e'), stick.string());
    EXPECT_EQ(linux::driveFolder('C'), std::nullopt); // the file is the whole table
    fs::remove(stick);
    EXPECT_EQ(linux::driveFolder('E'), std::nullopt);
}

TEST_F(DrivesIni, MirroredAsLinks) {
    ASSERT_EQ(setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1), 0);
    const fs::path links = folder.path() / "orvanta-usbtool" / std::to_string(getpid());
    writeDrive("");
    std::array<char, 64> buffer{};
    logicalDriveStrings(buffer);
    EXPECT_EQ(fs::read_symlink(links / "e:"), stick);
    EXPECT_EQ(fs::status(links).permissions(), fs::perms::owner_all);
    write("[F:]\nType=2\nPath=/\n");
    logicalDriveStrings(buffer);
    EXPECT_FALSE(fs::exists(fs::symlink_status(links / "e:")));
    EXPECT_EQ(fs::read_symlink(links / "f:"), "/");
    releaseVolumes();
    EXPECT_FALSE(fs::exists(links.parent_path()));
}
