#pragma once

#include <cstdio>
#include <string>

#include "VekRawSink.h"

namespace vekmaster {

// Raw data written to a file as it arrives. The file is created only when an answer
// that is not failed begins, and removed again when the answer does not come whole, so
// that a cut-off setting file never passes for a complete one.
class VekRawFileSink : public VekRawSink {
public:
    explicit VekRawFileSink(std::string path) : path_(std::move(path)) {}
    ~VekRawFileSink() override;
    VekRawFileSink(const VekRawFileSink&) = delete;
    VekRawFileSink& operator=(const VekRawFileSink&) = delete;

    bool begin(int64_t length) override;
    bool write(const char* data, size_t size) override;
    bool end() override;
    void abandon() override;

    // "cannot write PATH: reason"
    std::string problem() const override { return problem_; }

private:
    bool fail();

    std::string path_;
    std::FILE* file_ = nullptr;
    std::string problem_;
};

}  // namespace vekmaster
