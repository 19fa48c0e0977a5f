#pragma once

#include <cstddef>
#include <string>

#include "VekCheckedRequest.h"
#include "VekSerDes.h"

namespace vekmaster {

// A checked command, ready to run on a session: one message, or a tuning verb.
struct VekMasterCommand {
    enum class Verb { Message, Snapshot, Apply, Diff, Curve, EqImport, EqExport };
    // The operand of diff that stands for the device itself.
    static constexpr const char* kDevice = "device";

    Verb verb = Verb::Message;
    std::string feature;  // Message: "Gain" "SetChannel" and its ARGs
    std::string name;
    vekprotocol::VekFields args;
    VekCheckedRequest request;  // the same, as the catalogue passed it
    std::string output;    // --output=FILE: the raw data, or the snapshot's document
    std::string paths[2];  // Apply: the document; Diff: A and B (kDevice for the device)
    // Curve: the channel, and where its bands come from (a document, or "" for the device)
    std::string channel;
    std::string document;
    std::string svg;  // write the curve as an SVG picture to this file
    bool csv = false;  // print it as CSV
    size_t points = 0;
    bool dryRun = false;   // Apply, EqImport
    bool bypass = false;   // Apply
    // EqImport: the filter file in paths[0], the channels (channel holds them as given),
    // whether to fit, and where the preamp goes; EqExport: the form written.
    bool fit = false;
    std::string preamp;
    std::string format;
    int line = 0;          // its line in a script, 0 on the command line

    // "Gain SetChannel 0 0 -3 -3 1.5 0", "apply tuning.json --bypass"
    std::string text() const;
};

}  // namespace vekmaster
