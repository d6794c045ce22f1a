// Under Wine the tests may start programs of the system beneath it.
#pragma once

#include <string>

namespace conformance {

/// Starts a command of the host's shell and does not wait for it. No double quotes in it; its standard files
/// lead nowhere, as Wine's pipes are none of the host's. Throws std::runtime_error when it does not start.
void startShell(const std::string& command);

/// Runs a command of the host's shell and returns what it writes. Throws std::runtime_error when it takes too
/// long.
std::string outputOfShell(const std::string& command);

/// Waits until a file that something else makes has come and can be read. Throws std::runtime_error when it
/// takes too long.
void waitForFile(const std::wstring& path);

/// The host's path of a file by its Windows path. Throws std::runtime_error when this is not Wine.
std::string hostPath(const std::wstring& path);

} // namespace conformance
