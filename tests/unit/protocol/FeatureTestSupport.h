#pragma once

// Test support for the feature endpoints: a recorder that implements every callback
// interface, a link with one frame hub per side, and table rows that encode a record
// with a named encoder, compare the exact frame and check what the other side decodes.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "VekCommonMaster.h"
#include "VekCommonSlave.h"
#include "VekEqMaster.h"
#include "VekEqSlave.h"
#include "VekEqV2Master.h"
#include "VekEqV2Slave.h"
#include "VekFrameHub.h"
#include "VekGainMaster.h"
#include "VekGainSlave.h"
#include "VekHfeMaster.h"
#include "VekHfeSlave.h"
#include "VekReverbMaster.h"
#include "VekReverbSlave.h"
#include "VekSpeakerMaster.h"
#include "VekSpeakerSlave.h"
#include "VekVbMaster.h"
#include "VekVbSlave.h"

namespace vektest {

using namespace vekprotocol;

// A record's feature, message, head and fields as exact text, walked through the
// record's own field list. Floats carry nine digits, so equal text is equal value.
class Snapshot {
public:
    template <class Record>
    static std::string of(const char* feature, const Record& record) {
        Record copy = record;
        Snapshot s;
        s.text_ = std::string(feature) + ":" + Record::kMessage +
                  " self=" + std::to_string(copy.self) + " peer=" + std::to_string(copy.peer) +
                  (copy.fail ? " NG" : " OK") + " len=" + std::to_string(copy.rawDataLength) + " {";
        fields(s, copy);
        s.text_ += "}";
        if (copy.rawData != nullptr && copy.rawDataLength > 0) {
            s.text_ += " raw=" + std::string(copy.rawData, static_cast<size_t>(copy.rawDataLength));
        }
        return s.text_;
    }

    template <class T>
    void operator()(const char*, T&& v) {
        (*this)(std::forward<T>(v));
    }
    void operator()(int32_t v) { add(std::to_string(v)); }
    void operator()(uint32_t v) { add(std::to_string(v) + "u"); }
    void operator()(bool v) { add(v ? "true" : "false"); }
    void operator()(const std::string& v) { add("'" + v + "'"); }
    // The record keeps the signed value; only the wire shows it unsigned.
    void operator()(VekAsUnsigned v) { add(std::to_string(v.value)); }
    void operator()(float v) {
        char text[32];
        std::snprintf(text, sizeof(text), "%.9gf", static_cast<double>(v));
        add(text);
    }
    template <class T, size_t N>
    void operator()(T (&items)[N]) {
        list(items, items + N);
    }
    void operator()(std::vector<std::string>& items) { list(items.begin(), items.end()); }

private:
    void add(const std::string& value) {
        const char last = text_.back();
        text_ += (last == '{' || last == '[' ? "" : " ") + value;
    }
    template <class It>
    void list(It begin, It end) {
        Snapshot inner;
        inner.text_ = "[";
        for (It it = begin; it != end; ++it) {
            inner(*it);
        }
        add(inner.text_ + "]");
    }

