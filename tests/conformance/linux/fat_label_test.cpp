// Labels that the program writes into FAT file systems itself, judged by the tools that others use.
#include "platform/linux/base/dos_text.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/drives/fat_label.h"

#include "tests/conformance/linux/temporary_folder.h"

#include <gtest/gtest.h>

#include <QProcess>

#include <fcntl.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

using conformance::TemporaryFolder;
using namespace platform::linux;
using namespace std::string_literals;

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t MiB = 1024ULL * 1024;

/// A kind of file system: bits of its tables, and a size that goes with them.
struct Kind {
    const char* bits;
    std::uint64_t size;
};

class FatLabelOf : public testing::TestWithParam<Kind> {
protected:
    FatLabelOf() { make("ALT"); }

    void make(const QString& label) {
        fs::remove(image);
        std::ofstream(image).close();
        fs::resize_file(image, GetParam().size);
        ASSERT_EQ(run("mkfs.fat", {"-F", GetParam().bits, "-n", label, path()}), "");
    }

    /// What the tool says when it fails; empty when it does not.
    static std::string run(const QString& tool, const QStringList& arguments) {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start("/usr/bin/env", QStringList{"PATH=/usr/sbin:/usr/bin:/sbin:/bin", tool} << arguments);
        process.waitForFinished();
        return process.exitCode() == 0 ? std::string() : process.readAll().toStdString() + "failed";
    }

    QString path() const { return QString::fromStdString(image); }

    FatLabel write(std::string_view label) const {
        const UniqueFd device(open(image.c_str(), O_RDWR | O_CLOEXEC));
        return writeFatLabel(device.get(), label);
    }

    /// As blkid reads it, from the root directory: bytes.
    std::string label() const {
        QProcess process;
        process.start("/usr/bin/env", {"PATH=/usr/sbin:/usr/bin:/sbin:/bin", "blkid", "-p", "-s", "LABEL",
                                       "-o", "udev", path()});
        process.waitForFinished();
        for (const QByteArray& line : process.readAllStandardOutput().split('\n'))
            if (line.startsWith("ID_FS_LABEL_ENC=")) return line.mid(16).toStdString();
        return {};
    }

    std::string bytes() const {
        std::ifstream stream(image, std::ios::binary);
        std::string all(fs::file_size(image), '\0');
        stream.read(all.data(), static_cast<std::streamsize>(all.size()));
        return all;
    }

    void put(std::uint64_t at, const std::string& what) const {
        std::fstream stream(image, std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(static_cast<std::streamoff>(at));
        stream << what;
    }

    /// fsck.fat 4.2 takes every letter outside of ASCII for a control character, also in the labels of
    /// Windows: it judges all the rest.
    void expectSound() const {
        EXPECT_EQ(write("ascii"), FatLabel::Done);
        EXPECT_EQ(label(), "ASCII");
        EXPECT_EQ(run("fsck.fat", {"-n", path()}), "");
    }

    TemporaryFolder folder;
    fs::path image = folder.path() / "image";
};

} // namespace

TEST_P(FatLabelOf, UmlautsAreThoseOfTheCodePage) {
    EXPECT_EQ(write("Müll"), FatLabel::Done);
    EXPECT_EQ(label(), "M\\x9aLL");
    expectSound();
    EXPECT_EQ(write("ÄÖÜß éà"), FatLabel::Done);
    EXPECT_EQ(label(), "\\x8e\\x99\\x9a\\xe1\\x20\\x90\\xb7");
    expectSound();
}

TEST_P(FatLabelOf, NothingButTheLabelChanges) {
    const std::string before = bytes();
    EXPECT_EQ(write("Größe"), FatLabel::Done);
    const std::string after = bytes();
    ASSERT_EQ(after.size(), before.size());
    std::size_t changed = 0;
    for (std::size_t i = 0; i < after.size(); ++i)
        changed += after[i] != before[i] ? 1 : 0;
    EXPECT_LE(changed, 3 * 11U + 4U) << "three labels at the most, and when they were made";
    EXPECT_GE(changed, 2 * 5U);
}

TEST_P(FatLabelOf, AnotherEntryIsMadeWhereThereWasNone) {
    make("NO NAME");
    EXPECT_EQ(label(), "");
    ASSERT_EQ(run("mcopy", {"-i", path(), "/proc/self/cmdline", "::/A.TXT"}), "");
    EXPECT_EQ(write("Neu ü"), FatLabel::Done);
    EXPECT_EQ(label(), "NEU\\x20\\x9a");
    expectSound();
    EXPECT_EQ(run("mtype", {"-i", path(), "::/A.TXT"}), "") << "the file is still there";
}

TEST_P(FatLabelOf, TheEntryOfADeletedFileIsTaken) {
    make("NO NAME");
    ASSERT_EQ(run("mcopy", {"-i", path(), "/proc/self/cmdline", "::/A.TXT"}), "");
    ASSERT_EQ(run("mcopy", {"-i", path(), "/proc/self/cmdline", "::/B.TXT"}), "");
    ASSERT_EQ(run("mdel", {"-i", path(), "::/A.TXT"}), "");
    EXPECT_EQ(write("ü"), FatLabel::Done);
    EXPECT_EQ(label(), "\\x9a");
    expectSound();
}

