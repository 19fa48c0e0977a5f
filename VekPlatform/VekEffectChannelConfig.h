#pragma once

#include <cstdint>
#include <string>

#include "ChannelTable.h"
#include "VekFrameHub.h"
#include "VekFrontEffect.h"
#include "VekLe.h"
#include "VekLibrary.h"
#include "VekParamBuffer.h"

namespace vekserver {

// What the Hfe and Vb adapters share: one channel's configuration of an effect
// travels as the single record (paramId 0) of a fixed local parameter buffer.
// Record gives the layout: kBufferSize, kSize, kChannelMask (offset of the mask),
// write(record, config) for everything but the mask, read(record, config).
template <class Record>
class VekEffectChannelConfig {
public:
    static constexpr uint16_t kParamId = 0;
    static_assert(VekParamBuffer::kHeadSize + VekParamBuffer::kRecordHeadSize + Record::kSize <=
                      Record::kBufferSize,
                  "the record must fit its buffer");

    // The response names the channel as the request did, not as the record's mask
    // would; an unknown name reads the configuration of "LF".
    template <class Response>
    static void packGet(vekprotocol::VekFrameHub* hub, const char* effect, const char* action,
                        const std::string& channel, Response& response) {
        VekLibrary::begin(response, hub);
        uint8_t storage[Record::kBufferSize];
        VekParamBuffer buffer(storage, Record::kBufferSize);
        uint8_t* query = buffer.append(kParamId, Record::kSize);
        VekLe::putU32(query + Record::kChannelMask, channelMask(channel));
        const int32_t status = VekFrontEffect::getParam(effect, buffer);
        VekLibrary::finish(response, action, status);
        if (status != 0) {
            return;
        }
        uint8_t record[Record::kSize] = {};
        VekFrontEffect::readBack(buffer, record, Record::kSize);
        response.channel = channel;
        Record::read(record, response);
    }

    template <class Request, class Response>
    static void packSet(vekprotocol::VekFrameHub* hub, const char* effect, const char* action,
                        const Request& request, Response& response) {
        VekLibrary::begin(response, hub);
        uint8_t storage[Record::kBufferSize];
        VekParamBuffer buffer(storage, Record::kBufferSize);
        uint8_t* record = buffer.append(kParamId, Record::kSize);
        VekLe::putU32(record + Record::kChannelMask, channelMask(request.channel));
        Record::write(record, request);
        VekLibrary::finish(response, action, VekFrontEffect::setParam(effect, buffer));
    }
};

}  // namespace vekserver
