// The payload readers and every master endpoint's decode on arbitrary fields.
// Input: a header line of ':'-separated fields, a payload line of fields, then the
// frame's raw data; the header's length field need not match what follows.
//
// Checked: a text that reads as a number writes back to a text that reads the same;
// a bool reads true exactly when the text reads as the integer 1; an accepted
// response keeps exactly the raw bytes its header announced.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "VekCommonMaster.h"
#include "VekEqMaster.h"
#include "VekEqV2Master.h"
#include "VekGainMaster.h"
#include "VekHfeMaster.h"
#include "VekMasterReply.h"
#include "VekResponseSink.h"
#include "VekReverbMaster.h"
#include "VekSpeakerMaster.h"
#include "VekText.h"
#include "VekVbMaster.h"

using vekprotocol::VekFields;
using vekprotocol::VekText;

namespace {

void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "invariant broken: %s\n", what);
        std::abort();
    }
}

VekFields split(const std::string& line) {
    VekFields fields;
    size_t start = 0;
    for (size_t colon; (colon = line.find(':', start)) != std::string::npos; start = colon + 1) {
        fields.push_back(line.substr(start, colon - start));
    }
    fields.push_back(line.substr(start));
    return fields;
}

// An integer that reads writes back to a text that reads the same.
template <class T>
bool readsBack(const std::string& text, T& value, bool (*read)(const std::string&, T&),
               void (*append)(std::string&, T)) {
    if (!read(text, value)) {
        return false;
    }
    std::string back;
    append(back, value);
    T again = 0;
    check(read(back, again) && again == value, "integer writes back");
    return true;
}

void checkReaders(const std::string& text) {
    int32_t i = 0;
    const bool isInt = readsBack(text, i, VekText::readInt, VekText::appendInt);
    uint32_t u = 0;
    readsBack(text, u, VekText::readUint, VekText::appendUint);
    float f = 0;
    if (VekText::readFloat(text, f)) {
        // Six significant digits lose precision once; the text form is then stable.
        std::string once;
        VekText::appendFloat(once, f);
        float g = 0;
        check(VekText::readFloat(once, g), "float text reads back");
        std::string twice;
        VekText::appendFloat(twice, g);
        check(once == twice || (std::isnan(f) && std::isnan(g)), "float text is stable");
    }
    bool b = false;
    if (VekText::readBool(text, b)) {
        check(b == (isInt && i == 1), "bool is the integer 1");
    }
    VekText::readLenient(text);
}

// Every feature's master endpoint, each with a sink awaiting the message the header names.
template <class Master>
void decodeWith(const VekFields& header, const VekFields& payload, const std::string& bytes,
                uint32_t rawOffset) {
    vekmaster::VekMasterReply reply;
    reply.expect(Master::kFeature, header.size() > 3 ? header[3] : "");
    vekmaster::VekResponseSink sink(Master::kFeature, reply);
    Master master;
    master.setCallback(&sink);
    std::stringstream frame(bytes);
    master.decode(header, payload, frame, rawOffset);
    if (reply.received && reply.rawDataLength > 0) {
        check(reply.rawData == bytes.substr(rawOffset, static_cast<size_t>(reply.rawDataLength)),
              "raw data is the frame's tail");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const size_t headerEnd = bytes.find('\n');
    if (headerEnd == std::string::npos) {
        checkReaders(bytes);
        return 0;
    }
    const size_t payloadEnd = bytes.find('\n', headerEnd + 1);
    const VekFields header = split(bytes.substr(0, headerEnd));
    const VekFields payload = split(bytes.substr(headerEnd + 1, payloadEnd - headerEnd - 1));
    const uint32_t rawOffset = payloadEnd == std::string::npos
                                   ? static_cast<uint32_t>(size)
                                   : static_cast<uint32_t>(payloadEnd + 1);
    for (const std::string& field : payload) {
        checkReaders(field);
    }
    decodeWith<vekprotocol::VekCommonMaster>(header, payload, bytes, rawOffset);
    decodeWith<vekprotocol::VekGainMaster>(header, payload, bytes, rawOffset);
    decodeWith<vekprotocol::VekReverbMaster>(header, payload, bytes, rawOffset);
    decodeWith<vekprotocol::VekEqMaster>(header, payload, bytes, rawOffset);
    decodeWith<vekprotocol::VekEqV2Master>(header, payload, bytes, rawOffset);
    decodeWith<vekprotocol::VekHfeMaster>(header, payload, bytes, rawOffset);
    decodeWith<vekprotocol::VekVbMaster>(header, payload, bytes, rawOffset);
    decodeWith<vekprotocol::VekSpeakerMaster>(header, payload, bytes, rawOffset);
    return 0;
}