TEST_P(FatLabelOf, WhatFatDoesNotAllowIsRefused) {
    const std::string before = bytes();
    for (const std::string& bad :
         {""s, " x"s, "ä*"s, "a/b"s, "ü\n"s, "€"s, "日本"s, "Õ"s, "ü\x7F"s, "ö\0"s, "zwölf Buchst"s})
        EXPECT_EQ(write(bad), FatLabel::Refused) << bad;
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(write("ÄÖÜäöüßÄÖÜä"), FatLabel::Done) << "eleven characters";
}

TEST_P(FatLabelOf, WhatIsNoFatIsLeftAlone) {
    for (const std::size_t at : {11U, 13U, 14U, 16U, 510U}) {
        make("ALT");
        put(at, "\0\0"s);
        const std::string before = bytes();
        EXPECT_EQ(write("Müll"), FatLabel::Failed) << at;
        EXPECT_EQ(bytes(), before) << at;
    }
    fs::resize_file(image, 100);
    EXPECT_EQ(write("Müll"), FatLabel::Failed);
    EXPECT_EQ(writeFatLabel(-1, "Müll"), FatLabel::Failed);
}

INSTANTIATE_TEST_SUITE_P(Kinds, FatLabelOf,
                         testing::Values(Kind{"12", 1 * MiB}, Kind{"16", 32 * MiB}, Kind{"32", 34 * MiB}),
                         [](const auto& kind) { return "Fat"s + kind.param.bits; });

class Fat32Label : public FatLabelOf {
protected:
    /// Bytes of one of the two tables; in sectors it takes two of the four bytes that there are for it.
    std::uint64_t tableSize() const {
        const std::string boot = bytes().substr(0, 512);
        return 512 * (static_cast<std::uint8_t>(boot[36]) + 256U * static_cast<std::uint8_t>(boot[37]));
    }
};

/// First cluster of the root directory, and where its entry in the table lies.
constexpr std::uint64_t table = 32 * 512;

TEST_P(Fat32Label, ADamagedChainIsLeftAlone) {
    for (const std::string& next : {"\x02\0\0\0"s, "\0\0\0\0"s, "\xF0\xFF\xFF\x0F"s}) {
        make("ALT");
        put(table + 8, next);
        const std::string before = bytes();
        EXPECT_EQ(write("Müll"), FatLabel::Failed);
        EXPECT_EQ(bytes(), before);
    }
}

/// A root directory of two clusters, a sector each: the first has one entry left, which is the end of the
/// directory; what lies in the second is a file of long ago.
TEST_P(Fat32Label, TheDirectoryStillEndsBehindALabelAtTheEndOfACluster) {
    constexpr std::size_t entrySize = 32;
    constexpr std::size_t entries = 512 / entrySize;
    make("NO NAME");
    const std::uint64_t root = table + 2 * tableSize();
    const auto entry = [](char letter) {
        return letter + "       TXT "s + std::string(entrySize - 12, '\0');
    };
    for (std::size_t i = 0; i + 1 < entries; ++i)
        put(root + i * entrySize, entry(static_cast<char>('A' + i)));
    put(root + entries * entrySize, entry('Z'));
    for (const std::uint64_t copy : {table, table + tableSize()})
        put(copy + 8, "\x03\0\0\0\xF8\xFF\xFF\x0F"s);
    ASSERT_NE(run("mtype", {"-i", path(), "::/Z.TXT"}), "");

    EXPECT_EQ(write("ü"), FatLabel::Done);
    EXPECT_EQ(label(), "\\x9a");
    EXPECT_EQ(run("mtype", {"-i", path(), "::/O.TXT"}), "");
    EXPECT_NE(run("mtype", {"-i", path(), "::/Z.TXT"}), "") << "what was deleted is back";
    EXPECT_EQ(write("Größe"), FatLabel::Done);
    EXPECT_NE(run("mtype", {"-i", path(), "::/Z.TXT"}), "");
}

TEST_P(Fat32Label, TheTableInUseIsTheOneThatCounts) {
    constexpr std::uint64_t flags = 40;
    const std::string damaged(4, '\0');
    make("ALT");
    put(flags, "\x81"); // the second, and no other
    put(table + 8, damaged);
    EXPECT_EQ(write("Müll"), FatLabel::Done);

    make("ALT");
    put(flags, "\x81");
    put(table + tableSize() + 8, damaged);
    const std::string before = bytes();
    EXPECT_EQ(write("Müll"), FatLabel::Failed);
    EXPECT_TRUE(bytes() == before);

    make("ALT");
    put(flags, "\x82"); // there is no third
    EXPECT_EQ(write("Müll"), FatLabel::Failed);

    make("ALT");
    put(flags, "\x01"); // without the bit the number says nothing
    put(table + tableSize() + 8, damaged);
    EXPECT_EQ(write("Müll"), FatLabel::Done);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Fat32Label, testing::Values(Kind{"32", 34 * MiB}));

TEST(DosText, EveryByteComesBack) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    EXPECT_EQ(toDos(fromDos(all)), all);
    EXPECT_EQ(fromDos("M\x9ALL \xE1"), "MÜLL ß");
    EXPECT_EQ(toDos("€"), std::nullopt);
    EXPECT_EQ(dosCapitals("aäß÷ÿƒé"), "AÄß÷ÿƒÉ");
}
