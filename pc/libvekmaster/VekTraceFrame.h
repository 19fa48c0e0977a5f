#pragma once

#include <string>
#include <utility>
#include <vector>

#include "VekMessageCatalog.h"
#include "VekSerDes.h"

namespace vekmaster {

// A captured frame taken apart as the frame layer cuts it, its payload fields named
// after the message's record (as the catalogue knows them).
struct VekTraceFrame {
    bool frame = false;  // a header line of at least six fields
    vekprotocol::VekFields header;
    vekprotocol::VekFields payload;
    std::string raw;  // what follows the header line

    const std::string& feature() const { return header[2]; }
    const std::string& message() const { return header[3]; }
    const std::string& status() const { return header[5]; }
    bool response() const;

    static VekTraceFrame parse(const std::string& bytes);
    // A record's fields as (name, count) in wire order: count 1 one field, N an array, 0 a
    // list taking the rest; single fields that share a name (a record that lists an
    // array's elements one by one) are one array.
    static std::vector<std::pair<std::string, size_t>> slots(const VekFieldSignature& fields);
    // The payload as name=value pairs: "channelGain[0]" for an array's elements, "files[2]"
    // for a list's, "field3" where the message is unknown or has fewer fields.
    std::vector<std::pair<std::string, std::string>> named(const VekMessageCatalog& catalog) const;
    // "AS:1:0:Gain:GetMasterResponse:0:OK:<-12>:" with raw data as " +N bytes", and for
    // bytes that are no frame their text with control bytes escaped.
    static std::string text(const std::string& bytes);
};

}  // namespace vekmaster
