#include "VekVirtualDevice.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "VekMasterSession.h"
#include "VekSerialLine.h"
#include "VekTuningApply.h"
#include "VekTuningDocument.h"

namespace vekmaster {

namespace {

// The daemon answers a start-up greeting within a second or two; this bounds a broken one.
constexpr int kGreetingMs = 10000;

bool executable(const std::string& path) {
    return !path.empty() && ::access(path.c_str(), X_OK) == 0;
}

std::string textOf(const Json* value) {
    return value != nullptr && value->is_string() ? value->get<std::string>() : "";
}

}  // namespace

std::string VekVirtualDevice::daemonPath(const std::string& given) {
    if (!given.empty()) {
        return given;
    }
    char self[PATH_MAX] = {};
    const ssize_t n = readlink("/proc/self/exe", self, sizeof(self) - 1);
    if (n > 0) {
        const std::string here(self, static_cast<size_t>(n));
        const std::string beside = here.substr(0, here.rfind('/') + 1) + "vek_tuner";
        if (executable(beside)) {
            return beside;
        }
    }
    const char* path = std::getenv("PATH");
    std::istringstream dirs(path != nullptr ? path : "");
    for (std::string dir; std::getline(dirs, dir, ':');) {
        if (!dir.empty() && executable(dir + "/vek_tuner")) {
            return dir + "/vek_tuner";
        }
    }
    return "vek_tuner";
}

std::vector<std::string> VekVirtualDevice::optionsFor(const Json& document) {
    const Json* device = VekValueJson::member(&document, "device");
    const Json* settings = VekValueJson::member(&document, "settings");
    std::vector<std::string> options;
    const Json* reverb = VekValueJson::member(device, "reverb");
    if ((reverb != nullptr && reverb->is_boolean() && reverb->get<bool>()) ||
        VekValueJson::member(settings, "Reverb") != nullptr) {
        options.emplace_back("--reverb");
    }
    if (textOf(VekValueJson::member(device, "eqMode")) == "fixed" ||
        VekValueJson::member(settings, "Eq") != nullptr) {
        options.emplace_back("--eqMode=1");
    }
    return options;
}

std::string VekVirtualDevice::load(const std::string& path, Json& document) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return "cannot read " + path + ": " + std::strerror(errno);
    }
    std::ostringstream text;
    text << in.rdbuf();
    std::string problem = VekTuningDocument::parse(text.str(), document);
    if (problem.empty()) {
        problem = VekTuningDocument::check(VekSettingsTable::shared(), document);
    }
    return problem.empty() ? "" : path + ": " + problem;
}

std::string VekVirtualDevice::save(const std::string& path, const Json& document,
                                   std::string& backup) {
    backup.clear();
    const std::string temporary = path + ".tmp";
    const std::string text = VekValueJson::pretty(document);
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) {
        return "cannot write " + temporary + ": " + std::strerror(errno);
    }
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            const int err = errno;
            ::close(fd);
            ::unlink(temporary.c_str());
            return "cannot write " + temporary + ": " + std::strerror(err);
        }
        done += static_cast<size_t>(n);
    }
    // On the disk before it replaces the old file, which a link keeps as the backup: at
    // every moment path names a whole document.
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        ::unlink(temporary.c_str());
        return "cannot write " + temporary + ": " + std::strerror(errno);
    }
    if (::access(path.c_str(), F_OK) == 0) {
        backup = path + ".bak";
        ::unlink(backup.c_str());
        if (::link(path.c_str(), backup.c_str()) != 0) {
            const int err = errno;
            ::unlink(temporary.c_str());
            return "cannot keep " + path + " as " + backup + ": " + std::strerror(err);
        }
    }
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const int err = errno;
        ::unlink(temporary.c_str());
        return "cannot replace " + path + ": " + std::strerror(err);
    }
    return "";
}

std::string VekVirtualDevice::start(const std::string& daemon, const std::string& path,
                                    const std::string& log, int timeoutMs) {
    Json document;
    std::string problem = load(path, document);
    if (!problem.empty()) {
        return problem;
    }
    path_ = path;
    problem = launcher_.start(daemon, optionsFor(document), log, log_);
    std::string rest;
    if (problem.empty()) {
        problem = launcher_.awaitGreeting(kGreetingMs, rest);
    }
    if (problem.empty()) {
        VekSerialLine line;
        line.adopt(launcher_.line());
        VekMasterSession session(line, timeoutMs);
        session.preload(rest);
        const VekTuningApply::Result result =
            VekTuningApply(session, VekSettingsTable::shared()).run(document, {});
        if (result.status != VekExitStatus::kOk) {
            problem = path + ": the simulated device did not take the tuning: " +
                      (!result.problem.empty()      ? result.problem
                       : !result.failures.empty()   ? result.failures.front().label + ' ' +
                                                        result.failures.front().reason
                                                    : "NG");
        }
    }
    if (!problem.empty()) {
        std::string report;
        launcher_.stop(kGreetingMs, report);
        return problem + " (daemon log: " + log_ + ')';
    }
    return "";
}

}  // namespace vekmaster
