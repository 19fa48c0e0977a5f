#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "VekTransport.h"

// A transport that keeps what is written, one entry per write call.
class CapturingTransport : public vektransport::VekTransport {
public:
    int32_t open() override { return 0; }
    int32_t close() override { return 0; }
    int32_t read(char*, uint32_t) override { return 0; }
    int32_t write(const char* buffer, uint32_t length) override {
        writes.emplace_back(buffer, length);
        return static_cast<int32_t>(length);
    }
    bool isDisconnected() override { return false; }

    std::vector<std::string> writes;
};
