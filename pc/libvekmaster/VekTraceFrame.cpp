#include "VekTraceFrame.h"

#include <cstdio>

#include "VekHeaderLine.h"

namespace vekmaster {

namespace {

const std::string kRequest = "Request";
const std::string kResponse = "Response";

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The record's fields of the message named on the wire, or null.
const VekFieldSignature* signature(const VekMessageCatalog& catalog, const std::string& feature,
                                   const std::string& message) {
    for (const VekMasterMessage& m : catalog.messages()) {
        if (m.feature != feature) {
            continue;
        }
        if (m.response == message) {
            return &m.answer;
        }
        if (m.name + kRequest == message) {
            return &m.signature;
        }
    }
    return nullptr;
}

std::string escaped(const std::string& bytes) {
    std::string out;
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\\') {
            out += "\\\\";
        } else if (u < 0x20 || u >= 0x7F) {
            char hex[8];
            std::snprintf(hex, sizeof(hex), "\\x%02x", u);
            out += hex;
        } else {
            out += c;
        }
    }
    return out;
}

}  // namespace

bool VekTraceFrame::response() const {
    return frame && endsWith(message(), kResponse);
}

VekTraceFrame VekTraceFrame::parse(const std::string& bytes) {
    VekTraceFrame f;
    const size_t lf = bytes.find('\n');
    if (bytes.compare(0, 2, "AS") != 0 || lf == std::string::npos) {
        return f;
    }
    uint32_t rawOffset = 0;
    vekprotocol::VekHeaderLine::cut(bytes.data(), static_cast<int32_t>(lf), f.header, f.payload,
                                    rawOffset);
    f.frame = f.header.size() >= 6;
    f.raw = bytes.substr(lf + 1);
    return f;
}

std::vector<std::pair<std::string, size_t>> VekTraceFrame::slots(const VekFieldSignature& fields) {
    std::vector<std::pair<std::string, size_t>> out;
    bool single = false;  // the last slot is single fields only
    for (const VekFieldSignature::Slot& slot : fields.slots()) {
        if (single && slot.count == 1 && out.back().first == slot.name) {
            ++out.back().second;
            continue;
        }
        out.emplace_back(slot.name, slot.count);
        single = slot.count == 1;
    }
    return out;
}

std::vector<std::pair<std::string, std::string>> VekTraceFrame::named(
    const VekMessageCatalog& catalog) const {
    std::vector<std::pair<std::string, std::string>> out;
    const VekFieldSignature* fields = frame ? signature(catalog, feature(), message()) : nullptr;
    size_t at = 0;
    if (fields != nullptr) {
        for (const auto& slot : slots(*fields)) {
            const bool array = slot.second != 1;
            for (size_t k = 0; at < payload.size() && (slot.second == 0 || k < slot.second); ++k) {
                out.emplace_back(array ? slot.first + '[' + std::to_string(k) + ']' : slot.first,
                                 payload[at++]);
            }
        }
    }
    for (; at < payload.size(); ++at) {
        out.emplace_back("field" + std::to_string(at), payload[at]);
    }
    return out;
}

std::string VekTraceFrame::text(const std::string& bytes) {
    const VekTraceFrame f = parse(bytes);
    if (!f.frame) {
        return escaped(bytes);
    }
    const size_t lf = bytes.find('\n');
    std::string out = escaped(bytes.substr(0, lf));
    if (!f.raw.empty()) {
        out += " +" + std::to_string(f.raw.size()) + " bytes";
    }
    return out;
}

}  // namespace vekmaster
