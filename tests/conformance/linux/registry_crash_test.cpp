// Processes that die in the middle of a change, disks that are full, and several processes that write at
// once.

#include "tests/conformance/linux/registry_test_store.h"
#include "tests/conformance/linux/temporary_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <functional>
#include <memory>
#include <random>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace conformance;

namespace {

/// Another process, which runs a function and then ends.
class Child {
public:
    explicit Child(const std::function<void()>& work) : id_(fork()) {
        if (id_ != 0) return;
        work();
        _exit(0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() { end(); }

    void kill() const { ::kill(id_, SIGKILL); }

    /// Waits for its end; the signal that ended it, or its exit status with a minus.
    int end() {
        if (id_ > 0) waitpid(id_, &state_, 0);
        id_ = -1;
        return WIFSIGNALED(state_) ? WTERMSIG(state_) : -WEXITSTATUS(state_);
    }

private:
    pid_t id_;
    int state_ = 0;
};

/// Lets this process write no file beyond a size; it dies at the first byte beyond, or, when it ignores the
/// signal, the writing fails, as on a full disk.
void limitFiles(std::uint64_t size, bool dies) {
    std::signal(SIGXFSZ, dies ? SIG_DFL : SIG_IGN);
    const rlimit core = {0, 0};
    const rlimit limit = {size, RLIM_INFINITY};
    if (setrlimit(RLIMIT_CORE, &core) != 0 || setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(9);
}

class RegistryCrash : public testing::Test {
protected:
    std::size_t filesBeside() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_.path()), {}));
    }

    TemporaryFolder folder_;
    std::string file_ = folder_.path() / "registry";
};

TEST_F(RegistryCrash, AProcessThatDiesInAWriteHasMadeAllOfAChangeOrNothing) {
    std::string before;
    std::string contents;
    {
        RegistryStore registry(file_);
        ASSERT_EQ(setValue(registry, "Old", "value"), 0);
        before = allOf(registry);
        contents = contentsOf(file_);
    }
    const RegistryRecord record{RegistryRecord::Kind::Key, 1000, userKey, {"One", "Two", "Three"}};
    const std::size_t length = registryLine(record).size();
    const auto make = [&](const RegistryTree&, std::optional<RegistryRecord>& change) -> std::int32_t {
        change = record;
        return 0;
    };
    for (std::size_t written = 0; written <= length; ++written) {
        writeContents(file_, contents);
        Child child([&] {
            RegistryStore registry(file_);
            limitFiles(contents.size() + written, true);
            registry.change(make);
        });
        ASSERT_EQ(child.end(), written < length ? SIGXFSZ : 0);
        ASSERT_EQ(fs::file_size(file_), contents.size() + written);
        RegistryStore registry(file_);
        ASSERT_EQ(allOf(registry) == before, written < length) << written;
        ASSERT_EQ(registry.change(make), 0);
        ASSERT_EQ(contentsOf(file_).substr(0, contents.size()), contents);
        ASSERT_EQ(filesBeside(), 1U);
        if (written == length) break;
        RegistryStore other(file_);
        ASSERT_NE(allOf(other).find("\"Three\""), std::string::npos);
    }
}

TEST_F(RegistryCrash, AFullDiskLeavesTheRegistryAsItWas) {
    std::string before;
    std::string contents;
    {
        RegistryStore registry(file_);
        ASSERT_EQ(setValue(registry, "Old", "value"), 0);
        before = allOf(registry);
        contents = contentsOf(file_);
    }
    for (std::size_t room = 0; room < 20; ++room) {
        Child child([&] {
            RegistryStore registry(file_);
            limitFiles(contents.size() + room, false);
            if (setValue(registry, "Old", "another value") != platform::RegistryDiskFull) _exit(1);
            if (valueOf(registry, "Old") != "value") _exit(2);
            if (contentsOf(file_) != contents) _exit(3);
        });
        ASSERT_EQ(child.end(), 0);
        ASSERT_EQ(contentsOf(file_), contents);
    }
    RegistryStore registry(file_);
    EXPECT_EQ(allOf(registry), before);
}

