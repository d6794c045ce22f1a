// Milliseconds that work on 1,000 keys of the registry takes, in a new registry; each the median of several
// rounds. "flushed" goes through cRegistry, which waits for the disk at every key it creates.

#include "platform/cRegistry.h"
#include "platform/registry.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

using namespace platform;

namespace {

constexpr int keyCount = 1000;
constexpr int rounds = 9;
constexpr std::uint32_t fullRight = 63;

std::string keyPath(int i) {
    return "Software\\Benchmark\\Key " + std::to_string(i);
}

void check(bool done) {
    if (done) return;
    std::puts("the registry does not work");
    std::exit(1);
}

void createKeys() {
    for (int i = 0; i < keyCount; ++i) {
        RegistryKey key = 0;
        RegistryDisposition disposition{};
        check(regCreateKey(registryCurrentUser, keyPath(i), registryNonVolatile, fullRight, key,
                           disposition) == 0);
        check(disposition == RegistryCreatedNewKey && regCloseKey(key) == 0);
    }
    check(regFlushKey(registryCurrentUser) == 0);
}

void createKeysFlushed() {
    for (int i = 0; i < keyCount; ++i)
        check(cRegistry().RegKeyCreate(registryCurrentUser, keyPath(i)) == 1);
}

void setValues() {
    for (int i = 0; i < keyCount; ++i)
        check(cRegistry().RegValueSet(registryCurrentUser, keyPath(i), "Number", std::int32_t{i}) == 0);
}

void readValues() {
    for (int i = 0; i < keyCount; ++i) {
        cRegistry::Variant value;
        check(cRegistry().RegValueGet(registryCurrentUser, keyPath(i), "Number", value) == 0);
        check(std::get<std::int32_t>(value) == i);
    }
}

void testKeys() {
    for (int i = 0; i < keyCount; ++i)
        check(cRegistry().RegKeyExist(registryCurrentUser, keyPath(i)) == 0);
}

void deleteKeys() {
    for (int i = 0; i < keyCount; ++i)
        check(cRegistry().RegKeyDelete(registryCurrentUser, keyPath(i)) == 0);
}

struct Measurement {
    const char* name;
    std::function<void()> work;
    std::vector<double> times;
};

} // namespace

int main() {
    std::string folder = std::filesystem::temp_directory_path() / "bench-XXXXXX";
    check(mkdtemp(folder.data()) != nullptr && setenv("XDG_CONFIG_HOME", folder.c_str(), 1) == 0);
    std::vector<Measurement> measurements = {
        {"create", createKeys, {}}, {"set", setValues, {}},     {"read", readValues, {}},
        {"test", testKeys, {}},     {"delete", deleteKeys, {}}, {"flushed", createKeysFlushed, {}},
    };
    for (int round = 0; round < rounds; ++round) {
        std::filesystem::remove_all(std::filesystem::path(folder) / "orvanta-usbtool");
        for (Measurement& measurement : measurements) {
            const auto started = std::chrono::steady_clock::now();
            measurement.work();
            const std::chrono::duration<double, std::milli> taken =
                std::chrono::steady_clock::now() - started;
            measurement.times.push_back(taken.count());
        }
    }
    for (Measurement& measurement : measurements) {
        std::sort(measurement.times.begin(), measurement.times.end());
        std::printf("%s %.2f %.2f\n", measurement.name, measurement.times[rounds / 2],
                    measurement.times.back());
    }
    std::filesystem::remove_all(folder);
}