    std::string text_;
};

// Implements every slave and master callback interface and logs what arrives.
class Recorder : public VekCommonSlaveCallbackItf,
                 public VekCommonMasterCallbackItf,
                 public VekGainSlaveCallbackItf,
                 public VekGainMasterCallbackItf,
                 public VekReverbSlaveCallbackItf,
                 public VekReverbMasterCallbackItf,
                 public VekEqSlaveCallbackItf,
                 public VekEqMasterCallbackItf,
                 public VekEqV2SlaveCallbackItf,
                 public VekEqV2MasterCallbackItf,
                 public VekHfeSlaveCallbackItf,
                 public VekHfeMasterCallbackItf,
                 public VekVbSlaveCallbackItf,
                 public VekVbMasterCallbackItf,
                 public VekSpeakerSlaveCallbackItf,
                 public VekSpeakerMasterCallbackItf {
public:
    // Common
    void onVersionRequest(VekParamCommonVersionRequest& r) override { got("Common", r); }
    void onFeatureRequest(VekParamCommonFeatureRequest& r) override { got("Common", r); }
    void onFileListRequest(VekParamCommonFileListRequest& r) override { got("Common", r); }
    void onFileContentRequest(VekParamCommonFileContentRequest& r) override { got("Common", r); }
    void onGetBypassRequest(VekParamCommonGetBypassRequest& r) override { got("Common", r); }
    void onSetBypassRequest(VekParamCommonSetBypassRequest& r) override { got("Common", r); }
    void onVersionResponse(VekParamCommonVersionResponse& r) override { got("Common", r); }
    void onFeatureResponse(VekParamCommonFeatureResponse& r) override { got("Common", r); }
    void onFileListResponse(VekParamCommonFileListResponse& r) override { got("Common", r); }
    void onFileContentResponse(VekParamCommonFileContentResponse& r) override { got("Common", r); }
    void onGetBypassResponse(VekParamCommonGetBypassResponse& r) override { got("Common", r); }
    void onSetBypassResponse(VekParamCommonSetBypassResponse& r) override { got("Common", r); }
    // Gain
    void onGetMasterRequest(VekParamGainGetMasterRequest& r) override { got("Gain", r); }
    void onSetMasterRequest(VekParamGainSetMasterRequest& r) override { got("Gain", r); }
    void onGetChannelRequest(VekParamGainGetChannelRequest& r) override { got("Gain", r); }
    void onSetChannelRequest(VekParamGainSetChannelRequest& r) override { got("Gain", r); }
    void onGetFadeBalanceRequest(VekParamGainGetFadeBalanceRequest& r) override { got("Gain", r); }
    void onSetFadeBalanceRequest(VekParamGainSetFadeBalanceRequest& r) override { got("Gain", r); }
    void onGetMasterResponse(VekParamGainGetMasterResponse& r) override { got("Gain", r); }
    void onSetMasterResponse(VekParamGainSetMasterResponse& r) override { got("Gain", r); }
    void onGetChannelResponse(VekParamGainGetChannelResponse& r) override { got("Gain", r); }
    void onSetChannelResponse(VekParamGainSetChannelResponse& r) override { got("Gain", r); }
    void onGetFadeBalanceResponse(VekParamGainGetFadeBalanceResponse& r) override {
        got("Gain", r);
    }
    void onSetFadeBalanceResponse(VekParamGainSetFadeBalanceResponse& r) override {
        got("Gain", r);
    }
    // Reverb
    void onGetEnableRequest(VekParamReverbGetEnableRequest& r) override { got("Reverb", r); }
    void onGetModeRequest(VekParamReverbGetModeRequest& r) override { got("Reverb", r); }
    void onSetModeRequest(VekParamReverbSetModeRequest& r) override { got("Reverb", r); }
    void onGetEnableResponse(VekParamReverbGetEnableResponse& r) override { got("Reverb", r); }
    void onGetModeResponse(VekParamReverbGetModeResponse& r) override { got("Reverb", r); }
    void onSetModeResponse(VekParamReverbSetModeResponse& r) override { got("Reverb", r); }
    // Eq
    void onGetEnableRequest(VekParamEqGetEnableRequest& r) override { got("Eq", r); }
    void onSetEnableRequest(VekParamEqSetEnableRequest& r) override { got("Eq", r); }
    void onGetBandCountRequest(VekParamEqGetBandCountRequest& r) override { got("Eq", r); }
    void onGetBandConfigRequest(VekParamEqGetBandConfigRequest& r) override { got("Eq", r); }
    void onSetBandConfigRequest(VekParamEqSetBandConfigRequest& r) override { got("Eq", r); }
    void onGetEnableResponse(VekParamEqGetEnableResponse& r) override { got("Eq", r); }
    void onSetEnableResponse(VekParamEqSetEnableResponse& r) override { got("Eq", r); }
    void onGetBandCountResponse(VekParamEqGetBandCountResponse& r) override { got("Eq", r); }
    void onGetBandConfigResponse(VekParamEqGetBandConfigResponse& r) override { got("Eq", r); }
    void onSetBandConfigResponse(VekParamEqSetBandConfigResponse& r) override { got("Eq", r); }
    // EqV2
    void onGetEnableRequest(VekParamEqV2GetEnableRequest& r) override { got("EqV2", r); }
    void onSetEnableRequest(VekParamEqV2SetEnableRequest& r) override { got("EqV2", r); }
    void onGetBandCountRequest(VekParamEqV2GetBandCountRequest& r) override { got("EqV2", r); }
    void onSetBandCountRequest(VekParamEqV2SetBandCountRequest& r) override { got("EqV2", r); }
    void onGetBandConfigRequest(VekParamEqV2GetBandConfigRequest& r) override { got("EqV2", r); }
    void onSetBandConfigRequest(VekParamEqV2SetBandConfigRequest& r) override { got("EqV2", r); }
    void onGetEnableResponse(VekParamEqV2GetEnableResponse& r) override { got("EqV2", r); }
    void onSetEnableResponse(VekParamEqV2SetEnableResponse& r) override { got("EqV2", r); }
    void onGetBandCountResponse(VekParamEqV2GetBandCountResponse& r) override { got("EqV2", r); }
    void onSetBandCountResponse(VekParamEqV2SetBandCountResponse& r) override { got("EqV2", r); }
    void onGetBandConfigResponse(VekParamEqV2GetBandConfigResponse& r) override { got("EqV2", r); }
    void onSetBandConfigResponse(VekParamEqV2SetBandConfigResponse& r) override { got("EqV2", r); }
    // Hfe
    void onGetEnableRequest(VekParamHfeGetEnableRequest& r) override { got("Hfe", r); }
    void onSetEnableRequest(VekParamHfeSetEnableRequest& r) override { got("Hfe", r); }
    void onGetChannelConfigRequest(VekParamHfeGetChannelConfigRequest& r) override {
        got("Hfe", r);
    }
    void onSetChannelConfigRequest(VekParamHfeSetChannelConfigRequest& r) override {
        got("Hfe", r);
    }
    void onGetEnableResponse(VekParamHfeGetEnableResponse& r) override { got("Hfe", r); }
    void onSetEnableResponse(VekParamHfeSetEnableResponse& r) override { got("Hfe", r); }
    void onGetChannelConfigResponse(VekParamHfeGetChannelConfigResponse& r) override {
        got("Hfe", r);
    }
    void onSetChannelConfigResponse(VekParamHfeSetChannelConfigResponse& r) override {
        got("Hfe", r);
    }
    // Vb
    void onGetEnableRequest(VekParamVbGetEnableRequest& r) override { got("Vb", r); }
    void onSetEnableRequest(VekParamVbSetEnableRequest& r) override { got("Vb", r); }
    void onGetChannelConfigRequest(VekParamVbGetChannelConfigRequest& r) override { got("Vb", r); }
    void onSetChannelConfigRequest(VekParamVbSetChannelConfigRequest& r) override { got("Vb", r); }
    void onGetEnableResponse(VekParamVbGetEnableResponse& r) override { got("Vb", r); }
    void onSetEnableResponse(VekParamVbSetEnableResponse& r) override { got("Vb", r); }
    void onGetChannelConfigResponse(VekParamVbGetChannelConfigResponse& r) override {
        got("Vb", r);
    }
    void onSetChannelConfigResponse(VekParamVbSetChannelConfigResponse& r) override {
        got("Vb", r);
    }
    // Speaker
    void onGetEnableRequest(VekParamSpeakerGetEnableRequest& r) override { got("Speaker", r); }
    void onSetEnableRequest(VekParamSpeakerSetEnableRequest& r) override { got("Speaker", r); }
    void onGetDelayRequest(VekParamSpeakerGetDelayRequest& r) override { got("Speaker", r); }
    void onSetDelayRequest(VekParamSpeakerSetDelayRequest& r) override { got("Speaker", r); }
    void onSetStylePatternRequest(VekParamSpeakerSetStylePatternRequest& r) override {
        got("Speaker", r);
    }
    void onSetSinePatternRequest(VekParamSpeakerSetSinePatternRequest& r) override {
        got("Speaker", r);
    }
    void onGetEnableResponse(VekParamSpeakerGetEnableResponse& r) override { got("Speaker", r); }
    void onSetEnableResponse(VekParamSpeakerSetEnableResponse& r) override { got("Speaker", r); }
    void onGetDelayResponse(VekParamSpeakerGetDelayResponse& r) override { got("Speaker", r); }
    void onSetDelayResponse(VekParamSpeakerSetDelayResponse& r) override { got("Speaker", r); }
    void onSetStylePatternResponse(VekParamSpeakerSetStylePatternResponse& r) override {
        got("Speaker", r);
    }
    void onSetSinePatternResponse(VekParamSpeakerSetSinePatternResponse& r) override {
        got("Speaker", r);
    }

    std::vector<std::string> arrivals;

private:
    template <class Record>
    void got(const char* feature, Record& r) {
        arrivals.push_back(Snapshot::of(feature, r));
    }
};

// The two ends of a link: every slave endpoint behind one hub, every master endpoint
// behind another, all calling the one recorder. The slave hub logs at level 4.
class FeatureLink : public VekLogCallbackItf {
public:
    FeatureLink()
        : slaveHub(std::make_unique<VekFrameHub>(&commonSlave, this)),
          masterHub(std::make_unique<VekFrameHub>(&commonMaster, nullptr)) {
        level = 4;
        commonSlave.setCallback(&recorder);
        commonMaster.setCallback(&recorder);
        gainSlave.setCallback(&recorder);
        gainMaster.setCallback(&recorder);
        reverbSlave.setCallback(&recorder);
        reverbMaster.setCallback(&recorder);
        eqSlave.setCallback(&recorder);
        eqMaster.setCallback(&recorder);
        eqV2Slave.setCallback(&recorder);
        eqV2Master.setCallback(&recorder);
        hfeSlave.setCallback(&recorder);
        hfeMaster.setCallback(&recorder);
        vbSlave.setCallback(&recorder);
        vbMaster.setCallback(&recorder);
        speakerSlave.setCallback(&recorder);
        speakerMaster.setCallback(&recorder);
        slaveHub->registerEndpoint("Gain", &gainSlave);
        masterHub->registerEndpoint("Gain", &gainMaster);
        slaveHub->registerEndpoint("Reverb", &reverbSlave);
        masterHub->registerEndpoint("Reverb", &reverbMaster);
        slaveHub->registerEndpoint("Eq", &eqSlave);
        masterHub->registerEndpoint("Eq", &eqMaster);
        slaveHub->registerEndpoint("EqV2", &eqV2Slave);
        masterHub->registerEndpoint("EqV2", &eqV2Master);
        slaveHub->registerEndpoint("Hfe", &hfeSlave);
        masterHub->registerEndpoint("Hfe", &hfeMaster);
        slaveHub->registerEndpoint("Vb", &vbSlave);
        masterHub->registerEndpoint("Vb", &vbMaster);
        slaveHub->registerEndpoint("Speaker", &speakerSlave);
        masterHub->registerEndpoint("Speaker", &speakerMaster);
    }

