#pragma once

#include <csignal>

using SignalHandler = void (*)(int signo, siginfo_t* info, void* context);

// Installs handler for SIGUSR1 and the fatal signals; 0 on success, -1 (after perror
// with the signal's name) at the first failure.
int installSignalHandlers(SignalHandler handler);

// SIGUSR1 posts the stop semaphore; every other signal ends in the crash report.
void onSignal(int signo, siginfo_t* info, void* context);

// Prints the signal's details and a backtrace to standard output and exits with 255.
// Writes with write(2) only: the interrupted thread may hold the stdout lock.
[[noreturn]] void crashReport(int signo, siginfo_t* info, void* context);
