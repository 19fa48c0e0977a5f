#include "PtyDaemon.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include "BenchSupport.h"
#include "WriteAll.h"

namespace vekbench {

// Counts every frame the hub completes, whatever its feature.
class PtyDaemon::Counter : public vekprotocol::VekSerDes {
public:
    void decode(const vekprotocol::VekFields&, const vekprotocol::VekFields&, std::stringstream&,
                uint32_t) override {
        ++frames;
    }
    size_t frames = 0;
};

std::string PtyDaemon::program() {
    const char* other = std::getenv("VEK_BENCH_DAEMON");
    return other != nullptr && *other != '\0' ? other : VEK_TUNER_PATH;
}

PtyDaemon::PtyDaemon(const std::vector<std::string>& args, const std::string& output)
    : counter_(std::make_unique<Counter>()) {
    hub_ = std::make_unique<vekprotocol::VekFrameHub>(counter_.get(), nullptr);
    for (const char* feature : {"Speaker", "Gain", "Eq", "EqV2", "Hfe", "Vb", "Reverb"}) {
        hub_->registerEndpoint(feature, counter_.get());
    }
    char name[256] = {};
    if (openpty(&master_, &slave_, name, nullptr, nullptr) != 0) {
        std::perror("openpty");
        std::abort();
    }
    std::vector<std::string> argv{program(), std::string("--device=") + name};
    argv.insert(argv.end(), args.begin(), args.end());
    pid_ = fork();
    if (pid_ == 0) {
        const int log = output.empty() ? open("/dev/null", O_WRONLY)
                                       : open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(log, STDOUT_FILENO);
        dup2(log, STDERR_FILENO);
        close(master_);
        close(slave_);
        std::vector<char*> raw;
        for (auto& a : argv) {
            raw.push_back(a.data());
        }
        raw.push_back(nullptr);
        execv(raw[0], raw.data());
        _exit(127);
    }
}

PtyDaemon::~PtyDaemon() {
    // Closing the master ends the daemon's read at once; SIGUSR1 then stops it.
    close(master_);
    close(slave_);
    kill(pid_, SIGUSR1);
    for (int i = 0; i < 300; ++i) {
        if (waitpid(pid_, nullptr, WNOHANG) == pid_) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

namespace {

// Reads what the line has within timeoutMs into buffer; the count, or 0.
size_t readSome(int fd, char* buffer, size_t size, int timeoutMs) {
    pollfd p{fd, POLLIN, 0};
    if (poll(&p, 1, timeoutMs) <= 0 || !(p.revents & POLLIN)) {
        return 0;
    }
    const ssize_t n = read(fd, buffer, size);
    return n > 0 ? static_cast<size_t>(n) : 0;
}

}  // namespace

bool PtyDaemon::awaitGreeting(int timeoutMs) {
    static const std::string kGreeting = "HELLO!\n";
    std::string got;
    char buffer[4096];
    size_t at;
    while ((at = got.find(kGreeting)) == std::string::npos) {
        const size_t n = readSome(master_, buffer, sizeof(buffer), timeoutMs);
        if (n == 0) {
            return false;
        }
        got.append(buffer, n);
    }
    const std::string rest = got.substr(at + kGreeting.size());
    if (!rest.empty()) {
        hub_->feed(rest.data(), static_cast<uint32_t>(rest.size()));
    }
    return true;
}

void PtyDaemon::send(const std::string& bytes) {
    writeAll(master_, bytes);
}

bool PtyDaemon::awaitResponses(size_t count, int timeoutMs) {
    awaited_ += count;
    char buffer[65536];
    while (counter_->frames < awaited_) {
        const size_t n = readSome(master_, buffer, sizeof(buffer), timeoutMs);
        if (n == 0) {
            return false;
        }
        hub_->feed(buffer, static_cast<uint32_t>(n));
    }
    return true;
}

bool PtyDaemon::exchange(const std::vector<std::string>& frames, size_t total, size_t window) {
    bool answered = true;
    for (size_t sent = 0; sent < total && answered; ++sent) {
        send(frames[sent % frames.size()]);
        answered = sent + 1 < window || awaitResponses(1);
    }
    return answered && awaitResponses(std::min(window, total + 1) - 1);
}

double PtyDaemon::cpuSeconds() const {
    std::ifstream in("/proc/" + std::to_string(pid_) + "/stat");
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    // Fields after the command name's closing parenthesis start with field 3 (state);
    // utime and stime are fields 14 and 15.
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    std::string field;
    double ticks = 0;
    for (int number = 3; number <= 15 && (fields >> field); ++number) {
        if (number >= 14) {
            ticks += std::stod(field);
        }
    }
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

long PtyDaemon::statusKib(const char* key) const {
    std::ifstream in("/proc/" + std::to_string(pid_) + "/status");
    std::string line;
    const std::string prefix = std::string(key) + ':';
    while (std::getline(in, line)) {
        if (line.compare(0, prefix.size(), prefix) == 0) {
            return std::stol(line.substr(prefix.size()));
        }
    }
    return -1;
}

long long PtyDaemon::ioCount(const char* key) const {
    std::ifstream in("/proc/" + std::to_string(pid_) + "/io");
    std::string name;
    long long value = -1;
    while (in >> name >> value) {
        if (name == std::string(key) + ':') {
            return value;
        }
    }
    return -1;
}

}  // namespace vekbench
