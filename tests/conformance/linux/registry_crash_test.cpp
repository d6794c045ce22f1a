// Processes that die in the middle of a change, disks that are full, and several processes that write at
// once.

#include "tests/conformance/linux/registry_test_store.h"

#include <gtest/gtest.h>

#include <algorithm>
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
    /// What a process that is killed leaves behind are new files that it has not put in the old one's place.
    std::size_t keptAside() const {
        const auto names = filesBeside(file_);
        return static_cast<std::size_t>(std::count_if(
            names.begin(), names.end(), [](const auto& name) { return !name.starts_with("~profile-"); }));
    }

    RegistryFolder folder_;
    std::string file_ = folder_.file();
};

TEST_F(RegistryCrash, AProcessThatDiesInAWriteHasMadeAllOfAChangeOrNothing) {
    std::string before;
    {
        RegistryStore registry(file_);
        ASSERT_EQ(setValue(registry, "Old", "value"), 0);
        before = allOf(registry);
    }
    const std::string contents = contentsOf(file_);
    const auto make = [](RegistryNode& top) { top.create({"HKEY_CURRENT_USER", "One", "Two", "Three"}); };
    RegistryNode after;
    platform::linux::readRegistryText(contents, after);
    make(after);
    const std::size_t length = platform::linux::registryText(after).size();
    for (std::size_t written = 0; written <= length; ++written) {
        writeContents(file_, contents);
        Child child([&] {
            RegistryStore registry(file_);
            limitFiles(written, true);
            changeSaved(registry, make);
        });
        ASSERT_EQ(child.end(), written < length ? SIGXFSZ : 0);
        RegistryStore registry(file_);
        ASSERT_EQ(allOf(registry) == before, written < length) << written;
        ASSERT_EQ(contentsOf(file_) == contents, written < length) << written;
        ASSERT_EQ(changeSaved(registry, make), 0);
        ASSERT_EQ(contentsOf(file_).size(), length);
        ASSERT_EQ(keptAside(), 0U);
        RegistryStore other(file_);
        ASSERT_NE(allOf(other).find("\\Three"), std::string::npos);
    }
}

TEST_F(RegistryCrash, AFullDiskLeavesTheRegistryAsItWas) {
    std::string before;
    {
        RegistryStore registry(file_);
        ASSERT_EQ(setValue(registry, "Old", "value"), 0);
        before = allOf(registry);
    }
    const std::string contents = contentsOf(file_);
    for (std::size_t room = 0; room < 20; ++room) {
        Child child([&] {
            RegistryStore registry(file_);
            limitFiles(room, false);
            if (setValue(registry, "Old", "another value") != platform::RegistryDiskFull) _exit(1);
            RegistryStore other(file_);
            if (valueOf(other, "Old") != "value") _exit(2);
            if (contentsOf(file_) != contents) _exit(3);
            // What could not be saved waits for the next time.
            limitFiles(RLIM_INFINITY, false);
            if (registry.flush() != 0 || valueOf(other, "Old") != "another value") _exit(4);
            if (setValue(registry, "Old", "value") != 0) _exit(5);
        });
        ASSERT_EQ(child.end(), 0);
        ASSERT_EQ(contentsOf(file_), contents);
        ASSERT_EQ(filesBeside(file_).size(), 0U);
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
    const Outcomes outcomes = cutShortEverywhere(file_, [&] { fs::remove_all(folder_.config()); });
    if (!outcomes.traced) GTEST_SKIP() << "no process may be traced here";
    EXPECT_GT(outcomes.notMade, 5);
    EXPECT_GT(outcomes.made, 1);
}

TEST_F(RegistryCrash, CutShortAtAnyCallOfAnExchangeNothingIsLost) {
    {
        RegistryStore registry(file_);
        ASSERT_EQ(setValue(registry, "Kept", std::string(20'000, 'x')), 0);
        ASSERT_EQ(setValue(registry, "Name", "before"), 0);
    }
    const std::string contents = contentsOf(file_);
    const Outcomes outcomes = cutShortEverywhere(file_, [&] {
        fs::remove(file_);
        writeContents(file_, contents);
    });
    if (!outcomes.traced) GTEST_SKIP() << "no process may be traced here";
    EXPECT_GT(outcomes.notMade, 5);
    EXPECT_GT(outcomes.made, 10);
}

TEST_F(RegistryCrash, AnExchangeThatFailsHarmsNothing) {
    RegistryStore registry(file_);
    ASSERT_EQ(setValue(registry, "Name", "old"), 0);
    const std::string contents = contentsOf(file_);
    fs::remove(file_ + ".lock");
    fs::create_directory(file_ + ".lock"); // in the lock's place
    ASSERT_EQ(change(registry, valueChange("Name", "new")), 0);
    EXPECT_EQ(registry.flush(), platform::RegistryIoFailed);
    EXPECT_EQ(contentsOf(file_), contents);
    EXPECT_EQ(valueOf(registry, "Name"), "new");
    fs::remove(file_ + ".lock");
    EXPECT_EQ(registry.flush(), 0);
    RegistryStore other(file_);
    EXPECT_EQ(valueOf(other, "Name"), "new");
    EXPECT_EQ(filesBeside(file_).size(), 0U);
}

/// Changes without end: a number that counts up, in a small value or a large one. Each is saved.
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
        const auto enough = static_cast<std::uint32_t>(1 + random() % 10);
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
        ASSERT_EQ(keptAside(), 0U) << "the file counts as damaged";
        ASSERT_EQ(setValue(registry, "Count", "0,"), 0);
    }
}

TEST_F(RegistryCrash, ProcessesThatWriteAtOnceLoseNothing) {
    constexpr int processes = 4;
    constexpr int changes = 60;
    const auto keyOf = [](const std::string& name) { return Names{"HKEY_CURRENT_USER", name}; };
    {
        std::vector<std::unique_ptr<Child>> children;
        children.reserve(processes);
        for (int process = 0; process < processes; ++process) {
            children.push_back(std::make_unique<Child>([&] {
                RegistryStore registry(file_);
                for (int i = 0; i < changes; ++i) {
                    const std::string name = std::to_string(process) + "." + std::to_string(i);
                    const Names key = keyOf(name);
                    const Names below = {key[0], key[1], "below"};
                    // Several changes wait while others save.
                    if (change(registry, [&](RegistryNode& top) { top.create(below); }) != 0) _exit(1);
                    if (setValue(registry, "Name", name, key) != 0) _exit(2);
                    if (setValue(registry, "Shared", name) != 0) _exit(3);
                    if (i % 2 == 1 && (deleteKey(registry, below) != 0 || deleteKey(registry, key) != 0))
                        _exit(4);
                }
            }));
        }
        for (const auto& child : children)
            ASSERT_EQ(child->end(), 0);
    }
    RegistryStore registry(file_);
    ASSERT_EQ(registry.refresh(), 0);
    std::size_t found = 0;
    for (const auto& [folded, key] : registry.top().find(userKey)->subkeys) {
        const auto* const value = key->value("Name");
        if (value != nullptr && value->data == key->name && key->subkeys.size() == 1) ++found;
    }
    EXPECT_EQ(found, static_cast<std::size_t>(processes * changes / 2));
    EXPECT_EQ(filesBeside(file_).size(), 0U);
}

} // namespace
