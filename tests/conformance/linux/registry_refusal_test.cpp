// What the registry's functions return when its file cannot be had, on real file systems.

#include "platform/registry.h"

#include "tests/conformance/linux/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace platform;

namespace {

constexpr const char* path = "Software\\Test";
constexpr uid_t nobody = 65534;

/// Runs the checks in a process of its own, where the mounts, the user and the registry are its own, too. A
/// check that fails there fails here.
class Child {
public:
    static constexpr int cannotMount = 77;

    explicit Child(const std::function<void()>& checks) {
        const pid_t id = fork();
        if (id == 0) {
            checks();
            _exit(testing::Test::HasFailure() ? 1 : 0);
        }
        int state = 0;
        waitpid(id, &state, 0);
        status_ = WIFEXITED(state) ? WEXITSTATUS(state) : -1;
    }
    int status() const { return status_; }

private:
    int status_ = 0;
};

class RegistryRefusal : public testing::Test {
protected:
    RegistryRefusal() { setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1); }

    /// A small file system of this process, which nobody else sees, in the place of the configuration folder.
    void mountSmallDisk() const {
        if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", folder_.path().c_str(), "tmpfs", 0, "size=64k") != 0)
            _exit(Child::cannotMount);
    }
    /// Makes the configuration folder one that nobody can write into.
    void mountReadOnly() const {
        const char* const folder = folder_.path().c_str();
        if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount(folder, folder, nullptr, MS_BIND, nullptr) != 0 ||
            mount(nullptr, folder, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) != 0)
            _exit(Child::cannotMount);
    }
    /// Not one byte more can be written.
    void fillDisk() const {
        std::ofstream file(folder_.path() / "filler", std::ios::binary);
        const std::string block(4096, 'x');
        while (file.write(block.data(), static_cast<std::streamsize>(block.size())).flush()) {
        }
    }

    /// Nothing is forbidden for root.
    static void becomeNobody() {
        if (geteuid() == 0) {
            ASSERT_EQ(setuid(nobody), 0);
        }
    }

    static void expect(const Child& child) {
        if (child.status() == Child::cannotMount) GTEST_SKIP() << "only root can mount";
        EXPECT_EQ(child.status(), 0) << "see above";
    }

    static std::int32_t create(RegistryKey& key) {
        RegistryDisposition disposition{};
        constexpr std::uint32_t rights = RegistryQueryValue | RegistrySetValue;
        return regCreateKey(registryCurrentUser, path, registryNonVolatile, rights, key, disposition);
    }
    static std::int32_t open(RegistryKey& key) {
        return regOpenKey(registryCurrentUser, path, RegistryQueryValue | RegistrySetValue, key);
    }
    static std::int32_t open() {
        RegistryKey key = 0;
        return open(key);
    }
    /// A key with the value "x" is there.
    static RegistryKey filledKey() {
        RegistryKey key = 0;
        EXPECT_EQ(create(key), RegistrySuccess);
        EXPECT_EQ(regSetValue(key, "x", RegistryBinary, "old"), RegistrySuccess);
        EXPECT_EQ(regFlushKey(key), RegistrySuccess);
        return key;
    }
    static std::string valueOf(RegistryKey key) {
        std::string data(10, '\0');
        std::uint32_t type = 0;
        auto size = static_cast<std::uint32_t>(data.size());
        const std::int32_t status = regQueryValue(key, "x", type, data.data(), size);
        return status == RegistrySuccess ? data.substr(0, size) : std::to_string(status);
    }
    static void expectUnchangeable(RegistryKey key, std::int32_t status) {
        EXPECT_EQ(regSetValue(key, "x", RegistryBinary, std::string(5000, '.')), status);
        EXPECT_EQ(valueOf(key), "old");
        EXPECT_EQ(open(), RegistrySuccess);
        RegistryKey deeper = 0;
        RegistryDisposition disposition{};
        const std::string name(200, 'n');
        EXPECT_EQ(regCreateKey(key, name + "\\" + name, registryNonVolatile, RegistryQueryValue, deeper,
                               disposition),
                  status);
    }

    conformance::TemporaryFolder folder_;
};

} // namespace

TEST_F(RegistryRefusal, OfAFullDisk) {
    expect(Child([this] {
        mountSmallDisk();
        const RegistryKey key = filledKey();
        fillDisk();
        // What is left of the file's last block may hold a change or two.
        for (int i = 0; i < 1000; ++i)
            regSetValue(key, "filler", RegistryBinary, std::to_string(i) + std::string(100, '.'));
        expectUnchangeable(key, RegistryDiskFull);
        fs::remove(folder_.path() / "filler");
        EXPECT_EQ(regSetValue(key, "x", RegistryBinary, "new"), RegistrySuccess);
        EXPECT_EQ(valueOf(key), "new");
        EXPECT_EQ(regFlushKey(key), RegistrySuccess);
    }));
}

TEST_F(RegistryRefusal, OfADiskThatIsFullBeforeTheFirstKey) {
    expect(Child([this] {
        mountSmallDisk();
        fillDisk();
        RegistryKey key = 0;
        EXPECT_EQ(create(key), RegistryDiskFull);
        EXPECT_EQ(open(), RegistryFileNotFound);
        fs::remove(folder_.path() / "filler");
        EXPECT_EQ(create(key), RegistrySuccess);
        EXPECT_EQ(regFlushKey(key), RegistrySuccess);
    }));
}

TEST_F(RegistryRefusal, OfADiskThatIsReadOnly) {
    expect(Child([] { filledKey(); }));
    expect(Child([this] {
        mountReadOnly();
        RegistryKey key = 0;
        ASSERT_EQ(open(key), RegistrySuccess);
        expectUnchangeable(key, RegistryAccessDenied);
        EXPECT_EQ(regDeleteKey(registryCurrentUser, path), RegistryAccessDenied);
        EXPECT_EQ(regDeleteValue(key, "x"), RegistryAccessDenied);
    }));
}

TEST_F(RegistryRefusal, OfAFolderThatMayNotBeWritten) {
    expect(Child([this] {
        fs::permissions(folder_.path(), fs::perms(0555));
        becomeNobody();
        RegistryKey key = 0;
        EXPECT_EQ(create(key), RegistryAccessDenied);
        EXPECT_EQ(open(), RegistryFileNotFound);
    }));
}

TEST_F(RegistryRefusal, OfAFileThatMayNotBeRead) {
    expect(Child([] { filledKey(); }));
    expect(Child([this] {
        for (const auto& entry : fs::recursive_directory_iterator(folder_.path()))
            fs::permissions(entry.path(), entry.is_directory() ? fs::perms(0755) : fs::perms::none);
        fs::permissions(folder_.path(), fs::perms(0755));
        becomeNobody();
        RegistryKey key = 0;
        EXPECT_EQ(open(), RegistryAccessDenied);
        EXPECT_EQ(create(key), RegistryAccessDenied);
    }));
}
