// The benchmark program's entry point: standard output to /dev/null, as the services
// print their log lines there; the report goes to the standard output it started with.

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

#include "BenchSupport.h"

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
