#include "DaemonHarness.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "WriteAll.h"

using namespace std::chrono;

// Takes every frame the hub completes, whatever its feature.
class DaemonHarness::Recorder : public vekprotocol::VekSerDes {
public:
    void decode(const vekprotocol::VekFields&, const vekprotocol::VekFields&,
                std::stringstream& frame, uint32_t) override {
        frames.push_back(frame.str());
    }
    std::deque<std::string> frames;
};

DaemonHarness::DaemonHarness(Options options) : recorder_(std::make_unique<Recorder>()) {
    char name[256] = {};
    if (openpty(&master_, &slave_, name, nullptr, nullptr) != 0) {
        std::perror("openpty");
        std::abort();
    }
    slavePath_ = name;
    char logTemplate[] = "/tmp/vek_tuner_test_XXXXXX";
    const int logFd = mkstemp(logTemplate);
    logPath_ = logTemplate;

    hub_ = std::make_unique<vekprotocol::VekFrameHub>(recorder_.get(), nullptr);
    for (const char* feature : {"Speaker", "Gain", "Eq", "EqV2", "Hfe", "Vb", "Reverb"}) {
        hub_->registerEndpoint(feature, recorder_.get());
    }

    std::vector<std::string> args{VEK_TUNER_PATH};
    if (options.withDevice) {
        args.push_back("--device=" + slavePath_);
    }
    args.insert(args.end(), options.args.begin(), options.args.end());

    pid_ = fork();
    if (pid_ == 0) {
        // The daemon must not hold the master: closing it is how a test pulls the cable.
        close(master_);
        close(slave_);
        dup2(logFd, STDOUT_FILENO);
        dup2(logFd, STDERR_FILENO);
        if (options.sim.empty()) {
            unsetenv("AUDIO_SETTING_SIM");
        } else {
            setenv("AUDIO_SETTING_SIM", options.sim.c_str(), 1);
        }
        std::vector<char*> argv;
        for (auto& a : args) {
            argv.push_back(a.data());
        }
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(logFd);
}

DaemonHarness::~DaemonHarness() {
    if (pid_ > 0 && status_ < 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    closeMaster();
    if (slave_ >= 0) {
        close(slave_);
    }
    // VEK_KEEP_LOGS=1 keeps the daemon's output for a look after a failure.
    if (std::getenv("VEK_KEEP_LOGS") == nullptr) {
        unlink(logPath_.c_str());
    }
}

std::string DaemonHarness::output() const {
    std::ifstream in(logPath_, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

bool DaemonHarness::waitForOutput(const std::string& text, milliseconds timeout) const {
    const auto deadline = steady_clock::now() + timeout;
    do {
        if (output().find(text) != std::string::npos) {
            return true;
        }
        std::this_thread::sleep_for(milliseconds(10));
    } while (steady_clock::now() < deadline);
    return false;
}

std::vector<std::string> DaemonHarness::lines(const std::string& prefix) const {
    std::vector<std::string> found;
    std::istringstream in(output());
    std::string line;
    while (std::getline(in, line)) {
        if (line.compare(0, prefix.size(), prefix) == 0) {
            found.push_back(line);
        }
    }
    return found;
}

void DaemonHarness::send(const std::string& bytes) {
    writeAll(master_, bytes);
}

bool DaemonHarness::waitUntilTaken(milliseconds timeout) const {
    // The pty hands written bytes to the slave's queue a moment later, so the queue
    // must stay empty for a while before everything counts as read.
    const auto deadline = steady_clock::now() + timeout;
    int emptyPolls = 0;
    while (emptyPolls < 5 && steady_clock::now() < deadline) {
        int queued = 0;
        if (ioctl(slave_, FIONREAD, &queued) != 0) {
            return false;
        }
        emptyPolls = queued == 0 ? emptyPolls + 1 : 0;
        std::this_thread::sleep_for(milliseconds(20));
    }
    return emptyPolls >= 5;
}

std::string DaemonHarness::drain(milliseconds timeout) {
    std::string got;
    const auto deadline = steady_clock::now() + timeout;
    readUntil(
        deadline, [] { return false; },
        [&got](const char* bytes, size_t n) { got.append(bytes, n); });
    return got;
}

bool DaemonHarness::readOnce(steady_clock::time_point deadline, const Sink& sink) {
    const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
    if (master_ < 0 || left <= 0) {
        return false;
    }
    pollfd p{master_, POLLIN, 0};
    if (poll(&p, 1, static_cast<int>(left)) <= 0 || !(p.revents & POLLIN)) {
        return false;
    }
    char buf[4096];
    const ssize_t n = read(master_, buf, sizeof(buf));
    if (n <= 0) {
        return false;
    }
    sink(buf, static_cast<size_t>(n));
    return true;
}

void DaemonHarness::readUntil(steady_clock::time_point deadline, const std::function<bool()>& done,
                              const Sink& sink) {
    while (!done() && readOnce(deadline, sink)) {
    }
}

std::string DaemonHarness::nextFrame(milliseconds timeout) {
    readUntil(
        steady_clock::now() + timeout, [this] { return !recorder_->frames.empty(); },
        [this](const char* bytes, size_t n) { hub_->feed(bytes, static_cast<uint32_t>(n)); });
    if (recorder_->frames.empty()) {
        return "";
    }
    std::string frame = recorder_->frames.front();
    recorder_->frames.pop_front();
    return frame;
}

std::string DaemonHarness::request(const std::string& frame) {
    send(frame);
    return nextFrame();
}

long DaemonHarness::residentKb() const {
    std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.compare(0, 6, "VmRSS:") == 0) {
            return std::strtol(line.c_str() + 6, nullptr, 10);
        }
    }
    return -1;
}

void DaemonHarness::signal(int signo) const {
    kill(pid_, signo);
}

int DaemonHarness::waitExit(milliseconds timeout) {
    const auto deadline = steady_clock::now() + timeout;
    while (status_ < 0 && steady_clock::now() < deadline) {
        int raw = 0;
        if (waitpid(pid_, &raw, WNOHANG) == pid_) {
            status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
            break;
        }
        std::this_thread::sleep_for(milliseconds(10));
    }
    return status_;
}

void DaemonHarness::closeMaster() {
    if (master_ >= 0) {
        close(master_);
        master_ = -1;
    }
}
