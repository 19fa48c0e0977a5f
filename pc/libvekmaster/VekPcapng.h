#pragma once

#include <cstdint>
#include <string>

#include "VekTrace.h"

namespace vekmaster {

// The capture file format: pcapng, little-endian, written and read byte by byte (never
// through a cast buffer, so it is the same on any host). A file is one section header,
// one interface description per line (its path the interface's name, link type
// kLinkType, microsecond time stamps) and one enhanced packet per frame, its direction in
// the packet flags (inbound: device to master) and, for bytes that are no frame, the
// comment kStrayComment.
class VekPcapng {
public:
    // LINKTYPE_USER3: a private link type that no dissector claims by itself (USER2, 149,
    // is read as another system's capture header).
    static constexpr uint16_t kLinkType = 150;
    static constexpr const char* kStrayComment = "stray bytes";

    static std::string sectionHeader();
    static std::string interfaceDescription(const std::string& name);
    static std::string packet(const VekTracePacket& packet);
    // A whole file.
    static std::string encode(const VekTrace& trace);
    // Reads a file's text into trace; "" or what is wrong with it. Blocks of other kinds
    // are skipped; packets of an interface of another link type are not taken.
    static std::string decode(const std::string& bytes, VekTrace& trace);
    // decode of a file's content; "" or why it cannot be read.
    static std::string load(const std::string& path, VekTrace& trace);
};

}  // namespace vekmaster
