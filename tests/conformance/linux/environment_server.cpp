#include "tests/conformance/environment_server.h"

#include <QProcess>

#include <stdexcept>

namespace conformance {

namespace {

constexpr int deadline = 20000; // milliseconds; a loaded machine starts Python slowly

} // namespace

struct FaultServer::State {
    QProcess process;
    QList<QByteArray> ports; // its own, one that refuses, one that is deaf, one for https
    std::string certificate;

    std::string readLine() {
        while (!process.canReadLine())
            if (!process.waitForReadyRead(deadline))
                throw std::runtime_error("the fault server does not start");
        return process.readLine().trimmed().toStdString();
    }

    std::string url(int port, std::string_view path) const {
        return "http://127.0.0.1:" + ports[port].toStdString() + std::string(path);
    }
};

FaultServer::FaultServer() : state_(std::make_unique<State>()) {
    QProcess& process = state_->process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start("python3", {ORVANTA_FAULT_SERVER});
    state_->ports = QByteArray::fromStdString(state_->readLine()).split(' ');
    if (state_->ports.size() != 4) throw std::runtime_error("the fault server does not name its ports");
    state_->certificate = state_->readLine();
}

FaultServer::~FaultServer() {
    state_->process.closeWriteChannel(); // it ends with its standard input
    state_->process.waitForFinished(deadline);
}

std::string FaultServer::url(std::string_view path) const {
    return state_->url(0, path);
}

std::string FaultServer::secureUrl(std::string_view path) const {
    return "https://localhost:" + state_->ports[3].toStdString() + std::string(path);
}

std::string FaultServer::certificate() const {
    return state_->certificate;
}

std::string FaultServer::refusedUrl() const {
    return state_->url(1, "/bytes/1");
}

std::string FaultServer::deafUrl() const {
    return state_->url(2, "/bytes/1");
}

} // namespace conformance
