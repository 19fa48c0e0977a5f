#pragma once

#include <cstdint>
#include <sstream>
#include <string>

#include "VekFieldReader.h"
#include "VekRecordHead.h"
#include "VekSerDes.h"
#include "VekText.h"

namespace vekprotocol {

// Decodes one frame for an endpoint: the endpoint offers each of its messages in
// order with route(); the first whose name equals header field 3 is decoded and
// handed to its callback slot. A record whose fields are missing or unreadable is
// dropped: no callback is called.
class VekDecoder {
public:
    VekDecoder(const VekFields& headerFields, const VekFields& payloadFields,
               std::stringstream& frame, uint32_t rawOffset)
        : header_(headerFields), payload_(payloadFields), frame_(frame), rawOffset_(rawOffset) {
        done_ = header_.size() < 6;
    }

    // Returns true once a message has matched, so that routes chain with ||.
    template <class Itf, class Record>
    bool route(Itf* callback, void (Itf::*slot)(Record&)) {
        if (done_ || header_[3] != Record::kMessage) {
            return done_;
        }
        done_ = true;
        Record record;
        if (!fillHead(record)) {
            return true;
        }
        VekFieldReader reader(payload_);
        fields(reader, record);
        if (reader.ok() && callback != nullptr) {
            (callback->*slot)(record);
        }
        return true;
    }

private:
    bool fillHead(VekRecordHead& head) {
        head.self = static_cast<uint32_t>(VekText::readLenient(header_[0]));
        head.peer = static_cast<uint32_t>(VekText::readLenient(header_[1]));
        head.rawDataLength = VekText::readLenient(header_[4]);
        head.fail = header_[5] != "OK";
        head.rawData = nullptr;
        if (head.rawDataLength < 1) {
            return true;
        }
        // The raw data is a copy of the frame's tail that lives as long as this decoder.
        bytes_ = frame_.str();
        if (rawOffset_ > bytes_.size() ||
            bytes_.size() - rawOffset_ < static_cast<uint32_t>(head.rawDataLength)) {
            return false;  // the frame does not hold the bytes its header announces
        }
        head.rawData = bytes_.data() + rawOffset_;
        return true;
    }

    const VekFields& header_;
    const VekFields& payload_;
    std::stringstream& frame_;
    uint32_t rawOffset_;
    std::string bytes_;
    bool done_ = false;
};

}  // namespace vekprotocol
