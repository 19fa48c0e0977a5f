#include "VekDeviceConnection.h"

#include "VekSettingsTable.h"

namespace vekmaster {

std::string VekDeviceConnection::open(const std::string& path, const Options& options) {
    close();
    auto line = std::make_unique<VekSerialLine>();
    const std::string problem = line->open(path, options.baudRate);
    if (!problem.empty()) {
        return problem;
    }
    line_ = std::move(line);
    device_ = path;
    start(options);
    return "";
}

std::string VekDeviceConnection::startDaemon(const std::string& path,
                                             const std::vector<std::string>& args,
                                             const std::string& log,
                                             const std::vector<std::string>& environment,
                                             std::string& usedLog) {
    close();
    launcher_ = std::make_unique<VekDaemonLauncher>();
    launcher_->setEnvironment(environment);
    return launcher_->start(path, args, log, usedLog);
}

std::string VekDeviceConnection::awaitDaemon(const Options& options) {
    std::string rest;
    const std::string problem = launcher_->awaitGreeting(kGreetingMs, rest);
    if (!problem.empty()) {
        return problem;
    }
    line_ = std::make_unique<VekSerialLine>();
    line_->adopt(launcher_->line());
    device_ = launcher_->device();
    start(options);
    // The greeting was read before the session began: a trace still shows it.
    line_->noteReceived("HELLO!\n" + rest);
    session_->preload(rest);
    return "";
}

void VekDeviceConnection::adopt(int fd, const std::string& device, const Options& options) {
    close();
    line_ = std::make_unique<VekSerialLine>();
    line_->adopt(fd);
    device_ = device;
    start(options);
}

void VekDeviceConnection::start(const Options& options) {
    if (!options.trace.empty()) {
        line_->trace(options.trace, device_);
    }
    session_ = std::make_unique<VekMasterSession>(*line_, options.timeoutMs);
    session_->setWindow(options.window);
    access_ = std::make_unique<VekSessionAccess>(*session_, VekSettingsTable::shared(), device_);
}

bool VekDeviceConnection::close(std::string& report) {
    access_.reset();
    session_.reset();
    line_.reset();
    bool clean = true;
    if (launcher_) {
        clean = launcher_->stop(kStopMs, report);
        launcher_.reset();
    }
    return clean;
}

void VekDeviceConnection::close() {
    std::string report;
    close(report);
}

}  // namespace vekmaster
