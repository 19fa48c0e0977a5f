#include "Signals.h"

#include <execinfo.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "StopSemaphore.h"
#include "VekLog.h"

namespace {

struct CaughtSignal {
    int signo;
    const char* name;
};

const CaughtSignal kCaught[] = {
    {SIGUSR1, "SIGUSR1"}, {SIGSEGV, "SIGSEGV"}, {SIGTERM, "SIGTERM"}, {SIGINT, "SIGINT"},
    {SIGQUIT, "SIGQUIT"}, {SIGABRT, "SIGABRT"}, {SIGBUS, "SIGBUS"},
};

// Indexed by si_code; codes past the table (sent with tkill, newer kernels) print kUnknownCode.
const char* const kSegvCodes[] = {"", "SEGV_MAPERR", "SEGV_ACCERR"};
const char kUnknownCode[] = "UNKNOWN";

const int kMaxFrames = 20;

void leaveNow(int /*signo*/) {
    _exit(255);
}

// exit() flushes stdout and stderr, which takes their locks. A thread that keeps one
// (stuck, or stopped mid-print by a signal) would hang the process there, so give it a
// moment and otherwise leave without the exit handlers: the status is the same.
[[noreturn]] void leave() {
    for (int tries = 0; tries < 50; ++tries) {
        if (ftrylockfile(stdout) == 0) {
            const bool errFree = ftrylockfile(stderr) == 0;
            if (errFree) {
                funlockfile(stderr);
            }
            funlockfile(stdout);
            if (errFree) {
                // The exit handlers free memory. A signal that stopped a thread inside the
                // allocator leaves its lock taken, and they would wait for it forever:
                // they get a second, then the process leaves without them.
                struct sigaction bail {};
                bail.sa_handler = leaveNow;
                sigemptyset(&bail.sa_mask);
                sigaction(SIGALRM, &bail, nullptr);
                alarm(1);
                std::exit(-1);
            }
        }
        const timespec nap{0, 20 * 1000 * 1000};
        nanosleep(&nap, nullptr);
    }
    _exit(255);
}

}  // namespace

int installSignalHandlers(SignalHandler handler) {
    // The first backtrace() loads the unwinder; do it now rather than inside a handler.
    void* frame[1];
    backtrace(frame, 1);

    struct sigaction action {};
    action.sa_sigaction = handler;
    sigemptyset(&action.sa_mask);
    // No SA_RESTART: a SIGUSR1 must be able to cut the main thread's wait short.
    action.sa_flags = SA_SIGINFO;
    for (const CaughtSignal& caught : kCaught) {
        if (sigaction(caught.signo, &action, nullptr) != 0) {
            std::perror(caught.name);
            return -1;
        }
    }
    return 0;
}

void onSignal(int signo, siginfo_t* info, void* context) {
    VekLog::fromSignal(VekLog::kWarning, "Signal %d received.\n", signo);
    if (signo == SIGUSR1) {
        stopSemaphore.signal();
        return;
    }
    crashReport(signo, info, context);
}

void crashReport(int signo, siginfo_t* info, void* /*context*/) {
    const int code = info != nullptr ? info->si_code : 0;
    VekLog::fromSignal(VekLog::kPlain, "signum = %d\n", signo);
    if (signo == SIGSEGV) {
        const bool known =
            code >= 0 && code < static_cast<int>(sizeof(kSegvCodes) / sizeof(kSegvCodes[0]));
        VekLog::fromSignal(VekLog::kPlain, "Segmentation Fault!\n");
        VekLog::fromSignal(VekLog::kPlain, "info.si_code  = %d (%s)\n", code,
                           known ? kSegvCodes[code] : kUnknownCode);
    }
    VekLog::fromSignal(VekLog::kPlain, "info.si_errno = %d\n",
                       info != nullptr ? info->si_errno : 0);
    VekLog::fromSignal(VekLog::kPlain, "info.si_addr  = %p\n",
                       info != nullptr ? info->si_addr : nullptr);
    VekLog::fromSignal(VekLog::kPlain, "Stack trace:\n");
    void* frames[kMaxFrames];
    const int count = backtrace(frames, kMaxFrames);
    char** symbols = backtrace_symbols(frames, count);
    if (symbols != nullptr) {
        for (int i = 0; i < count; ++i) {
            if (symbols[i] != nullptr) {
                VekLog::fromSignal(VekLog::kPlain, "%s\n", symbols[i]);
            }
        }
        std::free(symbols);
    }
    VekLog::fromSignal(VekLog::kPlain, "End of stack trace\n");
    leave();
}
