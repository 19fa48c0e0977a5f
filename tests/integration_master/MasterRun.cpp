#include "MasterRun.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

namespace {

// Long enough for a script against a daemon under a sanitizer; a hang still fails.
constexpr auto kLimit = std::chrono::seconds(60);

// Waits for a child's end, killing it after limit: its wait status, or -1 when it had
// to be killed.
int awaitEnd(pid_t pid, std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    int raw = 0;
    while (waitpid(pid, &raw, WNOHANG) != pid) {
        if (std::chrono::steady_clock::now() > deadline) {
            kill(pid, SIGKILL);
            waitpid(pid, &raw, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return raw;
}

}  // namespace

MasterRun::TempFile::TempFile(const std::string& bytes) {
    char name[] = "/tmp/vek_master_test_XXXXXX";
    const int fd = mkstemp(name);
    path_ = name;
    if (fd >= 0) {
        const ssize_t written = write(fd, bytes.data(), bytes.size());
        (void)written;
        close(fd);
    }
}

MasterRun::TempFile::~TempFile() {
    if (std::getenv("VEK_KEEP_LOGS") == nullptr) {
        unlink(path_.c_str());
    }
}

std::string MasterRun::TempFile::read() const {
    std::ifstream in(path_, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

int MasterRun::stop(pid_t pid, int signo, std::chrono::seconds limit) {
    kill(pid, signo);
    const int raw = awaitEnd(pid, limit);
    return raw == -1 ? -1 : WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
}

std::vector<char*> MasterRun::execArgs(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

MasterRun::Result MasterRun::run(const std::vector<std::string>& args, const std::string& input,
                                 const std::vector<std::string>& env, const std::string& cwd) {
    // Files rather than pipes: nothing can block on a full pipe.
    TempFile in(input);
    TempFile out;
    TempFile err;
    std::vector<std::string> words{VEK_MASTER_PATH};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv = MasterRun::execArgs(words);

    const pid_t pid = fork();
    if (pid == 0) {
        if (!freopen(in.path().c_str(), "rb", stdin) ||
            !freopen(out.path().c_str(), "wb", stdout) ||
            !freopen(err.path().c_str(), "wb", stderr)) {
            _exit(126);
        }
        if (!cwd.empty() && chdir(cwd.c_str()) != 0) {
            _exit(126);
        }
        unsetenv("AUDIO_SETTING_SIM");
        for (const std::string& entry : env) {
            putenv(const_cast<char*>(entry.c_str()));
        }
        execv(argv[0], argv.data());
        _exit(127);
    }
    Result result;
    const int raw = awaitEnd(pid, kLimit);
    result.status = raw != -1 && WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    result.out = out.read();
    result.err = err.read();
    return result;
}
