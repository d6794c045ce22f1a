#include "tests/conformance/environment_server.h"

#include <QProcess>

#include <stdexcept>

namespace conformance {

namespace {

constexpr int deadline = 20000; // milliseconds; a loaded machine starts Python slowly

} // namespace

struct FaultServer::State {
    QProcess process;
    QList<QByteArray> ports; // its own, one that refuses, one that is deaf

    std::string url(int port, std::string_view path) const {
        return "http://127.0.0.1:" + ports[port].toStdString() + std::string(path);
    }
};

FaultServer::FaultServer() : state_(std::make_unique<State>()) {
    QProcess& process = state_->process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start("python3", {ORVANTA_FAULT_SERVER});
    while (!process.canReadLine())
        if (!process.waitForReadyRead(deadline)) throw std::runtime_error("the fault server does not start");
    state_->ports = process.readLine().trimmed().split(' ');
    if (state_->ports.size() != 3) throw std::runtime_error("the fault server does not name its ports");
}

FaultServer::~FaultServer() {
    state_->process.closeWriteChannel(); // it ends with its standard input
    state_->process.waitForFinished(deadline);
}

std::string FaultServer::url(std::string_view path) const {
    return state_->url(0, path);
}

std::string FaultServer::refusedUrl() const {
    return state_->url(1, "/bytes/1");
}

std::string FaultServer::deafUrl() const {
    return state_->url(2, "/bytes/1");
}

} // namespace conformance
