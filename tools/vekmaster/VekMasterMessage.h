#pragma once

#include <cstdint>
#include <functional>
#include <sstream>
#include <string>

#include "VekFieldSignature.h"
#include "VekSerDes.h"

namespace vekmaster {

// One request the master can send, as the catalog derives it from the request record.
struct VekMasterMessage {
    std::string feature;
    std::string name;             // the operation: "SetChannel"
    std::string response;         // the answer's message name: "SetChannelResponse"
    VekFieldSignature signature;  // the request's fields, for the usage text
    // Reads the ARGs into the request record as payload fields are read and encodes it
    // with the endpoint's encoder; false when an ARG is missing or cannot be read.
    std::function<bool(const vekprotocol::VekFields& args, uint32_t self, std::stringstream& out)>
        encode;
};

}  // namespace vekmaster
