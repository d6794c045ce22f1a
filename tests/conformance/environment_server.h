// An HTTP server on loopback that misbehaves by the path it is asked for: tests/support/fault_server.py,
// PATHS.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace conformance {

/// A server process that lives as long as this object. Throws std::runtime_error when it does not start.
class FaultServer {
public:
    FaultServer();
    FaultServer(const FaultServer&) = delete;
    FaultServer& operator=(const FaultServer&) = delete;
    ~FaultServer();

    /// Address of a path, for example "/bytes/1000".
    std::string url(std::string_view path) const;
    /// The same by https, with a certificate of its own that nothing trusts.
    std::string secureUrl(std::string_view path) const;
    /// File of that certificate, as this system names files.
    std::string certificate() const;
    /// Address on a port that refuses every connection.
    std::string refusedUrl() const;
    /// Address on a port where a connection is neither accepted nor refused.
    std::string deafUrl() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Has the system trust a certificate, given by its file, for as long as this object lives. Throws
/// std::runtime_error when the system does not take it.
class TrustedCertificate {
public:
    explicit TrustedCertificate(const std::string& file);
    TrustedCertificate(const TrustedCertificate&) = delete;
    TrustedCertificate& operator=(const TrustedCertificate&) = delete;
    ~TrustedCertificate();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Byte i of every body the server makes.
constexpr char patternByte(std::size_t index) {
    return static_cast<char>(index % 251);
}

} // namespace conformance
