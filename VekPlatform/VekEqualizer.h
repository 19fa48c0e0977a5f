#pragma once

#include <cstdint>

#include "VekAssert.h"
#include "VekEqV2Params.h"
#include "VekFrameHub.h"

namespace vekserver {

// What the Eq and EqV2 adapters share: the "equalizer" effect of the front
// application, its channel layout and band records, and the heap buffers that carry
// them. Both features' records derive from the same bodies (VekEqV2Params.h), which
// have every field, so these operations take the bodies. A buffer that cannot be
// allocated is reported against site, the adapter operation that asked.
class VekEqualizer {
public:
    static constexpr const char* kEffect = "equalizer";
    // Header, one 1008-byte layout record and 20 spare bytes.
    static constexpr uint32_t kLayoutBufferSize = 1036;
    // Header and room for six band records.
    static constexpr uint32_t kBandBufferSize = 6796;

    static void packGetEnable(vekprotocol::VekFrameHub* hub, vekprotocol::VekEqEnable& response);
    static void packSetEnable(vekprotocol::VekFrameHub* hub,
                              const vekprotocol::VekEqEnable& request,
                              vekprotocol::VekRecordHead& response);
    static void packGetBandCount(vekprotocol::VekFrameHub* hub, const VekAssert& site,
                                 vekprotocol::VekEqBandCount& response);
    static void packSetBandCount(vekprotocol::VekFrameHub* hub, const VekAssert& site,
                                 const vekprotocol::VekEqBandCount& request,
                                 vekprotocol::VekRecordHead& response);
    static void packGetBandConfig(vekprotocol::VekFrameHub* hub, const VekAssert& site,
                                  const vekprotocol::VekEqBand& request,
                                  vekprotocol::VekEqBandConfig& response);
    static void packSetBandConfig(vekprotocol::VekFrameHub* hub, const VekAssert& site,
                                  const vekprotocol::VekEqBandConfig& request,
                                  vekprotocol::VekRecordHead& response);
};

}  // namespace vekserver
