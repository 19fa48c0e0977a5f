#include "VekCable.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace vekcable {

namespace {

using Clock = std::chrono::steady_clock;

int64_t nowNs(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
}

constexpr int64_t kNsPerMs = VekCableModel::kNsPerMs;
constexpr char kGreeting[] = "HELLO!\n";

}  // namespace

VekCable::VekCable(const Options& options)
    : options_(options), models_{VekCableModel(options.toMaster), VekCableModel(options.toDevice)} {
    for (const Fault& fault : options_.faults) {
        if (fault.atByte >= 0) {
            models_[fault.direction].faultAt(static_cast<uint64_t>(fault.atByte), fault.kind,
                                             fault.count);
        }
    }
    if (!openEnds()) {
        closeEnds();
        return;
    }
    thread_ = std::thread([this] { relay(); });
}

VekCable::~VekCable() {
    stop();
    closeEnds();
}

void VekCable::stop() {
    running_ = false;
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool VekCable::openEnds() {
    termios raw{};
    cfmakeraw(&raw);
    // End 0 is the device's, end 1 the master's.
    const std::string* links[2] = {&options_.deviceLink, &options_.masterLink};
    for (int i = 0; i < 2; ++i) {
        if (openpty(&masters_[i], &slaves_[i], nullptr, &raw, nullptr) != 0) {
            problem_ = std::string("cannot open a pseudo-terminal: ") + std::strerror(errno);
            return false;
        }
        fcntl(masters_[i], F_SETFL, fcntl(masters_[i], F_GETFL) | O_NONBLOCK);
        fcntl(masters_[i], F_SETFD, FD_CLOEXEC);
        fcntl(slaves_[i], F_SETFD, FD_CLOEXEC);
        const std::string end = ptsname(masters_[i]);
        if (!links[i]->empty()) {
            ::unlink(links[i]->c_str());
            if (::symlink(end.c_str(), links[i]->c_str()) != 0) {
                problem_ = "cannot link " + *links[i] + ": " + std::strerror(errno);
                return false;
            }
        }
        // Under a link the path stays what it was when the ends come back after a pull.
        const std::string& path = links[i]->empty() ? end : *links[i];
        if (paths_[i] != path) {
            paths_[i] = path;
        }
    }
    return true;
}

void VekCable::closeEnds() {
    const std::string* links[2] = {&options_.deviceLink, &options_.masterLink};
    for (int i = 0; i < 2; ++i) {
        for (int* fd : {&masters_[i], &slaves_[i]}) {
            if (*fd >= 0) {
                ::close(*fd);
                *fd = -1;
            }
        }
        if (!links[i]->empty()) {
            ::unlink(links[i]->c_str());
        }
    }
}

bool VekCable::awaitGreeting(int timeoutMs) const {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!greeted_) {
        if (Clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

VekCable::Counters VekCable::counters() const {
    std::lock_guard<std::mutex> lock(mutex_);
    Counters c = counters_;
    for (int d = 0; d < 2; ++d) {
        c.bytes[d] = models_[d].bytesOut();
        c.packets[d] = models_[d].packets();
        c.noisy[d] = models_[d].noisy();
        c.dropped[d] = models_[d].dropped();
    }
    return c;
}

void VekCable::relay() {
    const Clock::time_point start = Clock::now();
    std::vector<Fault> timed;
    for (const Fault& fault : options_.faults) {
        if (fault.atByte < 0) {
            timed.push_back(fault);
        }
    }
    std::vector<Pull> pulls = options_.pulls;
    int64_t back = -1;  // when pulled ends come back
    std::string pending[2];  // handed over by a model, not yet taken by the end's reader
    std::string seen;
    char buffer[4096];
    while (running_) {
        const int64_t now = nowNs(start);
        // Faults and pulls that are due.
        {
            std::lock_guard<std::mutex> lock(mutex_);
            for (auto it = timed.begin(); it != timed.end();) {
                if (it->atMs * kNsPerMs <= now) {
                    models_[it->direction].fault(now, it->kind, it->count);
                    it = timed.erase(it);
                } else {
                    ++it;
                }
            }
        }
        for (auto it = pulls.begin(); it != pulls.end();) {
            const bool due = it->atByte >= 0
                                 ? models_[ToMaster].bytesIn() >= static_cast<uint64_t>(it->atByte)
                                 : it->atMs * kNsPerMs <= now;
            if (!due) {
                ++it;
                continue;
            }
            std::lock_guard<std::mutex> lock(mutex_);
            for (int d = 0; d < 2; ++d) {
                counters_.lost[d] += models_[d].underway() + pending[d].size();
                pending[d].clear();
                models_[d].clear();
            }
            ++counters_.pulls;
            closeEnds();
            back = now + it->forMs * kNsPerMs;
            it = pulls.erase(it);
        }
        if (back >= 0 && back <= now) {
            back = -1;
            if (!openEnds()) {
                closeEnds();
                return;
            }
        }
        // How long to sleep: until the next hand-over, fault or pull, at most 20 ms.
        int64_t wake = now + 20 * kNsPerMs;
        for (int d = 0; d < 2; ++d) {
            std::lock_guard<std::mutex> lock(mutex_);
            const int64_t due = models_[d].next();
            if (due >= 0) {
                wake = std::min(wake, due);
            }
        }
        for (const Fault& fault : timed) {
            wake = std::min(wake, fault.atMs * kNsPerMs);
        }
        for (const Pull& pull : pulls) {
            if (pull.atByte < 0) {
                wake = std::min(wake, pull.atMs * kNsPerMs);
            }
        }
        if (back >= 0) {
            wake = std::min(wake, back);
        }
        if (masters_[0] < 0) {
            std::this_thread::sleep_for(std::chrono::nanoseconds(std::max<int64_t>(wake - now, 0)));
            continue;
        }
        pollfd p[2];
        for (int end = 0; end < 2; ++end) {
            // Direction d delivers to end 1 - d: ToMaster (0) to the master's end (1).
            const int into = 1 - end;
            p[end] = {masters_[end],
                      static_cast<short>(POLLIN | (pending[into].empty() ? 0 : POLLOUT)), 0};
        }
        // Sub-millisecond hand-overs: poll in whole milliseconds, rounded up, then a
        // short sleep does the rest.
        const int64_t waitNs = std::max<int64_t>(wake - now, 0);
        int waitMs = static_cast<int>(waitNs / kNsPerMs);
        const int ready = poll(p, 2, waitMs);
        if (ready == 0 && waitNs % kNsPerMs != 0) {
            std::this_thread::sleep_for(std::chrono::nanoseconds(waitNs % kNsPerMs));
        }
        const int64_t at = nowNs(start);
        std::lock_guard<std::mutex> lock(mutex_);
        for (int end = 0; end < 2; ++end) {
            // What the end's program wrote goes the other way: end 0 (device) to master.
            const int d = end == 0 ? ToMaster : ToDevice;
            const ssize_t n = read(masters_[end], buffer, sizeof(buffer));
            if (n > 0) {
                models_[d].push(at, buffer, static_cast<size_t>(n));
                if (end == 0 && !greeted_) {
                    seen.append(buffer, static_cast<size_t>(n));
                    greeted_ = seen.find(kGreeting) != std::string::npos;
                }
            }
        }
        for (int d = 0; d < 2; ++d) {
            models_[d].take(at, pending[d]);
            const int into = d == ToMaster ? 1 : 0;
            if (!pending[d].empty()) {
                const ssize_t w = write(masters_[into], pending[d].data(), pending[d].size());
                if (w > 0) {
                    pending[d].erase(0, static_cast<size_t>(w));
                }
            }
        }
    }
}

}  // namespace vekcable
