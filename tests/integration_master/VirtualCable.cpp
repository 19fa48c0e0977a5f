#include "VirtualCable.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>

VirtualCable::VirtualCable() {
    termios raw{};
    cfmakeraw(&raw);
    for (int i = 0; i < 2; ++i) {
        if (openpty(&masters_[i], &slaves_[i], nullptr, &raw, nullptr) != 0) {
            return;
        }
        fcntl(masters_[i], F_SETFL, fcntl(masters_[i], F_GETFL) | O_NONBLOCK);
        fcntl(masters_[i], F_SETFD, FD_CLOEXEC);
        fcntl(slaves_[i], F_SETFD, FD_CLOEXEC);
        ends_[i] = ptsname(masters_[i]);
    }
    ok_ = true;
    thread_ = std::thread([this] { relay(); });
}

VirtualCable::~VirtualCable() {
    running_ = false;
    if (thread_.joinable()) {
        thread_.join();
    }
    for (int i = 0; i < 2; ++i) {
        for (const int fd : {masters_[i], slaves_[i]}) {
            if (fd >= 0) {
                close(fd);
            }
        }
    }
}

bool VirtualCable::awaitGreeting(int timeoutMs) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!greeted_) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

void VirtualCable::relay() {
    // What one end wrote and the other end has not taken yet, per direction.
    std::string pending[2];
    std::string seen;
    char buffer[4096];
    while (running_) {
        pollfd p[2];
        for (int i = 0; i < 2; ++i) {
            p[i] = {masters_[i], static_cast<short>(POLLIN | (pending[i].empty() ? 0 : POLLOUT)),
                    0};
        }
        if (poll(p, 2, 20) <= 0) {
            continue;
        }
        for (int from = 0; from < 2; ++from) {
            const int to = 1 - from;
            const ssize_t n = read(masters_[from], buffer, sizeof(buffer));
            if (n > 0) {
                pending[to].append(buffer, static_cast<size_t>(n));
                if (from == 0 && !greeted_) {
                    seen.append(buffer, static_cast<size_t>(n));
                    greeted_ = seen.find("HELLO!\n") != std::string::npos;
                }
            }
            if (!pending[to].empty()) {
                const ssize_t w = write(masters_[to], pending[to].data(), pending[to].size());
                if (w > 0) {
                    pending[to].erase(0, static_cast<size_t>(w));
                }
            }
        }
    }
}
