#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "CapturingTransport.h"
#include "VekServer.h"

namespace vekbench {

// The production wiring in process: a VekServer over a capturing transport, init()ed.
class ServerRig {
public:
    explicit ServerRig(int32_t eqMode = 0);
    ~ServerRig();
    // Feeds one request and forgets the captured response.
    void serve(const std::string& frame);
    // Response frames written so far.
    size_t responses() const { return transport_.writes.size(); }

private:
    CapturingTransport transport_;
    vekserver::VekServer server_;
};

}  // namespace vekbench
