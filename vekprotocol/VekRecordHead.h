#pragma once

#include <cstdint>

namespace vekprotocol {

// The head every message record starts with.
struct VekRecordHead {
    uint32_t self = 0;
    uint32_t peer = 0;
    bool fail = false;
    int32_t rawDataLength = 0;
    const char* rawData = nullptr;  // not owned
};

// A record's fields are listed once, in order, as f("name", r.member); a record
// with no fields of its own writes no payload block.
template <class Visitor>
void fields(Visitor&, VekRecordHead&) {}

// A signed 32-bit value that travels as unsigned decimal (-1 is written 4294967295).
struct VekAsUnsigned {
    int32_t& value;
};

}  // namespace vekprotocol
