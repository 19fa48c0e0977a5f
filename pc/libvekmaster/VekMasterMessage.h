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
    VekFieldSignature answer;     // the response's fields
    bool rawAnswer = false;       // the answer carries bytes as its raw data (FileContent)
    // Reads the ARGs into the request record as payload fields are read and encodes it
    // with the endpoint's encoder; false when an ARG is missing or cannot be read.
    std::function<bool(const vekprotocol::VekFields& args, uint32_t self, std::stringstream& out)>
        encode;

    // "Gain SetChannel 0 0 -3 -3 1.5 0": the request as a command line or script line.
    std::string text(const vekprotocol::VekFields& args) const { return text(feature, name, args); }
    static std::string text(const std::string& feature, const std::string& name,
                            const vekprotocol::VekFields& args) {
        std::string line = feature + ' ' + name;
        for (const std::string& arg : args) {
            line += ' ' + arg;
        }
        return line;
    }
};

}  // namespace vekmaster