    // Feeds bytes to one side; returns what arrived there since the last call.
    std::vector<std::string> toSlave(const std::string& bytes) { return feed(*slaveHub, bytes); }
    std::vector<std::string> toMaster(const std::string& bytes) { return feed(*masterHub, bytes); }

    void onLog(const char* text) override { slaveLog += text; }

    Recorder recorder;
    VekCommonSlave commonSlave;
    VekCommonMaster commonMaster;
    VekGainSlave gainSlave;
    VekGainMaster gainMaster;
    VekReverbSlave reverbSlave;
    VekReverbMaster reverbMaster;
    VekEqSlave eqSlave;
    VekEqMaster eqMaster;
    VekEqV2Slave eqV2Slave;
    VekEqV2Master eqV2Master;
    VekHfeSlave hfeSlave;
    VekHfeMaster hfeMaster;
    VekVbSlave vbSlave;
    VekVbMaster vbMaster;
    VekSpeakerSlave speakerSlave;
    VekSpeakerMaster speakerMaster;
    std::unique_ptr<VekFrameHub> slaveHub;
    std::unique_ptr<VekFrameHub> masterHub;
    std::string slaveLog;

private:
    std::vector<std::string> feed(VekFrameHub& hub, const std::string& bytes) {
        hub.feed(bytes.data(), static_cast<uint32_t>(bytes.size()));
        std::vector<std::string> got;
        got.swap(recorder.arrivals);
        return got;
    }
};

// Fills an array member from a list of exactly its size (T is taken from the array).
template <class T, size_t N>
void set(T (&items)[N], std::initializer_list<std::common_type_t<T>> values) {
    ASSERT_EQ(values.size(), N);
    size_t i = 0;
    for (const T& v : values) {
        items[i++] = v;
    }
}

// What the recorder logs when exactly the record that fill builds arrives.
template <class Record, class Fill>
std::vector<std::string> arrives(const char* feature, uint32_t self, Fill fill) {
    Record record;
    record.self = self;
    fill(record);
    return {Snapshot::of(feature, record)};
}

template <class Record>
std::vector<std::string> arrives(const char* feature, uint32_t self) {
    return arrives<Record>(feature, self, [](Record&) {});
}

// One message of a table: encoded by the named encoder of its side, expected as the
// exact frame, expected to arrive at the other side as it was sent, and to be ignored
// by its own side (a response name sent to the slave, a request name to the master).
struct Row {
    std::string message;
    bool request;
    std::string encoded;
    std::string sent;
    std::string frame;
};

template <class Endpoint, class Record, class Fill>
Row row(void (Endpoint::*encoder)(std::stringstream&, const Record&), uint32_t self,
        std::string frame, Fill fill) {
    Record record;
    record.self = self;
    fill(record);
    Endpoint endpoint;
    std::stringstream out("stale content");
    (endpoint.*encoder)(out, record);
    const std::string message = Record::kMessage;
    const bool request =
        message.size() > 7 && message.compare(message.size() - 7, 7, "Request") == 0;
    return {message, request, out.str(), Snapshot::of(Endpoint::kFeature, record),
            std::move(frame)};
}

// A record left at its zero values, only self set.
template <class Endpoint, class Record>
Row row(void (Endpoint::*encoder)(std::stringstream&, const Record&), uint32_t self,
        std::string frame) {
    return row(encoder, self, std::move(frame), [](Record&) {});
}

// messageCount: how many messages the feature has (requests and responses), each of
// which needs at least one row.
inline void expectRows(const std::vector<Row>& rows, size_t messageCount) {
    std::set<std::string> messages;
    for (const Row& r : rows) {
        messages.insert(r.message);
    }
    EXPECT_EQ(messages.size(), messageCount) << "every message of the feature needs a row";
    FeatureLink link;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.frame);
        EXPECT_EQ(r.encoded, r.frame) << r.message;
        const std::vector<std::string> sent{r.sent};
        EXPECT_EQ(r.request ? link.toSlave(r.frame) : link.toMaster(r.frame), sent);
        EXPECT_TRUE((r.request ? link.toMaster(r.frame) : link.toSlave(r.frame)).empty())
            << "the other direction's message name must be ignored";
    }
}

// Two frames that differ in one detail: the first arrives, the second is dropped.
struct Variant {
    std::string good;
    std::string bad;
};

inline void expectDropped(const std::vector<Variant>& variants) {
    FeatureLink link;
    for (const Variant& v : variants) {
        EXPECT_EQ(link.toSlave(v.good).size(), 1u) << v.good;
        EXPECT_TRUE(link.toSlave(v.bad).empty()) << v.bad;
    }
}

}  // namespace vektest
