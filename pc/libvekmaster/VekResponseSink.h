#pragma once

#include <string>
#include <utility>

#include "VekCommonMasterCallbackItf.h"
#include "VekEqMasterCallbackItf.h"
#include "VekEqV2MasterCallbackItf.h"
#include "VekFieldPrinter.h"
#include "VekFieldSignature.h"
#include "VekGainMasterCallbackItf.h"
#include "VekHfeMasterCallbackItf.h"
#include "VekMasterReply.h"
#include "VekReverbMasterCallbackItf.h"
#include "VekSpeakerMasterCallbackItf.h"
#include "VekVbMasterCallbackItf.h"

namespace vekmaster {

// The master callback of every feature at once; one instance serves one feature's
// endpoint, so an answer is matched by feature as well as by message name. Every slot
// hands its record to the same capture.
class VekResponseSink : public vekprotocol::VekCommonMasterCallbackItf,
                        public vekprotocol::VekGainMasterCallbackItf,
                        public vekprotocol::VekReverbMasterCallbackItf,
                        public vekprotocol::VekEqMasterCallbackItf,
                        public vekprotocol::VekEqV2MasterCallbackItf,
                        public vekprotocol::VekHfeMasterCallbackItf,
                        public vekprotocol::VekVbMasterCallbackItf,
                        public vekprotocol::VekSpeakerMasterCallbackItf {
public:
    VekResponseSink(std::string feature, VekMasterReply& reply)
        : feature_(std::move(feature)), reply_(reply) {}

    void onVersionResponse(vekprotocol::VekParamCommonVersionResponse& r) override { take(r); }
    void onFeatureResponse(vekprotocol::VekParamCommonFeatureResponse& r) override { take(r); }
    void onFileListResponse(vekprotocol::VekParamCommonFileListResponse& r) override { take(r); }
    void onFileContentResponse(vekprotocol::VekParamCommonFileContentResponse& r) override {
        take(r);
    }
    void onGetBypassResponse(vekprotocol::VekParamCommonGetBypassResponse& r) override { take(r); }
    void onSetBypassResponse(vekprotocol::VekParamCommonSetBypassResponse& r) override { take(r); }

    void onGetMasterResponse(vekprotocol::VekParamGainGetMasterResponse& r) override { take(r); }
    void onSetMasterResponse(vekprotocol::VekParamGainSetMasterResponse& r) override { take(r); }
    void onGetChannelResponse(vekprotocol::VekParamGainGetChannelResponse& r) override { take(r); }
    void onSetChannelResponse(vekprotocol::VekParamGainSetChannelResponse& r) override { take(r); }
    void onGetFadeBalanceResponse(vekprotocol::VekParamGainGetFadeBalanceResponse& r) override {
        take(r);
    }
    void onSetFadeBalanceResponse(vekprotocol::VekParamGainSetFadeBalanceResponse& r) override {
        take(r);
    }

    void onGetEnableResponse(vekprotocol::VekParamReverbGetEnableResponse& r) override { take(r); }
    void onGetModeResponse(vekprotocol::VekParamReverbGetModeResponse& r) override { take(r); }
    void onSetModeResponse(vekprotocol::VekParamReverbSetModeResponse& r) override { take(r); }

    void onGetEnableResponse(vekprotocol::VekParamEqGetEnableResponse& r) override { take(r); }
    void onSetEnableResponse(vekprotocol::VekParamEqSetEnableResponse& r) override { take(r); }
    void onGetBandCountResponse(vekprotocol::VekParamEqGetBandCountResponse& r) override {
        take(r);
    }
    void onGetBandConfigResponse(vekprotocol::VekParamEqGetBandConfigResponse& r) override {
        take(r);
    }
    void onSetBandConfigResponse(vekprotocol::VekParamEqSetBandConfigResponse& r) override {
        take(r);
    }

    void onGetEnableResponse(vekprotocol::VekParamEqV2GetEnableResponse& r) override { take(r); }
    void onSetEnableResponse(vekprotocol::VekParamEqV2SetEnableResponse& r) override { take(r); }
    void onGetBandCountResponse(vekprotocol::VekParamEqV2GetBandCountResponse& r) override {
        take(r);
    }
    void onSetBandCountResponse(vekprotocol::VekParamEqV2SetBandCountResponse& r) override {
        take(r);
    }
    void onGetBandConfigResponse(vekprotocol::VekParamEqV2GetBandConfigResponse& r) override {
        take(r);
    }
    void onSetBandConfigResponse(vekprotocol::VekParamEqV2SetBandConfigResponse& r) override {
        take(r);
    }

    void onGetEnableResponse(vekprotocol::VekParamHfeGetEnableResponse& r) override { take(r); }
    void onSetEnableResponse(vekprotocol::VekParamHfeSetEnableResponse& r) override { take(r); }
    void onGetChannelConfigResponse(vekprotocol::VekParamHfeGetChannelConfigResponse& r) override {
        take(r);
    }
    void onSetChannelConfigResponse(vekprotocol::VekParamHfeSetChannelConfigResponse& r) override {
        take(r);
    }

    void onGetEnableResponse(vekprotocol::VekParamVbGetEnableResponse& r) override { take(r); }
    void onSetEnableResponse(vekprotocol::VekParamVbSetEnableResponse& r) override { take(r); }
    void onGetChannelConfigResponse(vekprotocol::VekParamVbGetChannelConfigResponse& r) override {
        take(r);
    }
    void onSetChannelConfigResponse(vekprotocol::VekParamVbSetChannelConfigResponse& r) override {
        take(r);
    }

    void onGetEnableResponse(vekprotocol::VekParamSpeakerGetEnableResponse& r) override { take(r); }
    void onSetEnableResponse(vekprotocol::VekParamSpeakerSetEnableResponse& r) override { take(r); }
    void onGetDelayResponse(vekprotocol::VekParamSpeakerGetDelayResponse& r) override { take(r); }
    void onSetDelayResponse(vekprotocol::VekParamSpeakerSetDelayResponse& r) override { take(r); }
    void onSetStylePatternResponse(
        vekprotocol::VekParamSpeakerSetStylePatternResponse& r) override {
        take(r);
    }
    void onSetSinePatternResponse(vekprotocol::VekParamSpeakerSetSinePatternResponse& r) override {
        take(r);
    }

    // While set, an answer only has its field list noted into signature, and nothing is
    // kept: the catalogue learns each response's fields from the endpoint's own decoding.
    void probe(VekFieldSignature* signature) { probe_ = signature; }

private:
    // Only the awaited answer is kept: a late answer to an earlier command that timed
    // out must not pass for this one.
    template <class Record>
    void take(Record& record) {
        if (probe_ != nullptr) {
            fields(*probe_, record);
            return;
        }
        if (reply_.received || reply_.feature != feature_ || reply_.message != Record::kMessage) {
            return;
        }
        reply_.received = true;
        reply_.self = record.self;
        reply_.fail = record.fail;
        reply_.rawDataLength = record.rawDataLength;
        // The record's raw data lives only as long as this call.
        if (record.rawData != nullptr && record.rawDataLength > 0) {
            reply_.rawData.assign(record.rawData, static_cast<size_t>(record.rawDataLength));
        }
        VekFieldPrinter printer;
        fields(printer, record);
        reply_.fields = printer.take();
    }

    std::string feature_;
    VekMasterReply& reply_;
    VekFieldSignature* probe_ = nullptr;
};

}  // namespace vekmaster
