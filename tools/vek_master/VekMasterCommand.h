#pragma once

#include <string>

#include "VekMasterMessage.h"
#include "VekSerDes.h"

namespace vekmaster {

// A checked command, ready to be sent.
struct VekMasterCommand {
    const VekMasterMessage* message = nullptr;
    vekprotocol::VekFields args;
    std::string output;  // --output=FILE: where the answer's raw data goes

    // "Gain SetChannel 0 0 -3 -3 1.5 0"
    std::string text() const {
        std::string line = message->feature + ' ' + message->name;
        for (const std::string& arg : args) {
            line += ' ' + arg;
        }
        return line;
    }
};

}  // namespace vekmaster
