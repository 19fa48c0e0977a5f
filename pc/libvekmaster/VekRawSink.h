#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vekmaster {

// Where the raw data of an awaited answer goes as it arrives, so that an answer of any
// size passes through without being held whole.
class VekRawSink {
public:
    virtual ~VekRawSink() = default;
    // An answer that is not failed has begun; length bytes will follow.
    virtual bool begin(int64_t length) = 0;
    virtual bool write(const char* data, size_t size) = 0;
    // Every byte has come.
    virtual bool end() = 0;
    // The answer did not come whole: nothing of it may pass for the whole.
    virtual void abandon() = 0;
    // Why the last operation failed.
    virtual std::string problem() const { return "the raw data could not be kept"; }
};

}  // namespace vekmaster
