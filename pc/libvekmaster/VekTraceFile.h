#pragma once

#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

#include "VekTraceSink.h"

namespace vekmaster {

// A capture file written as the traffic goes: each packet is on disk once record
// returns, so a run that is killed leaves a readable trace of all it did. One file may
// take the lines of several threads.
class VekTraceFile : public VekTraceSink {
public:
    VekTraceFile() = default;
    ~VekTraceFile() override;
    VekTraceFile(const VekTraceFile&) = delete;
    VekTraceFile& operator=(const VekTraceFile&) = delete;

    // Creates the file (replacing one that is there); "" or why it cannot be.
    std::string open(const std::string& path);
    void record(const std::string& path, const VekTracePacket& packet) override;
    // "" or why writing failed (the first failure; later packets are not written).
    std::string problem() const;

private:
    void write(const std::string& bytes);

    mutable std::mutex mutex_;
    std::FILE* file_ = nullptr;
    std::string path_;
    std::vector<std::string> lines_;
    std::string problem_;
};

}  // namespace vekmaster
