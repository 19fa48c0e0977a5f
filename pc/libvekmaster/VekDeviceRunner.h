#pragma once

#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

namespace vekmaster {

// Runs one job per line at once, each on a thread of its own: a production-line PC
// tunes a hub of devices in the time of the slowest. The jobs share nothing; each opens
// its own line and session.
class VekDeviceRunner {
public:
    // Calls job(0) ... job(count - 1) concurrently and returns when all have returned.
    static void forEach(size_t count, const std::function<void(size_t)>& job) {
        if (count == 1) {
            job(0);
            return;
        }
        std::vector<std::thread> threads;
        threads.reserve(count);
        for (size_t i = 0; i < count; ++i) {
            threads.emplace_back(job, i);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
};

}  // namespace vekmaster
