#pragma once

#include <sstream>

#include "VekCodec.h"
#include "VekEndpoint.h"
#include "VekGainMasterCallbackItf.h"

namespace vekprotocol {

// Tuning-tool side of Gain: encodes requests, decodes responses.
class VekGainMaster : public VekEndpoint<VekGainMasterCallbackItf> {
public:
    static constexpr const char* kFeature = "Gain";

    void decode(const VekFields& headerFields, const VekFields& payloadFields,
                std::stringstream& frame, uint32_t rawOffset) override;

    void encodeGetMasterRequest(std::stringstream& out, const VekParamGainGetMasterRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetMasterRequest(std::stringstream& out, const VekParamGainSetMasterRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetChannelRequest(std::stringstream& out, const VekParamGainGetChannelRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetChannelRequest(std::stringstream& out, const VekParamGainSetChannelRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeGetFadeBalanceRequest(std::stringstream& out,
                                     const VekParamGainGetFadeBalanceRequest& r) {
        vekEncode(out, kFeature, r);
    }
    void encodeSetFadeBalanceRequest(std::stringstream& out,
                                     const VekParamGainSetFadeBalanceRequest& r) {
        vekEncode(out, kFeature, r);
    }
};

}  // namespace vekprotocol
