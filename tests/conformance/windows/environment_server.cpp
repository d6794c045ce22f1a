#include "tests/conformance/environment_server.h"

#include "tests/conformance/windows/environment_unix.h"

#include <windows.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace conformance {

namespace {

/// The server ends with its standard input, and that ends when the file "alive" goes, or after ten minutes.
std::string serverCommand(const std::string& folder) {
    return "cd '" + folder +
           "'; { i=0; while [ -e alive ] && [ $i -lt 6000 ]; do sleep 0.1; i=$((i+1)); done; } | "
           "python3 '" ORVANTA_FAULT_SERVER "' > ports";
}

} // namespace

struct FaultServer::State {
    fs::path folder;
    std::array<std::string, 4> ports; // its own, one that refuses, one that is deaf, one for https
    std::string certificate;

    State() : folder(fs::temp_directory_path() / ("server-" + std::to_string(GetCurrentProcessId()))) {
        fs::remove_all(folder);
        fs::create_directories(folder);
        std::ofstream(folder / "alive").flush();
        startShell(serverCommand(hostPath(folder.wstring())));
        readPorts();
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        std::error_code ignored;
        fs::remove(folder / "alive", ignored);
        fs::remove_all(folder, ignored);
    }

    void readPorts() {
        constexpr int looks = 12000;
        constexpr DWORD pause = 5; // milliseconds
        for (int i = 0; i < looks; ++i) {
            std::ifstream file(folder / "ports");
            file >> ports[0] >> ports[1] >> ports[2] >> ports[3] >> std::ws;
            if (std::getline(file, certificate) && !file.eof()) return;
            Sleep(pause);
        }
        throw std::runtime_error("the fault server does not name its ports");
    }

    std::string url(std::size_t port, std::string_view path) const {
        return "http://127.0.0.1:" + ports.at(port) + std::string(path);
    }
};

FaultServer::FaultServer() : state_(std::make_unique<State>()) {}

FaultServer::~FaultServer() = default;

std::string FaultServer::url(std::string_view path) const {
    return state_->url(0, path);
}

std::string FaultServer::secureUrl(std::string_view path) const {
    return "https://localhost:" + state_->ports[3] + std::string(path);
}

std::string FaultServer::certificate() const {
    return "Z:" + state_->certificate;
}

std::string FaultServer::refusedUrl() const {
    return state_->url(1, "/bytes/1");
}

std::string FaultServer::deafUrl() const {
    return state_->url(2, "/bytes/1");
}

} // namespace conformance
