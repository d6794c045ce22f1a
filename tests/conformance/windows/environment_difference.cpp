#include "tests/conformance/known_difference.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace conformance {

namespace {

bool isWine() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

/// A test records a property once, however often it gets there.
void record(const std::string& text) {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    const testing::TestResult& result = *test.result();
    int number = 1;
    for (int i = 0; i < result.test_property_count(); ++i) {
        const testing::TestProperty& property = result.GetTestProperty(i);
        if (property.value() == text) return;
        number += std::string(property.key()).rfind("known_difference", 0) == 0 ? 1 : 0;
    }
    testing::Test::RecordProperty("known_difference_" + std::to_string(number), text);
}

} // namespace

bool knownDifference(Differs who, const std::string& what, const std::string& reference) {
    if (who == Differs::Wine && !isWine()) return false;
    record((who == Differs::Wine ? "Wine: " : "ANSI functions: ") + what + " (" + reference + ")");
    return true;
}

} // namespace conformance
