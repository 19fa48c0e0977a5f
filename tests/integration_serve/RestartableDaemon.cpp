#include "RestartableDaemon.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

RestartableDaemon::RestartableDaemon(std::vector<std::string> args) : args_(std::move(args)) {
    start();
}

RestartableDaemon::~RestartableDaemon() {
    stop();
}

bool RestartableDaemon::start() {
    if (!cable_.ok() || pid_ > 0) {
        return false;
    }
    std::vector<std::string> words{VEK_TUNER_PATH};
    words.insert(words.end(), args_.begin(), args_.end());
    words.push_back("--device=" + cable_.deviceEnd());
    std::vector<char*> argv = MasterRun::execArgs(words);
    pid_ = fork();
    if (pid_ == 0) {
        const int out = open(log_.path().c_str(), O_WRONLY | O_APPEND);
        dup2(out, STDOUT_FILENO);
        dup2(out, STDERR_FILENO);
        unsetenv("AUDIO_SETTING_SIM");
        execv(argv[0], argv.data());
        _exit(127);
    }
    return pid_ > 0;
}

int RestartableDaemon::stop() {
    if (pid_ <= 0) {
        return -1;
    }
    const int status = MasterRun::stop(pid_, SIGUSR1, std::chrono::seconds(10));
    pid_ = -1;
    return status;
}
