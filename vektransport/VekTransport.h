#pragma once

#include <cstdint>

namespace vektransport {

// The byte link to the master.
class VekTransport {
public:
    virtual ~VekTransport() = default;
    virtual int32_t open() = 0;
    virtual int32_t close() = 0;
    // Bytes read, 0 when nothing arrived in time, negative on error.
    virtual int32_t read(char* buffer, uint32_t length) = 0;
    // Bytes written, negative on error.
    virtual int32_t write(const char* buffer, uint32_t length) = 0;
    virtual bool isDisconnected() = 0;
};

}  // namespace vektransport
