#include "BenchSupport.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

namespace vekbench {

bool smoke() {
    const char* value = std::getenv("VEK_BENCH_SMOKE");
    return value != nullptr && std::strcmp(value, "1") == 0;
}

std::string requestFrame(const std::string& feature, const std::string& message,
                         const std::string& fields) {
    return "AS:1:0:" + feature + ':' + message + "Request:0:OK" +
           (fields.empty() ? "" : ":<" + fields + '>') + ":\n";
}

namespace {

// Removes the files benchFile made when the process ends.
struct BenchFiles {
    ~BenchFiles() {
        for (const auto& file : paths) {
            std::remove(file.second.c_str());
        }
    }
    std::map<size_t, std::string> paths;
};

}  // namespace

std::string benchFile(size_t size) {
    // Benchmarks are registered during static initialisation and may ask for a file.
    static BenchFiles files;
    std::string& path = files.paths[size];
    if (path.empty()) {
        const char* dir = std::getenv("TMPDIR");
        path = std::string(dir != nullptr ? dir : "/tmp") + "/vek_bench_" +
               std::to_string(getpid()) + '_' + std::to_string(size) + ".xml";
        std::string content(size, 'x');
        for (size_t i = 63; i < size; i += 64) {
            content[i] = '\n';
        }
        std::ofstream(path, std::ios::binary) << content;
    }
    return path;
}

const std::vector<Request>& allRequests() {
    static const std::vector<Request> requests = [] {
        // feature, message, fields; the values of tools/tour.vek where it has them.
        const char* const table[][3] = {
            {"Common", "Version", "M1.0"},
            {"Common", "Feature", ""},
            {"Common", "FileList", "Gain"},
            {"Common", "FileContent", nullptr},  // the 1 KiB file
            {"Common", "GetBypass", ""},
            {"Common", "SetBypass", "0"},
            {"Gain", "GetMaster", ""},
            {"Gain", "SetMaster", "-10"},
            {"Gain", "GetChannel", ""},
            {"Gain", "SetChannel", "0:0:-3:-3:1.5:0"},
            {"Gain", "GetFadeBalance", ""},
            {"Gain", "SetFadeBalance", "2:-1:15"},
            {"Reverb", "GetEnable", ""},
            {"Reverb", "GetMode", ""},
            {"Reverb", "SetMode", "1"},
            {"Eq", "GetEnable", ""},
            {"Eq", "SetEnable", "1"},
            {"Eq", "GetBandCount", ""},
            {"Eq", "GetBandConfig", "CF:7"},
            {"Eq", "SetBandConfig", "CF:7:2:1000:-3.5:0.707:0:1"},
            {"EqV2", "GetEnable", ""},
            {"EqV2", "SetEnable", "1"},
            {"EqV2", "GetBandCount", ""},
            {"EqV2", "SetBandCount", "10:10:5:5:3:0"},
            {"EqV2", "GetBandConfig", "CF:7"},
            {"EqV2", "SetBandConfig", "CF:7:2:1000:-3.5:0.707:0:1"},
            {"Hfe", "GetEnable", ""},
            {"Hfe", "SetEnable", "1"},
            {"Hfe", "GetChannelConfig", "LF"},
            {"Hfe", "SetChannelConfig", "LF:1:0:1:0.5"},
            {"Vb", "GetEnable", ""},
            {"Vb", "SetEnable", "1"},
            {"Vb", "GetChannelConfig", "LF"},
            {"Vb", "SetChannelConfig", "LF:1:2:0.5:1:100:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0"},
            {"Speaker", "GetEnable", ""},
            {"Speaker", "SetEnable", "1:1:1:1:1:1"},
            {"Speaker", "GetDelay", ""},
            {"Speaker", "SetDelay", "0:0:1.5:1.5:0.25:0"},
            {"Speaker", "SetStylePattern", "LF:1"},
            {"Speaker", "SetSinePattern", "LF:1000"},
        };
        std::vector<Request> all;
        for (const auto& row : table) {
            const std::string fields = row[2] != nullptr ? row[2] : benchFile(1024);
            all.push_back({std::strcmp(row[0], "Eq") == 0, requestFrame(row[0], row[1], fields)});
        }
        return all;
    }();
    return requests;
}

namespace {

vekserver::VekServerConfig rigConfig(int32_t eqMode) {
    vekserver::VekServerConfig config;
    config.eqMode = eqMode;
    config.enReverb = true;
    return config;
}

}  // namespace

ServerRig::ServerRig(int32_t eqMode) : server_(rigConfig(eqMode), &transport_) {
    server_.init();
}

ServerRig::~ServerRig() {
    server_.deinit();
}

void ServerRig::serve(const std::string& frame) {
    transport_.writes.clear();
    server_.serve(frame.data(), static_cast<uint32_t>(frame.size()));
}

// Counts every frame the hub completes, whatever its feature.
class PtyDaemon::Counter : public vekprotocol::VekSerDes {
public:
    void decode(const vekprotocol::VekFields&, const vekprotocol::VekFields&, std::stringstream&,
                uint32_t) override {
        ++frames;
    }
    size_t frames = 0;
};

PtyDaemon::PtyDaemon(const std::vector<std::string>& args) : counter_(std::make_unique<Counter>()) {
    hub_ = std::make_unique<vekprotocol::VekFrameHub>(counter_.get(), nullptr);
    for (const char* feature : {"Speaker", "Gain", "Eq", "EqV2", "Hfe", "Vb", "Reverb"}) {
        hub_->registerEndpoint(feature, counter_.get());
    }
    char name[256] = {};
    if (openpty(&master_, &slave_, name, nullptr, nullptr) != 0) {
        std::perror("openpty");
        std::abort();
    }
    std::vector<std::string> argv{VEK_TUNER_PATH, std::string("--device=") + name};
    argv.insert(argv.end(), args.begin(), args.end());
    pid_ = fork();
    if (pid_ == 0) {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
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
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = write(master_, bytes.data() + done, bytes.size() - done);
        if (n <= 0) {
            return;
        }
        done += static_cast<size_t>(n);
    }
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

}  // namespace vekbench

namespace {

// The report's way to the standard output the process started with.
class FdBuf : public std::streambuf {
public:
    explicit FdBuf(int fd) : fd_(fd) {}

protected:
    int overflow(int c) override {
        const char ch = static_cast<char>(c);
        return c == EOF || xsputn(&ch, 1) == 1 ? c : EOF;
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        std::streamsize done = 0;
        while (done < n) {
            const ssize_t w = write(fd_, s + done, static_cast<size_t>(n - done));
            if (w <= 0) {
                break;
            }
            done += w;
        }
        return done;
    }

private:
    int fd_;
};

}  // namespace

int main(int argc, char** argv) {
    // The services print a line or two per request; like a daemon whose output nobody
    // keeps, they print to /dev/null, line-buffered as the daemon's main sets it.
    std::fflush(stdout);
    const int report = dup(STDOUT_FILENO);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    close(null);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    signal(SIGPIPE, SIG_IGN);
    unsetenv("AUDIO_SETTING_SIM");  // the simulator's defaults, here and in the daemon

    FdBuf buffer(report);
    std::ostream out(&buffer);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::ConsoleReporter console(isatty(report) ? benchmark::ConsoleReporter::OO_Defaults
                                                      : benchmark::ConsoleReporter::OO_Tabular);
    console.SetOutputStream(&out);
    console.SetErrorStream(&out);
    benchmark::RunSpecifiedBenchmarks(&console);
    benchmark::Shutdown();
    return 0;
}
