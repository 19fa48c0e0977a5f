#include "CabledDaemon.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

CabledDaemon::CabledDaemon(const std::vector<std::string>& args, const std::string& sim) {
    if (!cable_.ok()) {
        return;
    }
    std::vector<std::string> words{VEK_TUNER_PATH};
    words.insert(words.end(), args.begin(), args.end());
    words.push_back("--device=" + cable_.deviceEnd());
    std::vector<char*> argv = MasterRun::execArgs(words);
    pid_ = fork();
    if (pid_ == 0) {
        const int out = open(log_.path().c_str(), O_WRONLY | O_TRUNC);
        dup2(out, STDOUT_FILENO);
        dup2(out, STDERR_FILENO);
        if (sim.empty()) {
            unsetenv("AUDIO_SETTING_SIM");
        } else {
            setenv("AUDIO_SETTING_SIM", sim.c_str(), 1);
        }
        execv(argv[0], argv.data());
        _exit(127);
    }
    // Under a sanitizer or an emulator a daemon takes a while to start.
    ready_ = pid_ > 0 && cable_.awaitGreeting(30000);
}

CabledDaemon::~CabledDaemon() {
    if (pid_ <= 0) {
        return;
    }
    MasterRun::stop(pid_, SIGUSR1, std::chrono::seconds(10));
}
