// The profile code of the Linux backend against the functions it stands for, on 10,000 files. What it does
// otherwise on purpose is listed in docs/profile-differences.md, and is evened out here by the functions that
// say so.
#include "platform/linux/base/profile_text.h"

#include "tests/conformance/scratch_files.h"
#include "tests/conformance/windows/profile_generator.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <functional>

using namespace conformance;
using namespace platform::linux;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

constexpr int fileCount = 10000;
constexpr std::uint32_t seed = 20031;
constexpr std::size_t bufferSize = 32767;
constexpr int reportedAtMost = 5;

using Fill = std::function<DWORD(char* buffer, DWORD size)>;

std::string filled(const Fill& fill) {
    std::string buffer(bufferSize, '#');
    buffer.resize(fill(buffer.data(), bufferSize));
    return buffer;
}

/// One line for each entry, control characters made visible.
std::string shown(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\0') {
            result += '\n';
        } else if (byte >= 0x20 && byte < 0x7F) {
            result += c;
        } else {
            result += {'<', digits[byte >> 4U], digits[byte & 15U], '>'};
        }
    }
    return result;
}

std::string lowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 0x20);
    return text;
}

class Differences : public testing::Test {
protected:
    void SetUp() override {
        folder_ = fs::temp_directory_path() / ("profiles-" + std::to_string(GetCurrentProcessId()));
        fs::create_directories(folder_);
        path_ = (folder_ / "file.ini").string();
    }
    void TearDown() override { fs::remove_all(folder_); }

    void store(const std::string& text) {
        put(path_, text);
        forget();
    }

    /// Has the functions read the file again.
    void forget() { WritePrivateProfileStringA(nullptr, nullptr, nullptr, path_.c_str()); }

    std::string systemNames() const {
        return filled([this](char* buffer, DWORD size) {
            return GetPrivateProfileSectionNamesA(buffer, size, path_.c_str());
        });
    }

    DWORD systemNames(std::string& buffer) const {
        return GetPrivateProfileSectionNamesA(buffer.data(), static_cast<DWORD>(buffer.size()),
                                              path_.c_str());
    }

    std::string systemSection(const std::string& name) const {
        return filled([this, &name](char* buffer, DWORD size) {
            return GetPrivateProfileSectionA(name.c_str(), buffer, size, path_.c_str());
        });
    }

    std::string stored() const { return get(path_); }

    /// All that the functions read of the stored file.
    std::string systemContents(std::size_t turn) const {
        return contents(systemNames(), turn, [this](const std::string& name) { return systemSection(name); });
    }

    /// All that our code reads of a text.
    static std::string ownContents(const std::string& text, std::size_t turn) {
        return contents(profileNames(text), turn,
                        [&text](const std::string& name) { return profileLines(text, name); });
    }

    void systemChange(const ProfileChange& change) {
        WritePrivateProfileStringA(change.section.c_str(), change.key ? change.key->c_str() : nullptr,
                                   change.value ? change.value->c_str() : nullptr, path_.c_str());
        forget();
    }

    static std::string ownChange(const std::string& text, const ProfileChange& change) {
        return change.key ? withProfileKey(text, change.section, *change.key, change.value)
                          : withoutProfileSection(text, change.section);
    }

    void compare(const std::string& own, const std::string& system, const std::string& about) {
        ++compared_;
        if (own == system) return;
        if (++different_ <= reportedAtMost) {
            ADD_FAILURE() << about << "\nours:\n" << shown(own) << "\nthe system's:\n" << shown(system);
        }
    }

    void finish() const {
        EXPECT_EQ(different_, 0) << "of " << compared_;
        RecordProperty("files", fileCount);
        RecordProperty("comparisons", compared_);
    }

private:
    /// The names, the sections that are among them, and in turn one of those that may be missing.
    static std::string contents(const std::string& names, std::size_t turn,
                                const std::function<std::string(const std::string&)>& section) {
        std::string all = names;
        const std::string present = '\0' + lowerCase(names);
        const auto& sections = ProfileGenerator::sections();
        for (const std::string& name : sections) {
            const bool isPresent = present.find('\0' + lowerCase(name) + '\0') != std::string::npos;
            if (isPresent || name == sections[turn % sections.size()])
                all += "--" + name + std::string(1, '\0') + section(name);
        }
        return all;
    }

