#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekGainSlaveCallbackItf.h"

namespace vekprotocol {

// Device side of Gain: decodes requests, encodes responses.
class VekGainSlave : public VekEndpoint<VekGainSlaveCallbackItf> {
public:
    static constexpr const char* kFeature = "Gain";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetMasterResponse(std::stringstream& out, const VekParamGainGetMasterResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetMasterResponse(std::stringstream& out, const VekParamGainSetMasterResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetChannelResponse(std::stringstream& out, const VekParamGainGetChannelResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetChannelResponse(std::stringstream& out, const VekParamGainSetChannelResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetFadeBalanceResponse(std::stringstream& out,
                                      const VekParamGainGetFadeBalanceResponse& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetFadeBalanceResponse(std::stringstream& out,
                                      const VekParamGainSetFadeBalanceResponse& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
