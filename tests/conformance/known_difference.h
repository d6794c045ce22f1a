// Where a system is known to answer otherwise than the documentation that the tests are written by.
#pragma once

#include <string>

namespace conformance {

/// Whose answer differs.
enum class Differs {
    Wine,          ///< Wine alone, against the documentation or where that says nothing
    AnsiFunctions, ///< Windows and Wine: what the ANSI functions cannot do
};

/// True on the system that differs; the expectation is left out there, by name: `what` and `reference` go
/// into the test's result, from where they find their way into docs/windows-conformance.md. To be called in a
/// test's body: `if (!knownDifference(Differs::Wine, "what", "reference")) EXPECT_…`
bool knownDifference(Differs who, const std::string& what, const std::string& reference);

} // namespace conformance
