#include "VekPcapng.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

namespace vekmaster {

namespace {

constexpr uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr uint32_t kInterfaceDescription = 1;
constexpr uint32_t kEnhancedPacket = 6;
constexpr uint32_t kByteOrderMagic = 0x1A2B3C4D;
constexpr uint16_t kEndOfOptions = 0;
constexpr uint16_t kComment = 1;
constexpr uint16_t kShbUserApplication = 4;
constexpr uint16_t kIfName = 2;
constexpr uint16_t kIfTsResolution = 9;
constexpr uint16_t kEpbFlags = 2;
constexpr uint32_t kInbound = 1;
constexpr uint32_t kOutbound = 2;

void put16(std::string& out, uint16_t v) {
    out += static_cast<char>(v & 0xFF);
    out += static_cast<char>(v >> 8);
}

void put32(std::string& out, uint32_t v) {
    for (int shift = 0; shift < 32; shift += 8) {
        out += static_cast<char>((v >> shift) & 0xFF);
    }
}

void pad(std::string& out) {
    while (out.size() % 4 != 0) {
        out += '\0';
    }
}

void option(std::string& out, uint16_t code, const std::string& value) {
    put16(out, code);
    put16(out, static_cast<uint16_t>(value.size()));
    out += value;
    pad(out);
}

// type, total length, body (padded), total length again.
std::string block(uint32_t type, std::string body) {
    pad(body);
    std::string out;
    const auto total = static_cast<uint32_t>(body.size() + 12);
    put32(out, type);
    put32(out, total);
    out += body;
    put32(out, total);
    return out;
}

uint32_t get16(const std::string& in, size_t at) {
    return static_cast<uint32_t>(static_cast<unsigned char>(in[at])) |
           static_cast<uint32_t>(static_cast<unsigned char>(in[at + 1])) << 8;
}

uint32_t get32(const std::string& in, size_t at) {
    return get16(in, at) | get16(in, at + 2) << 16;
}

struct Interface {
    bool ours = false;
    uint32_t line = 0;
    int64_t divisor = 1;  // time stamp units per microsecond
    int64_t multiplier = 1;
};

// Walks the options from at to end: calls seen(code, value) for each.
template <class Seen>
void options(const std::string& in, size_t at, size_t end, Seen seen) {
    while (at + 4 <= end) {
        const uint32_t code = get16(in, at);
        const uint32_t length = get16(in, at + 2);
        if (code == kEndOfOptions || at + 4 + length > end) {
            return;
        }
        seen(code, in.substr(at + 4, length));
        at += 4 + ((length + 3) / 4) * 4;
    }
}

}  // namespace

std::string VekPcapng::sectionHeader() {
    std::string body;
    put32(body, kByteOrderMagic);
    put16(body, 1);
    put16(body, 0);
    put32(body, 0xFFFFFFFF);  // section length unknown
    put32(body, 0xFFFFFFFF);
    option(body, kShbUserApplication, "vek_master");
    put32(body, 0);  // end of options
    return block(kSectionHeader, body);
}

std::string VekPcapng::interfaceDescription(const std::string& name) {
    std::string body;
    put16(body, kLinkType);
    put16(body, 0);
    put32(body, 0);  // no snap length: every byte is kept
    option(body, kIfName, name);
    option(body, kIfTsResolution, std::string(1, '\x06'));
    put32(body, 0);
    return block(kInterfaceDescription, body);
}

std::string VekPcapng::packet(const VekTracePacket& packet) {
    std::string body;
    const auto time = static_cast<uint64_t>(packet.timeUs);
    put32(body, packet.line);
    put32(body, static_cast<uint32_t>(time >> 32));
    put32(body, static_cast<uint32_t>(time & 0xFFFFFFFF));
    put32(body, static_cast<uint32_t>(packet.bytes.size()));
    put32(body, static_cast<uint32_t>(packet.bytes.size()));
    body += packet.bytes;
    pad(body);
    std::string flags;
    put32(flags, packet.outbound ? kOutbound : kInbound);
    option(body, kEpbFlags, flags);
    if (packet.stray) {
        option(body, kComment, kStrayComment);
    }
    put32(body, 0);
    return block(kEnhancedPacket, body);
}

std::string VekPcapng::encode(const VekTrace& trace) {
    std::string out = sectionHeader();
    for (const std::string& line : trace.lines) {
        out += interfaceDescription(line);
    }
    for (const VekTracePacket& p : trace.packets) {
        out += packet(p);
    }
    return out;
}

std::string VekPcapng::decode(const std::string& in, VekTrace& trace) {
    std::vector<Interface> interfaces;
    size_t at = 0;
    while (at < in.size()) {
        if (at + 12 > in.size()) {
            return "the file ends inside a block at byte " + std::to_string(at);
        }
        const uint32_t type = get32(in, at);
        const uint32_t total = get32(in, at + 4);
        if (at == 0 && type != kSectionHeader) {
            return "not a pcapng file (it does not begin with a section header)";
        }
        if (total < 12 || total % 4 != 0 || at + total > in.size()) {
            return "a block at byte " + std::to_string(at) + " has a bad length";
        }
        const size_t body = at + 8;
        const size_t end = at + total - 4;
        if (type == kSectionHeader) {
            if (total < 28 || get32(in, body) != kByteOrderMagic) {
                return "not a little-endian pcapng section at byte " + std::to_string(at);
            }
            interfaces.clear();  // interface numbers start again in a new section
        } else if (type == kInterfaceDescription && total >= 20) {
            Interface i;
            i.ours = get16(in, body) == kLinkType;
            std::string name;
            options(in, body + 8, end, [&](uint32_t code, const std::string& value) {
                if (code == kIfName) {
                    name = value;
                } else if (code == kIfTsResolution && value.size() == 1 &&
                           (value[0] & 0x80) == 0) {
                    int64_t units = 1;
                    for (int k = 0; k < value[0] && units < 1000000000000LL; ++k) {
                        units *= 10;
                    }
                    i.divisor = units >= 1000000 ? units / 1000000 : 1;
                    i.multiplier = units < 1000000 ? 1000000 / units : 1;
                }
            });
            if (i.ours) {
                i.line = trace.lineFor(name);
            }
            interfaces.push_back(i);
        } else if (type == kEnhancedPacket && total >= 32) {
            const uint32_t id = get32(in, body);
            const uint32_t captured = get32(in, body + 12);
            if (id >= interfaces.size()) {
                return "a packet at byte " + std::to_string(at) + " names no interface";
            }
            if (body + 20 + captured > end) {
                return "a packet at byte " + std::to_string(at) + " is longer than its block";
            }
            const Interface& i = interfaces[id];
            if (!i.ours) {
                at += total;
                continue;
            }
            VekTracePacket p;
            p.line = i.line;
            const uint64_t stamp = static_cast<uint64_t>(get32(in, body + 4)) << 32 |
                                   get32(in, body + 8);
            p.timeUs = static_cast<int64_t>(stamp) / i.divisor * i.multiplier;
            p.bytes = in.substr(body + 20, captured);
            options(in, body + 20 + ((captured + 3) / 4) * 4, end,
                    [&](uint32_t code, const std::string& value) {
                        if (code == kEpbFlags && value.size() == 4) {
                            p.outbound = (get32(value, 0) & 3) == kOutbound;
                        } else if (code == kComment && value == kStrayComment) {
                            p.stray = true;
                        }
                    });
            trace.packets.push_back(std::move(p));
        }
        at += total;
    }
    return "";
}

std::string VekPcapng::load(const std::string& path, VekTrace& trace) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return "cannot read " + path + ": " + std::strerror(errno);
    }
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const std::string problem = decode(bytes, trace);
    return problem.empty() ? "" : path + ": " + problem;
}

}  // namespace vekmaster
