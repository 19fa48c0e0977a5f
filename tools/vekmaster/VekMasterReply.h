#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "VekFieldPrinter.h"

namespace vekmaster {

// The one answer the master waits for: which it expects, and what came.
struct VekMasterReply {
    // Expected: the feature and the response's message name.
    std::string feature;
    std::string message;
    bool received = false;

    uint32_t self = 0;
    bool fail = false;
    int32_t rawDataLength = 0;
    std::string rawData;
    std::vector<VekFieldPrinter::Field> fields;

    void expect(const std::string& expectedFeature, const std::string& expectedMessage) {
        *this = VekMasterReply();
        feature = expectedFeature;
        message = expectedMessage;
    }
};

}  // namespace vekmaster
