#include <gtest/gtest.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "ProcessTestSupport.h"
#include "Signals.h"
#include "StopSemaphore.h"

namespace {

// Sends SIGTERM to this thread while another thread keeps the stdout lock for good.
[[maybe_unused]] void termWhileStdoutIsLocked() {
    static sem_t locked;
    sem_init(&locked, 0, 0);
    pthread_t holder;
    pthread_create(
        &holder, nullptr,
        [](void*) -> void* {
            flockfile(stdout);
            sem_post(&locked);
            for (;;) pause();
        },
        nullptr);
    sem_wait(&locked);
    pthread_kill(pthread_self(), SIGTERM);
}

// The lines before "Stack trace:"; a trailing '*' compares only the prefix (the address
// of a signal sent by kill holds the sender's pid).
std::vector<std::string> head(int signo, const std::string& segvCode, const std::string& address) {
    std::vector<std::string> lines = {"[AST][WRN]Signal " + std::to_string(signo) + " received.",
                                      "signum = " + std::to_string(signo)};
    if (!segvCode.empty()) {
        lines.insert(lines.end(), {"Segmentation Fault!", "info.si_code  = " + segvCode});
    }
    lines.insert(lines.end(), {"info.si_errno = 0", "info.si_addr  = " + address});
    return lines;
}

TEST(SignalsTest, FatalSignalsPrintTheReportAndExit255) {
    void* readOnly = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(readOnly, MAP_FAILED);
    char readOnlyText[32];
    std::snprintf(readOnlyText, sizeof(readOnlyText), "%p", readOnly);
    const struct {
        std::function<void()> trigger;
        std::vector<std::string> head;
    } cases[] = {
        {[] { kill(getpid(), SIGTERM); }, head(15, "", "*")},
        {[] { kill(getpid(), SIGINT); }, head(2, "", "*")},
        {[] { kill(getpid(), SIGQUIT); }, head(3, "", "*")},
        {[] { kill(getpid(), SIGBUS); }, head(7, "", "*")},
        {[] { std::abort(); }, head(6, "", "*")},
        {[] { kill(getpid(), SIGSEGV); }, head(11, "0 ()", "*")},
        {[] {
             volatile uintptr_t unmapped = 16;
             *reinterpret_cast<volatile int*>(unmapped) = 1;
         },
         head(11, "1 (SEGV_MAPERR)", "0x10")},
        {[readOnly] { *static_cast<volatile int*>(readOnly) = 1; },
         head(11, "2 (SEGV_ACCERR)", readOnlyText)},
        // raise() sends with tkill, whose code (SI_TKILL) is past the name table.
        {[] { raise(SIGSEGV); }, head(11, "-6 (UNKNOWN)", "*")},
#if !defined(__SANITIZE_THREAD__)
        // The report must not wait for a stdout lock that another thread keeps. (Not
        // under ThreadSanitizer, which kills a forked child that starts a thread.)
        {termWhileStdoutIsLocked, head(15, "", "*")},
#endif
        // Nor for an exit handler that never returns, as one waiting for an allocator lock
        // that the interrupted code holds.
        {[] {
             std::atexit([] {
                 for (;;) pause();
             });
             kill(getpid(), SIGTERM);
         },
         head(15, "", "*")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("case " + std::to_string(&c - cases));
        const ChildResult child = runInChild(
            [&c] {
                if (installSignalHandlers(onSignal) == 0) c.trigger();
            },
            5000);
        EXPECT_EQ(child.status, 255);
        std::vector<std::string> lines;
        std::istringstream in(child.output);
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        ASSERT_GE(lines.size(), c.head.size() + 3) << child.output;
        for (size_t i = 0; i < c.head.size(); ++i) {
            const std::string& want = c.head[i];
            if (want.back() == '*') {
                EXPECT_EQ(lines[i].rfind(want.substr(0, want.size() - 1), 0), 0u) << lines[i];
            } else {
                EXPECT_EQ(lines[i], want);
            }
        }
        EXPECT_EQ(lines[c.head.size()], "Stack trace:");
        EXPECT_LE(lines.size() - c.head.size() - 2, 20u);  // frames
        EXPECT_EQ(child.output.substr(child.output.size() - 20), "\nEnd of stack trace\n");
    }
    munmap(readOnly, 4096);
}

TEST(SignalsTest, Sigusr1PostsTheStopSemaphore) {
    const ChildResult child = runInChild([] {
        if (installSignalHandlers(onSignal) != 0) _exit(3);
        kill(getpid(), SIGUSR1);
        kill(getpid(), SIGUSR1);
        stopSemaphore.wait();
        (void)!write(STDOUT_FILENO, "woke\n", 5);
    });
    EXPECT_EQ(child.status, 0);
    EXPECT_EQ(child.output, "[AST][WRN]Signal 10 received.\n[AST][WRN]Signal 10 received.\nwoke\n");
}

}  // namespace
