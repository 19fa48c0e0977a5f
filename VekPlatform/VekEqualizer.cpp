#include "VekEqualizer.h"

#include <memory>
#include <new>

#include "ChannelTable.h"
#include "VekFrontEffect.h"
#include "VekLe.h"
#include "VekLibrary.h"
#include "VekParamBuffer.h"

namespace vekserver {

using namespace vekprotocol;

namespace {

// EqLayoutParam: one entry per channel, in channel-table order.
struct EqLayoutParam {
    static constexpr uint16_t kParamId = 0;
    static constexpr uint16_t kSize = 1008;
    static constexpr uint32_t kEntrySize = 168;
    // Within an entry; the 160 bytes after bandCount are reserved and stay zero.
    static constexpr uint32_t kChannelMask = 0;
    static constexpr uint32_t kBandCount = 4;
};

// EqBandParam: one channel, band entries of which this service fills the first.
struct EqBandParam {
    static constexpr uint16_t kParamId = 1;
    static constexpr uint16_t kSize = 1128;
    static constexpr uint32_t kChannelMask = 0;
    static constexpr uint32_t kEntryCount = 4;
    static constexpr uint32_t kFirstEntry = 8;
    static constexpr uint32_t kEntrySize = 28;
    // Within a band entry; value2 is 16 bits wide, followed by 2 reserved bytes.
    static constexpr uint32_t kBand = 0;
    static constexpr uint32_t kValue1 = 4;
    static constexpr uint32_t kValue2 = 8;
    static constexpr uint32_t kValue3 = 12;
    static constexpr uint32_t kValue4 = 16;
    static constexpr uint32_t kValue5 = 20;
    static constexpr uint32_t kValue6 = 24;
};

// A zero-filled heap buffer for one call. Allocation failure ends the process.
std::unique_ptr<uint8_t[]> allocate(uint32_t size, const VekAssert& site) {
    std::unique_ptr<uint8_t[]> paramBuffer(new (std::nothrow) uint8_t[size]);
    site.check(paramBuffer != nullptr, "paramBuffer");
    return paramBuffer;
}

void appendLayout(VekParamBuffer& buffer, const int32_t (&bandCount)[ChannelTable::kCount]) {
    uint8_t* body = buffer.append(EqLayoutParam::kParamId, EqLayoutParam::kSize);
    for (uint32_t i = 0; i < ChannelTable::kCount; ++i) {
        uint8_t* entry = body + i * EqLayoutParam::kEntrySize;
        VekLe::putU32(entry + EqLayoutParam::kChannelMask, ChannelTable::at(i).mask);
        VekLe::putI32(entry + EqLayoutParam::kBandCount, bandCount[i]);
    }
}

// The band entry is filled from the request's band and the values that config holds.
void appendBand(VekParamBuffer& buffer, const VekEqBand& band, const VekEqBandConfig& config) {
    uint8_t* body = buffer.append(EqBandParam::kParamId, EqBandParam::kSize);
    VekLe::putU32(body + EqBandParam::kChannelMask, channelMask(band.channel));
    VekLe::putU32(body + EqBandParam::kEntryCount, 1);
    uint8_t* entry = body + EqBandParam::kFirstEntry;
    VekLe::putU32(entry + EqBandParam::kBand, band.band);
    VekLe::putI32(entry + EqBandParam::kValue1, config.value1);
    VekLe::putU16(entry + EqBandParam::kValue2, static_cast<uint16_t>(config.value2));
    VekLe::putF32(entry + EqBandParam::kValue3, config.value3);
    VekLe::putF32(entry + EqBandParam::kValue4, config.value4);
    VekLe::putI32(entry + EqBandParam::kValue5, config.value5);
    VekLe::putI32(entry + EqBandParam::kValue6, config.value6);
}

}  // namespace

void VekEqualizer::packGetEnable(VekFrameHub* hub, VekEqEnable& response) {
    VekFrontEffect::packGetEnable(hub, kEffect, "get front EQ enable state", response);
}

void VekEqualizer::packSetEnable(VekFrameHub* hub, const VekEqEnable& request,
                                 VekRecordHead& response) {
    VekFrontEffect::packSetEnable(hub, kEffect, "set front EQ enable state", request.enable,
                                  response);
}

void VekEqualizer::packGetBandCount(VekFrameHub* hub, const VekAssert& site,
                                    VekEqBandCount& response) {
    VekLibrary::begin(response, hub);
    const auto storage = allocate(kLayoutBufferSize, site);
    VekParamBuffer buffer(storage.get(), kLayoutBufferSize);
    const int32_t noCounts[ChannelTable::kCount] = {};
    appendLayout(buffer, noCounts);
    const int32_t status = VekFrontEffect::getParam(kEffect, buffer);
    VekLibrary::finish(response, "get front EQ channel layout", status);
    if (status != 0) {
        return;
    }
    uint8_t layout[EqLayoutParam::kSize] = {};
    VekFrontEffect::readBack(buffer, layout, sizeof(layout));
    for (uint32_t i = 0; i < ChannelTable::kCount; ++i) {
        response.bandCount[i] =
            VekLe::getI32(layout + i * EqLayoutParam::kEntrySize + EqLayoutParam::kBandCount);
    }
}

void VekEqualizer::packSetBandCount(VekFrameHub* hub, const VekAssert& site,
                                    const VekEqBandCount& request, VekRecordHead& response) {
    VekLibrary::begin(response, hub);
    const auto storage = allocate(kLayoutBufferSize, site);
    VekParamBuffer buffer(storage.get(), kLayoutBufferSize);
    appendLayout(buffer, request.bandCount);
    VekLibrary::finish(response, "set front EQ channel layout",
                       VekFrontEffect::setParam(kEffect, buffer));
}

void VekEqualizer::packGetBandConfig(VekFrameHub* hub, const VekAssert& site,
                                     const VekEqBand& request, VekEqBandConfig& response) {
    VekLibrary::begin(response, hub);
    const auto storage = allocate(kBandBufferSize, site);
    VekParamBuffer buffer(storage.get(), kBandBufferSize);
    appendBand(buffer, request, VekEqBandConfig{});
    const int32_t status = VekFrontEffect::getParam(kEffect, buffer);
    VekLibrary::finish(response, "get front EQ channel band config", status);
    // Only the head and the first band entry of each record are looked at.
    uint8_t band[EqBandParam::kFirstEntry + EqBandParam::kEntrySize] = {};
    if (status != 0 || VekFrontEffect::readBack(buffer, band, sizeof(band)) == 0) {
        return;
    }
    // Channel and band repeat the request, whatever the record says.
    response.channel = request.channel;
    response.band = request.band;
    const uint8_t* entry = band + EqBandParam::kFirstEntry;
    response.value1 = VekLe::getI32(entry + EqBandParam::kValue1);
    response.value2 = VekLe::getU16(entry + EqBandParam::kValue2);
    response.value3 = VekLe::getF32(entry + EqBandParam::kValue3);
    response.value4 = VekLe::getF32(entry + EqBandParam::kValue4);
    response.value5 = VekLe::getI32(entry + EqBandParam::kValue5);
    response.value6 = VekLe::getI32(entry + EqBandParam::kValue6);
}

void VekEqualizer::packSetBandConfig(VekFrameHub* hub, const VekAssert& site,
                                     const VekEqBandConfig& request, VekRecordHead& response) {
    VekLibrary::begin(response, hub);
    const auto storage = allocate(kBandBufferSize, site);
    VekParamBuffer buffer(storage.get(), kBandBufferSize);
    appendBand(buffer, request, request);
    VekLibrary::finish(response, "set front EQ band config",
                       VekFrontEffect::setParam(kEffect, buffer));
}

}  // namespace vekserver