    fs::path folder_;
    std::string path_;
    int compared_ = 0;
    int different_ = 0;
};

} // namespace

TEST_F(Differences, NamesAndSectionsAreRead) {
    ProfileGenerator generator(seed);
    for (int i = 0; i < fileCount; ++i) {
        const std::string text = generator.file();
        store(text);
        const auto turn = static_cast<std::size_t>(i);
        compare(ownContents(text, turn), systemContents(turn), "file\n" + shown(text));
    }
    finish();
}

// Both write; then each reads what the other one has written.
TEST_F(Differences, WritesComeToTheSame) {
    ProfileGenerator generator(seed + 1);
    for (int i = 0; i < fileCount; ++i) {
        const std::string text = generator.file();
        const ProfileChange change = generator.change();
        const auto turn = static_cast<std::size_t>(i);
        store(text);
        systemChange(change);
        const std::string system = ownContents(stored(), turn);
        store(ownChange(text, change));
        const std::string about = "after [" + change.section + "] " + change.key.value_or("(no key)") +
                                  " = " + change.value.value_or("(no value)") + " in\n" + shown(text);
        compare(lowerCase(systemContents(turn)), lowerCase(system), about);
    }
    finish();
}

// What docs/profile-differences.md lists, so that the list stays true.

TEST_F(Differences, LinesThatAreNotTouchedStay) {
    const std::string text = "[s]\n\n  a = 1 \n\n; c\nb=2\n";
    const ProfileChange change{"s", "b", "3"};
    store(text);
    systemChange(change);
    EXPECT_EQ(ownChange(text, change), "[s]\n\n  a = 1 \n\n; c\nb=3\n");
    EXPECT_EQ(stored(), "[s]\r\na=1\r\n; c\r\nb=3\r\n");
}

TEST_F(Differences, AWrittenKeyIsSpeltAsItIsGiven) {
    const std::string text = "[s]\r\nDir=1\r\n";
    const ProfileChange change{"s", "dIR", "2"};
    store(text);
    systemChange(change);
    EXPECT_EQ(ownChange(text, change), "[s]\r\ndIR=2\r\n");
    EXPECT_EQ(stored(), "[s]\r\nDir=2\r\n");
}

TEST_F(Differences, BlanksAroundTheSectionThatIsAskedForDoNotCount) {
    const std::string text = "[s]\r\na=1\r\n";
    store(text);
    EXPECT_EQ(shown(profileLines(text, " s ")), "a=1\n");
    EXPECT_EQ(shown(systemSection(" s ")), "");
}

TEST_F(Differences, LettersBeyondAsciiHaveTwoCases) {
    const std::string text = "[\xE4]\r\na=1\r\n";
    store(text);
    EXPECT_EQ(shown(profileLines(text, "\xC4")), "a=1\n");
    EXPECT_EQ(shown(systemSection("\xC4")), "");
}

TEST_F(Differences, AByteOrderMarkHidesTheFirstSection) {
    const std::string text = "\xEF\xBB\xBF[s]\r\na=1\r\n[t]\r\nb=1\r\n";
    store(text);
    EXPECT_EQ(shown(profileNames(text)), "t\n");
    EXPECT_EQ(shown(systemNames()), "s\nt\n");
}

// Ours has Profile.TextsThatWouldMakeLinesAreRefused.
TEST_F(Differences, LineEndsInAValueMakeLines) {
    store("[s]\r\nk=1\r\n");
    systemChange({"s", "k", "2\r\n[t]\r\nx=3"});
    EXPECT_EQ(shown(systemSection("t")), "x=3\n");
}

// Ours has Profile.ATruncatedAnswerIsTwoShorterThanTheBuffer.
TEST_F(Differences, ATruncatedListOfNamesEndsInOneNul) {
    store("[section1]\r\n[section2]\r\n");
    std::string buffer(12, '#');
    EXPECT_EQ(systemNames(buffer), 10U);
    EXPECT_EQ(buffer, "section1\0s\0#"s);
}