/// Runs the work in another process and kills that at its stop number `stop`: before and behind each call of
/// the system there is one. False when the work was done before; no value where a process may not be traced.
std::optional<bool> killedAt(int stop, const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
        raise(SIGSTOP);
        work();
        _exit(0);
    }
    int state = 0;
    waitpid(child, &state, 0);
    if (!WIFSTOPPED(state)) return std::nullopt;
    for (int i = 0; i < stop && WIFSTOPPED(state); ++i) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &state, 0);
    }
    if (!WIFSTOPPED(state)) return false;
    kill(child, SIGKILL);
    waitpid(child, &state, 0);
    return true;
}

/// How often a change that was cut short turned out to be made, or not.
struct Outcomes {
    int made = 0;
    int notMade = 0;
    bool traced = true;
};

/// Cuts a change of the value "Name" short at every call of the system; `prepare` puts the file back first.
Outcomes cutShortEverywhere(const std::string& file, const std::function<void()>& prepare) {
    const std::string next = "next" + std::string(2000, '.');
    Outcomes outcomes;
    for (int stop = 1;; ++stop) {
        prepare();
        RegistryStore first(file);
        const std::string before = valueOf(first, "Name");
        const std::string kept = valueOf(first, "Kept");
        const auto killed = killedAt(stop, [&] {
            RegistryStore registry(file);
            setValue(registry, "Name", next);
        });
        outcomes.traced = killed.has_value();
        if (!killed) break;
        RegistryStore registry(file);
        const std::string after = valueOf(registry, "Name");
        EXPECT_TRUE(after == before || after == next) << stop;
        EXPECT_EQ(valueOf(registry, "Kept"), kept) << stop;
        EXPECT_EQ(setValue(registry, "Name", "then"), 0) << stop;
        EXPECT_EQ(valueOf(first, "Name"), "then") << stop;
        EXPECT_FALSE(fs::exists(file + ".damaged-1")) << stop;
        ++(after == next ? outcomes.made : outcomes.notMade);
        if (!*killed) break;
    }
    return outcomes;
}

TEST_F(RegistryCrash, CutShortAtAnyCallTheFirstChangeIsMadeOrNot) {
    file_ = folder_.path() / "new" / "folder" / "registry";
    const Outcomes outcomes = cutShortEverywhere(file_, [&] { fs::remove_all(folder_.path() / "new"); });
    if (!outcomes.traced) GTEST_SKIP() << "no process may be traced here";
    EXPECT_GT(outcomes.notMade, 5);
    EXPECT_GT(outcomes.made, 1);
}

