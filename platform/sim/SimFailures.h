#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

// Injected failures: a status that a library operation returns instead of doing its
// work. Operations are named by their method names ("getBypass", "setChannelGain").
class SimFailures {
public:
    // Whether name is one of the library's operations.
    static bool isOperation(const std::string& name);

    // Every call of operation.
    void always(const std::string& operation, int32_t status);
    // The nthCall-th call of operation from now on (1: the next one), once.
    void onCall(const std::string& operation, int32_t status, unsigned nthCall);
    // Every call of operation whose channel mask argument equals mask.
    void forMask(const std::string& operation, uint32_t mask, int32_t status);
    void clear();

    // Counts the call and gives its injected status, 0 for none. mask is null for
    // operations without a channel mask. A k-th-call failure wins over a mask
    // failure, which wins over an always failure.
    int32_t check(const std::string& operation, const uint32_t* mask);

private:
    struct Countdown {
        unsigned callsLeft;
        int32_t status;
    };
    std::map<std::string, int32_t> always_;
    std::map<std::string, std::vector<Countdown>> onCall_;
    std::map<std::pair<std::string, uint32_t>, int32_t> forMask_;
};
