#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

// Runs the built vek_master as a process of its own, as a user or a script would, and
// collects its exit status and everything it printed.
class MasterRun {
public:
    // The last line of every refusal of the command line.
    static constexpr const char* kTryHelp =
        "Try 'vek_master --help' for the options, the messages and their arguments.\n";

    struct Result {
        int status = -1;  // exit status; -1 when it had to be killed
        std::string out;
        std::string err;
    };

    // args follow the program name; input is its standard input; env adds NAME=value;
    // cwd is where it runs ("" for here).
    static Result run(const std::vector<std::string>& args, const std::string& input = "",
                      const std::vector<std::string>& env = {}, const std::string& cwd = "");

    // Sends signo to a child and waits for its end, killing it after limit; its exit
    // status, 128 + the signal that ended it, or -1 when it had to be killed.
    static int stop(pid_t pid, int signo, std::chrono::seconds limit);

    // An exec argument vector over words (which must outlive it), null-terminated.
    static std::vector<char*> execArgs(std::vector<std::string>& words);

    // A temporary file holding bytes, removed with this object.
    class TempFile {
    public:
        explicit TempFile(const std::string& bytes = "");
        ~TempFile();
        TempFile(const TempFile&) = delete;
        TempFile& operator=(const TempFile&) = delete;
        const std::string& path() const { return path_; }
        std::string read() const;

    private:
        std::string path_;
    };
};