TEST_F(RegistryCrash, CutShortAtAnyCallOfAnExchangeNothingIsLost) {
    {
        RegistryStore registry(file_);
        ASSERT_EQ(setValue(registry, "Kept", std::string(20'000, 'x')), 0);
        // The next change makes the file so long that it is exchanged.
        while (fs::file_size(file_) + 1100 < 64UL * 1024)
            ASSERT_EQ(
                setValue(registry, "Name", std::to_string(fs::file_size(file_)) + std::string(1000, 'y')), 0);
    }
    const std::string contents = contentsOf(file_);
    const Outcomes outcomes = cutShortEverywhere(file_, [&] {
        fs::remove(file_);
        writeContents(file_, contents);
    });
    if (!outcomes.traced) GTEST_SKIP() << "no process may be traced here";
    EXPECT_GT(outcomes.notMade, 5);
    EXPECT_GT(outcomes.made, 10);
    EXPECT_LT(fs::file_size(file_), 30'000U) << "the file has not been exchanged";
}

TEST_F(RegistryCrash, AnExchangeThatFailsHarmsNothing) {
    fs::create_directory(file_ + ".new"); // in the place of the new file
    RegistryStore registry(file_);
    const std::string filler(1000, '.');
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(setValue(registry, "Name", std::to_string(i) + filler), 0);
    RegistryStore other(file_);
    EXPECT_EQ(valueOf(other, "Name"), "199" + filler);
    EXPECT_GT(fs::file_size(file_), 200'000U);
}

/// Changes without end: a number that counts up, in a small value or a large one, so that the file is
/// exchanged often.
[[noreturn]] void countUp(const std::string& file, int report) {
    RegistryStore registry(file);
    const std::string filler(3000, 'x');
    for (std::uint32_t i = 1;; ++i) {
        if (setValue(registry, "Count", std::to_string(i) + "," + (i % 2 == 0 ? filler : "")) != 0) _exit(1);
        if (write(report, &i, sizeof i) != sizeof i) _exit(2);
    }
}

TEST_F(RegistryCrash, KilledAtRandomMomentsEveryChangeIsMadeOrNot) {
    std::mt19937 random(20240607); // always the same sequence
    for (int round = 0; round < 60; ++round) {
        std::array<int, 2> ends{};
        ASSERT_EQ(pipe(ends.data()), 0);
        Child child([&] {
            close(ends[0]);
            countUp(file_, ends[1]);
        });
        close(ends[1]);
        const auto enough = static_cast<std::uint32_t>(1 + random() % 100);
        std::uint32_t reported = 0;
        while (reported < enough)
            ASSERT_EQ(read(ends[0], &reported, sizeof reported), sizeof reported);
        child.kill();
        while (read(ends[0], &reported, sizeof reported) == sizeof reported) {
        }
        close(ends[0]);
        ASSERT_EQ(child.end(), SIGKILL);

        RegistryStore registry(file_);
        const std::uint32_t stored = static_cast<std::uint32_t>(std::stoul(valueOf(registry, "Count")));
        ASSERT_GE(stored, reported);
        ASSERT_LE(stored, reported + 1);
        fs::remove(file_ + ".new"); // a process that died while it tidied up leaves this
        ASSERT_EQ(filesBeside(), 1U) << "the file counts as damaged";
        ASSERT_EQ(setValue(registry, "Count", "0,"), 0);
    }
}

TEST_F(RegistryCrash, ProcessesThatWriteAtOnceLoseNothing) {
    constexpr int processes = 4;
    constexpr int changes = 200;
    const std::string filler(500, '.');
    {
        std::vector<std::unique_ptr<Child>> children;
        children.reserve(processes);
        for (int process = 0; process < processes; ++process) {
            children.push_back(std::make_unique<Child>([&] {
                RegistryStore registry(file_);
                for (int i = 0; i < changes; ++i) {
                    const std::string name = std::to_string(process) + "." + std::to_string(i);
                    const auto key = createKeys(registry, {name, "below"});
                    if (setValue(registry, "Name", name, key) != 0) _exit(1);
                    // History, so that the file is exchanged again and again below the others' feet.
                    if (setValue(registry, "Shared", name + filler) != 0) _exit(2);
                    if (i % 2 == 1 && (deleteKey(registry, key + 1) != 0 || deleteKey(registry, key) != 0))
                        _exit(3);
                }
            }));
        }
        for (const auto& child : children)
            ASSERT_EQ(child->end(), 0);
    }
    RegistryStore registry(file_);
    std::size_t found = 0;
    registry.read([&](const RegistryTree& tree) -> std::int32_t {
        for (const auto& [folded, number] : tree.key(userKey)->subkeys) {
            const auto* const value = tree.value(number, "Name");
            if (value != nullptr && value->data == tree.key(number)->name) ++found;
        }
        return 0;
    });
    EXPECT_EQ(found, static_cast<std::size_t>(processes * changes / 2));
    EXPECT_EQ(filesBeside(), 1U);
}

} // namespace
