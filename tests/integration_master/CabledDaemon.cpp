#include "CabledDaemon.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

CabledDaemon::CabledDaemon(const std::vector<std::string>& args, const std::string& sim,
                           const vekcable::VekCable::Options& cable)
    : args_(args), sim_(sim), cable_(cable) {
    // Under a sanitizer or an emulator a daemon takes a while to start.
    ready_ = start() && cable_.awaitGreeting(30000);
}

bool CabledDaemon::start() {
    if (!cable_.ok() || pid_ > 0) {
        return false;
    }
    std::vector<std::string> words{VEK_TUNER_PATH};
    words.insert(words.end(), args_.begin(), args_.end());
    words.push_back("--device=" + cable_.deviceEnd());
    std::vector<char*> argv = MasterRun::execArgs(words);
    pid_ = fork();
    if (pid_ == 0) {
        // Every start's output in the one file.
        const int out = open(log_.path().c_str(), O_WRONLY | O_APPEND);
        dup2(out, STDOUT_FILENO);
        dup2(out, STDERR_FILENO);
        if (sim_.empty()) {
            unsetenv("AUDIO_SETTING_SIM");
        } else {
            setenv("AUDIO_SETTING_SIM", sim_.c_str(), 1);
        }
        execv(argv[0], argv.data());
        _exit(127);
    }
    return pid_ > 0;
}

int CabledDaemon::stop() {
    if (pid_ <= 0) {
        return -1;
    }
    const int status = MasterRun::stop(pid_, SIGUSR1, std::chrono::seconds(10));
    pid_ = -1;
    return status;
}

CabledDaemon::~CabledDaemon() {
    stop();
}
