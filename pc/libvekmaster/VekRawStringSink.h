#pragma once

#include <string>

#include "VekRawSink.h"

namespace vekmaster {

// Raw data held in memory, for callers that want the bytes themselves.
class VekRawStringSink : public VekRawSink {
public:
    explicit VekRawStringSink(std::string& bytes) : bytes_(bytes) {}

    bool begin(int64_t) override {
        bytes_.clear();
        return true;
    }
    bool write(const char* data, size_t size) override {
        bytes_.append(data, size);
        return true;
    }
    bool end() override { return true; }
    void abandon() override { bytes_.clear(); }

private:
    std::string& bytes_;
};

}  // namespace vekmaster
