// Every message of every feature both ways: encoded by the named encoder of its side,
// compared with the exact frame, and decoded whole by the other side.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
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

using namespace vekprotocol;

namespace {

// The slave's request callback and the master's response callback of one operation.
#define VEK_RECORD_BOTH(Feature, Operation)                                            \
    void on##Operation##Request(VekParam##Feature##Operation##Request& r) override {   \
        got(#Feature, r);                                                              \
    }                                                                                  \
    void on##Operation##Response(VekParam##Feature##Operation##Response& r) override { \
        got(#Feature, r);                                                              \
    }                                                                                  \
    static_assert(true, "")

// Implements every callback interface of both sides and keeps each record that arrives
// written back as its frame: a record that encodes to the frame it came from was
// decoded whole, raw data included.
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
    VEK_RECORD_BOTH(Common, Version);
    VEK_RECORD_BOTH(Common, Feature);
    VEK_RECORD_BOTH(Common, FileList);
    VEK_RECORD_BOTH(Common, FileContent);
    VEK_RECORD_BOTH(Common, GetBypass);
    VEK_RECORD_BOTH(Common, SetBypass);
    VEK_RECORD_BOTH(Gain, GetMaster);
    VEK_RECORD_BOTH(Gain, SetMaster);
    VEK_RECORD_BOTH(Gain, GetChannel);
    VEK_RECORD_BOTH(Gain, SetChannel);
    VEK_RECORD_BOTH(Gain, GetFadeBalance);
    VEK_RECORD_BOTH(Gain, SetFadeBalance);
    VEK_RECORD_BOTH(Reverb, GetEnable);
    VEK_RECORD_BOTH(Reverb, GetMode);
    VEK_RECORD_BOTH(Reverb, SetMode);
    VEK_RECORD_BOTH(Eq, GetEnable);
    VEK_RECORD_BOTH(Eq, SetEnable);
    VEK_RECORD_BOTH(Eq, GetBandCount);
    VEK_RECORD_BOTH(Eq, GetBandConfig);
    VEK_RECORD_BOTH(Eq, SetBandConfig);
    VEK_RECORD_BOTH(EqV2, GetEnable);
    VEK_RECORD_BOTH(EqV2, SetEnable);
    VEK_RECORD_BOTH(EqV2, GetBandCount);
    VEK_RECORD_BOTH(EqV2, SetBandCount);
    VEK_RECORD_BOTH(EqV2, GetBandConfig);
    VEK_RECORD_BOTH(EqV2, SetBandConfig);
    VEK_RECORD_BOTH(Hfe, GetEnable);
    VEK_RECORD_BOTH(Hfe, SetEnable);
    VEK_RECORD_BOTH(Hfe, GetChannelConfig);
    VEK_RECORD_BOTH(Hfe, SetChannelConfig);
    VEK_RECORD_BOTH(Vb, GetEnable);
    VEK_RECORD_BOTH(Vb, SetEnable);
    VEK_RECORD_BOTH(Vb, GetChannelConfig);
    VEK_RECORD_BOTH(Vb, SetChannelConfig);
    VEK_RECORD_BOTH(Speaker, GetEnable);
    VEK_RECORD_BOTH(Speaker, SetEnable);
    VEK_RECORD_BOTH(Speaker, GetDelay);
    VEK_RECORD_BOTH(Speaker, SetDelay);
    VEK_RECORD_BOTH(Speaker, SetStylePattern);
    VEK_RECORD_BOTH(Speaker, SetSinePattern);

    std::vector<std::string> arrivals;

private:
    template <class Record>
    void got(const char* feature, Record& r) {
        std::stringstream frame;
        vekEncode(frame, feature, r);
        arrivals.push_back(frame.str());
    }
};

#undef VEK_RECORD_BOTH

// The two ends of a link: every slave endpoint behind one hub, every master endpoint
// behind another, all calling the one recorder. The slave hub logs at level 4.
class FeatureLink : public VekLogCallbackItf {
public:
    FeatureLink() {
        level = 4;
        std::apply([this](auto&... e) { (bind(*slaveHub_, e), ...); }, slaves_);
        std::apply([this](auto&... e) { (bind(*masterHub_, e), ...); }, masters_);
    }

    // Feeds bytes to one side; returns what arrived there since the last call.
    std::vector<std::string> toSlave(const std::string& bytes) { return feed(*slaveHub_, bytes); }
    std::vector<std::string> toMaster(const std::string& bytes) { return feed(*masterHub_, bytes); }

    void onLog(const char* text) override { slaveLog += text; }

    std::string slaveLog;

private:
    template <class Endpoint>
    void bind(VekFrameHub& hub, Endpoint& endpoint) {
        endpoint.setCallback(&recorder_);
        hub.registerEndpoint(Endpoint::kFeature, &endpoint);
    }
    std::vector<std::string> feed(VekFrameHub& hub, const std::string& bytes) {
        hub.feed(bytes.data(), static_cast<uint32_t>(bytes.size()));
        std::vector<std::string> got;
        got.swap(recorder_.arrivals);
        return got;
    }

    Recorder recorder_;
    std::tuple<VekCommonSlave, VekGainSlave, VekReverbSlave, VekEqSlave, VekEqV2Slave, VekHfeSlave,
               VekVbSlave, VekSpeakerSlave>
        slaves_;
    std::tuple<VekCommonMaster, VekGainMaster, VekReverbMaster, VekEqMaster, VekEqV2Master,
               VekHfeMaster, VekVbMaster, VekSpeakerMaster>
        masters_;
    std::unique_ptr<VekFrameHub> slaveHub_ =
        std::make_unique<VekFrameHub>(&std::get<VekCommonSlave>(slaves_), this);
    std::unique_ptr<VekFrameHub> masterHub_ =
        std::make_unique<VekFrameHub>(&std::get<VekCommonMaster>(masters_), nullptr);
};

// Fills an array member with exactly as many values as it holds.
template <class T, size_t N, class... V>
void set(T (&items)[N], V... values) {
    static_assert(sizeof...(V) == N, "one value per element");
    size_t i = 0;
    ((items[i++] = static_cast<T>(values)), ...);
}

// Sets the band config body that the Eq and EqV2 records share, member by member.
void bandConfig(VekEqBandConfig& r, const char* channel, uint32_t band, int32_t value1,
                int32_t value2, float value3, float value4, int32_t value5, int32_t value6) {
    r.channel = channel;
    r.band = band;
    r.value1 = value1;
    r.value2 = value2;
    r.value3 = value3;
    r.value4 = value4;
    r.value5 = value5;
    r.value6 = value6;
}

// One message of a table: what the named encoder of its side wrote for the record, and
// the frame expected.
struct Row {
    std::string message;
    bool request;
    std::string encoded;
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
    const bool request = message.find("Request") != std::string::npos;
    return {message, request, out.str(), std::move(frame)};
}

// A record left at its zero values, only self set.
template <class Endpoint, class Record>
Row row(void (Endpoint::*encoder)(std::stringstream&, const Record&), uint32_t self,
        std::string frame) {
    return row(encoder, self, std::move(frame), [](Record&) {});
}

// Each row's frame must be encoded exactly, arrive whole at the other side and be ignored
// by its own side (a response name sent to the slave, a request name to the master).
// messageCount: how many messages the feature has, each of which needs a row.
void expectRows(const std::vector<Row>& rows, size_t messageCount) {
    std::set<std::string> messages;
    FeatureLink link;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.frame);
        messages.insert(r.message);
        EXPECT_EQ(r.encoded, r.frame) << r.message;
        const std::vector<std::string> arrived{r.frame};
        EXPECT_EQ(r.request ? link.toSlave(r.frame) : link.toMaster(r.frame), arrived);
        EXPECT_TRUE((r.request ? link.toMaster(r.frame) : link.toSlave(r.frame)).empty())
            << "the other direction's message name must be ignored";
    }
    EXPECT_EQ(messages.size(), messageCount) << "every message of the feature needs a row";
}

const char* const kVolumeXml = "/media/flash/nvm/mixhub/volume_property.xml";

// 612 bytes of file content, with the bytes a header would choke on.
const std::string& fileBytes() {
    static const std::string bytes = [] {
        std::string b;
        for (int i = 0; i < 612; ++i) {
            b += static_cast<char>((i * 37) % 256);
        }
        return b;
    }();
    return bytes;
}

// The protocol's example frames, then the empty lists and the list of two.
TEST(CommonMessages, EveryMessageTravelsBothWays) {
    using S = VekCommonSlave;
    using M = VekCommonMaster;
    const std::vector<Row> rows = {
        row(&M::encodeVersionRequest, 1, "AS:1:0:Common:VersionRequest:0:OK:<M1.0>:\n",
            [](auto& r) { r.version = "M1.0"; }),
        row(&S::encodeVersionResponse, 1, "AS:1:0:Common:VersionResponse:0:OK:<A00020001>:\n",
            [](auto& r) { r.version = "A00020001"; }),
        row(&M::encodeFeatureRequest, 2, "AS:2:0:Common:FeatureRequest:0:OK:\n"),
        row(&S::encodeFeatureResponse, 2,
            "AS:2:0:Common:FeatureResponse:0:OK:<Common:EqV2:Gain:Hfe:Speaker:Vb>:\n",
            [](auto& r) { r.features = {"Common", "EqV2", "Gain", "Hfe", "Speaker", "Vb"}; }),
        row(&M::encodeFileListRequest, 3, "AS:3:0:Common:FileListRequest:0:OK:<Gain>:\n",
            [](auto& r) { r.feature = "Gain"; }),
        row(&S::encodeFileListResponse, 3,
            "AS:3:0:Common:FileListResponse:0:OK:<Gain:" + std::string(kVolumeXml) + ">:\n",
            [](auto& r) {
                r.feature = "Gain";
                r.files = {kVolumeXml};
            }),
        row(&M::encodeFileContentRequest, 4,
            "AS:4:0:Common:FileContentRequest:0:OK:<" + std::string(kVolumeXml) + ">:\n",
            [](auto& r) { r.path = kVolumeXml; }),
        row(&S::encodeFileContentResponse, 4,
            "AS:4:0:Common:FileContentResponse:612:OK:<" + std::string(kVolumeXml) + ">:\n" +
                fileBytes(),
            [](auto& r) {
                r.path = kVolumeXml;
                r.rawData = fileBytes().data();
                r.rawDataLength = 612;
            }),
        row(&M::encodeGetBypassRequest, 5, "AS:5:0:Common:GetBypassRequest:0:OK:\n"),
        row(&S::encodeGetBypassResponse, 5, "AS:5:0:Common:GetBypassResponse:0:OK:<0>:\n"),
        row(&M::encodeSetBypassRequest, 6, "AS:6:0:Common:SetBypassRequest:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&S::encodeSetBypassResponse, 6, "AS:6:0:Common:SetBypassResponse:0:OK:\n"),
        row(&M::encodeGetBypassRequest, 7, "AS:7:0:Common:GetBypassRequest:0:OK:\n"),
        row(&S::encodeGetBypassResponse, 12, "AS:12:0:Common:GetBypassResponse:0:NG:<0>:\n",
            [](auto& r) { r.fail = true; }),
        // An empty list is an empty block; an empty file list leaves the name and ':'.
        row(&S::encodeFeatureResponse, 13, "AS:13:0:Common:FeatureResponse:0:OK:<>:\n"),
        row(&S::encodeFileListResponse, 14, "AS:14:0:Common:FileListResponse:0:OK:<Reverb:>:\n",
            [](auto& r) { r.feature = "Reverb"; }),
        row(&S::encodeFileListResponse, 15,
            "AS:15:0:Common:FileListResponse:0:OK:<EqV2:/a.xml:/b.xml>:\n",
            [](auto& r) {
                r.feature = "EqV2";
                r.files = {"/a.xml", "/b.xml"};
            }),
    };
    expectRows(rows, 12);
}

// Every documented example (self 1 to 4 and 20 to 24), then one row for each
// message it leaves out and the fade/balance extremes.
TEST(GainMessages, EveryMessageTravelsBothWays) {
    using S = VekGainSlave;
    using M = VekGainMaster;
    const std::vector<Row> rows = {
        row(&M::encodeGetMasterRequest, 1, "AS:1:0:Gain:GetMasterRequest:0:OK:\n"),
        row(&S::encodeGetMasterResponse, 20, "AS:20:0:Gain:GetMasterResponse:0:OK:<-12.5>:\n",
            [](auto& r) { r.masterGain = -12.5f; }),
        row(&M::encodeSetMasterRequest, 2, "AS:2:0:Gain:SetMasterRequest:0:OK:<-10>:\n",
            [](auto& r) { r.masterGain = -10.0f; }),
        row(&S::encodeSetMasterResponse, 21, "AS:21:0:Gain:SetMasterResponse:0:OK:\n"),
        row(&M::encodeSetChannelRequest, 3,
            "AS:3:0:Gain:SetChannelRequest:0:OK:<0:0:-3:-3:1.5:0>:\n",
            [](auto& r) { set(r.channelGain, 0, 0, -3, -3, 1.5f, 0); }),
        row(&S::encodeGetChannelResponse, 22,
            "AS:22:0:Gain:GetChannelResponse:0:OK:<0:0:-3:-3:1.5:0>:\n",
            [](auto& r) { set(r.channelGain, 0, 0, -3, -3, 1.5f, 0); }),
        row(&M::encodeSetFadeBalanceRequest, 4,
            "AS:4:0:Gain:SetFadeBalanceRequest:0:OK:<2:-1:15>:\n",
            [](auto& r) { set(r.fadeBalance, 2, -1, 15); }),
        row(&S::encodeGetFadeBalanceResponse, 23,
            "AS:23:0:Gain:GetFadeBalanceResponse:0:OK:<0:0:15>:\n",
            [](auto& r) { set(r.fadeBalance, 0, 0, 15); }),
        row(&S::encodeGetChannelResponse, 24,
            "AS:24:0:Gain:GetChannelResponse:0:NG:<0:0:0:0:0:0>:\n",
            [](auto& r) { r.fail = true; }),

        row(&M::encodeGetChannelRequest, 5, "AS:5:9:Gain:GetChannelRequest:0:OK:\n",
            [](auto& r) { r.peer = 9; }),
        row(&S::encodeSetChannelResponse, 25, "AS:25:0:Gain:SetChannelResponse:0:OK:\n"),
        row(&M::encodeGetFadeBalanceRequest, 6, "AS:6:0:Gain:GetFadeBalanceRequest:0:NG:\n",
            [](auto& r) { r.fail = true; }),
        row(&S::encodeSetFadeBalanceResponse, 26, "AS:26:0:Gain:SetFadeBalanceResponse:0:OK:\n"),
        row(&M::encodeSetFadeBalanceRequest, 7,
            "AS:7:0:Gain:SetFadeBalanceRequest:0:OK:<-7:2147483647:-2147483648>:\n",
            [](auto& r) { set(r.fadeBalance, -7, 2147483647, -2147483647 - 1); }),
        // The third element travels unsigned and the master reads it back as -1.
        row(&S::encodeGetFadeBalanceResponse, 28,
            "AS:28:0:Gain:GetFadeBalanceResponse:0:OK:<-1:-1:4294967295>:\n",
            [](auto& r) { set(r.fadeBalance, -1, -1, -1); }),
    };
    expectRows(rows, 12);
}

TEST(GainMessages, ADroppedRequestStillShowsInTheReceiveDump) {
    FeatureLink link;
    const std::string frame = "AS:2:0:Gain:SetMasterRequest:0:OK:<loud>:\n";
    EXPECT_TRUE(link.toSlave(frame).empty());
    EXPECT_EQ(link.slaveLog, "\n+RECV-" + frame + "-RECV\n\n");
}

// Every documented example: together they cover each message.
TEST(ReverbMessages, EveryMessageTravelsBothWays) {
    using S = VekReverbSlave;
    using M = VekReverbMaster;
    const std::vector<Row> rows = {
        row(&M::encodeGetEnableRequest, 1, "AS:1:0:Reverb:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 30, "AS:30:0:Reverb:GetEnableResponse:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&M::encodeSetModeRequest, 2, "AS:2:0:Reverb:SetModeRequest:0:OK:<3>:\n",
            [](auto& r) { r.mode = 3; }),
        row(&S::encodeSetModeResponse, 31, "AS:31:0:Reverb:SetModeResponse:0:OK:\n"),
        row(&M::encodeGetModeRequest, 3, "AS:3:0:Reverb:GetModeRequest:0:OK:\n"),
        row(&S::encodeGetModeResponse, 32, "AS:32:0:Reverb:GetModeResponse:0:OK:<3>:\n",
            [](auto& r) { r.mode = 3; }),
    };
    expectRows(rows, 6);
}

// The documented example, then every message: the EqV2 fields under the name "Eq".
TEST(EqMessages, EveryMessageTravelsBothWays) {
    using S = VekEqSlave;
    using M = VekEqMaster;
    const std::vector<Row> rows = {
        row(&S::encodeGetBandCountResponse, 4,
            "AS:4:0:Eq:GetBandCountResponse:0:OK:<20:20:20:20:20:20>:\n",
            [](auto& r) { set(r.bandCount, 20, 20, 20, 20, 20, 20); }),

        row(&M::encodeGetEnableRequest, 1, "AS:1:0:Eq:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 2, "AS:2:0:Eq:GetEnableResponse:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&M::encodeSetEnableRequest, 3, "AS:3:0:Eq:SetEnableRequest:0:OK:<0>:\n"),
        row(&S::encodeSetEnableResponse, 5, "AS:5:0:Eq:SetEnableResponse:0:OK:\n"),
        row(&M::encodeGetBandCountRequest, 6, "AS:6:0:Eq:GetBandCountRequest:0:OK:\n"),
        row(&M::encodeGetBandConfigRequest, 7, "AS:7:0:Eq:GetBandConfigRequest:0:OK:<RS:19>:\n",
            [](auto& r) {
                r.channel = "RS";
                r.band = 19;
            }),
        row(&S::encodeGetBandConfigResponse, 8,
            "AS:8:0:Eq:GetBandConfigResponse:0:OK:<RS:19:3:16000:6.5:0.5:-1:2>:\n",
            [](auto& r) { bandConfig(r, "RS", 19, 3, 16000, 6.5f, 0.5f, -1, 2); }),
        row(&M::encodeSetBandConfigRequest, 10,
            "AS:10:0:Eq:SetBandConfigRequest:0:OK:<LF:0:1:31:-0.125:1.41421:7:-8>:\n",
            [](auto& r) { bandConfig(r, "LF", 0, 1, 31, -0.125f, 1.41421f, 7, -8); }),
        row(&S::encodeSetBandConfigResponse, 11, "AS:11:0:Eq:SetBandConfigResponse:0:OK:\n"),
    };
    expectRows(rows, 10);
}

// The documented example, then every message with values of each field type.
TEST(EqV2Messages, EveryMessageTravelsBothWays) {
    using S = VekEqV2Slave;
    using M = VekEqV2Master;
    const std::vector<Row> rows = {
        row(&S::encodeGetBandCountResponse, 1,
            "AS:1:0:EqV2:GetBandCountResponse:0:OK:<10:10:5:5:3:0>:\n",
            [](auto& r) { set(r.bandCount, 10, 10, 5, 5, 3, 0); }),
        row(&M::encodeSetBandConfigRequest, 3,
            "AS:3:0:EqV2:SetBandConfigRequest:0:OK:<CF:7:2:1000:-3.5:0.707:0:1>:\n",
            [](auto& r) { bandConfig(r, "CF", 7, 2, 1000, -3.5f, 0.707f, 0, 1); }),
        row(&M::encodeSetEnableRequest, 4, "AS:4:0:EqV2:SetEnableRequest:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&M::encodeGetBandConfigRequest, 5,
            "AS:5:0:EqV2:GetBandConfigRequest:0:OK:<lf:4294967295>:\n",
            [](auto& r) {
                r.channel = "lf";
                r.band = 4294967295u;
            }),

        row(&M::encodeGetEnableRequest, 6, "AS:6:0:EqV2:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 7, "AS:7:0:EqV2:GetEnableResponse:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&S::encodeSetEnableResponse, 8, "AS:8:0:EqV2:SetEnableResponse:0:OK:\n"),
        row(&M::encodeGetBandCountRequest, 9, "AS:9:0:EqV2:GetBandCountRequest:0:OK:\n"),
        row(&M::encodeSetBandCountRequest, 10,
            "AS:10:0:EqV2:SetBandCountRequest:0:OK:<31:1:0:-1:2147483647:16>:\n",
            [](auto& r) { set(r.bandCount, 31, 1, 0, -1, 2147483647, 16); }),
        row(&S::encodeSetBandCountResponse, 11, "AS:11:0:EqV2:SetBandCountResponse:0:NG:\n",
            [](auto& r) { r.fail = true; }),
        row(&S::encodeGetBandConfigResponse, 12,
            "AS:12:0:EqV2:GetBandConfigResponse:0:OK:"
            "<L1:30:-4:65535:1e-05:-12.25:-2147483648:9>:\n",
            [](auto& r) {
                bandConfig(r, "L1", 30, -4, 65535, 1e-05f, -12.25f, -2147483647 - 1, 9);
            }),
        row(&S::encodeSetBandConfigResponse, 13, "AS:13:0:EqV2:SetBandConfigResponse:0:OK:\n"),
    };
    expectRows(rows, 12);
}

// Every documented example, then the messages it leaves out.
TEST(HfeMessages, EveryMessageTravelsBothWays) {
    using S = VekHfeSlave;
    using M = VekHfeMaster;
    const std::vector<Row> rows = {
        row(&M::encodeSetEnableRequest, 5, "AS:5:0:Hfe:SetEnableRequest:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&M::encodeGetChannelConfigRequest, 6, "AS:6:0:Hfe:GetChannelConfigRequest:0:OK:<CF>:\n",
            [](auto& r) { r.channel = "CF"; }),
        row(&S::encodeGetChannelConfigResponse, 17,
            "AS:17:0:Hfe:GetChannelConfigResponse:0:OK:<CF:1:0:1:0.75>:\n",
            [](auto& r) {
                r.channel = "CF";
                r.flag1 = true;
                r.flag3 = true;
                r.value = 0.75f;
            }),
        row(&S::encodeGetEnableResponse, 18, "AS:18:0:Hfe:GetEnableResponse:0:NG:<0>:\n",
            [](auto& r) { r.fail = true; }),
        row(&M::encodeSetChannelConfigRequest, 7,
            "AS:7:0:Hfe:SetChannelConfigRequest:0:OK:<LS:1:1:0:-3.5>:\n",
            [](auto& r) {
                r.channel = "LS";
                r.flag1 = true;
                r.flag2 = true;
                r.value = -3.5f;
            }),

        row(&M::encodeGetEnableRequest, 8, "AS:8:0:Hfe:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 20, "AS:20:0:Hfe:GetEnableResponse:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&S::encodeSetEnableResponse, 21, "AS:21:0:Hfe:SetEnableResponse:0:OK:\n"),
        row(&S::encodeSetChannelConfigResponse, 22, "AS:22:0:Hfe:SetChannelConfigResponse:0:OK:\n"),
    };
    expectRows(rows, 8);
}

// Every documented example, then the messages it leaves out.
TEST(VbMessages, EveryMessageTravelsBothWays) {
    using S = VekVbSlave;
    using M = VekVbMaster;
    const std::vector<Row> rows = {
        row(&M::encodeGetChannelConfigRequest, 8, "AS:8:0:Vb:GetChannelConfigRequest:0:OK:<LF>:\n",
            [](auto& r) { r.channel = "LF"; }),
        row(&S::encodeGetChannelConfigResponse, 21,
            "AS:21:0:Vb:GetChannelConfigResponse:0:OK:"
            "<LF:1:2:0.5:1:100:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0>:\n",
            [](auto& r) {
                r.channel = "LF";
                r.flag = true;
                r.number = 2;
                r.params[0] = 0.5f;
                r.params[1] = 1;
                r.params[2] = 100;
            }),
        // A failed configuration: the empty channel name and twenty 0 fields.
        row(&S::encodeGetChannelConfigResponse, 22,
            "AS:22:0:Vb:GetChannelConfigResponse:0:NG:"
            "<:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0>:\n",
            [](auto& r) { r.fail = true; }),

        row(&M::encodeGetEnableRequest, 1, "AS:1:0:Vb:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 2, "AS:2:0:Vb:GetEnableResponse:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&M::encodeSetEnableRequest, 3, "AS:3:0:Vb:SetEnableRequest:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&S::encodeSetEnableResponse, 4, "AS:4:0:Vb:SetEnableResponse:0:OK:\n"),
        row(&M::encodeSetChannelConfigRequest, 5,
            "AS:5:0:Vb:SetChannelConfigRequest:0:OK:"
            "<LS:1:3:1:2:3:4:5:6:7:8:9:10:11:12:13:14:15:16:17:18>:\n",
            [](auto& r) {
                r.channel = "LS";
                r.flag = true;
                r.number = 3;
                for (int i = 0; i < 18; ++i) {
                    r.params[i] = static_cast<float>(i + 1);
                }
            }),
        row(&S::encodeSetChannelConfigResponse, 7, "AS:7:0:Vb:SetChannelConfigResponse:0:OK:\n"),
    };
    expectRows(rows, 8);
}

// Every documented example, then the messages it leaves out.
TEST(SpeakerMessages, EveryMessageTravelsBothWays) {
    using S = VekSpeakerSlave;
    using M = VekSpeakerMaster;
    const std::vector<Row> rows = {
        row(&M::encodeSetEnableRequest, 3, "AS:3:0:Speaker:SetEnableRequest:0:OK:<1:1:0:0:1:1>:\n",
            [](auto& r) { set(r.enable, true, true, false, false, true, true); }),
        row(&S::encodeGetDelayResponse, 42,
            "AS:42:0:Speaker:GetDelayResponse:0:OK:<0:0:1.5:1.5:0.25:0>:\n",
            [](auto& r) { set(r.delay, 0, 0, 1.5f, 1.5f, 0.25f, 0); }),
        row(&M::encodeSetSinePatternRequest, 4,
            "AS:4:0:Speaker:SetSinePatternRequest:0:OK:<LF:1000>:\n",
            [](auto& r) {
                r.channel = "LF";
                r.frequency = 1000;
            }),
        row(&S::encodeSetSinePatternResponse, 43, "AS:43:0:Speaker:SetSinePatternResponse:0:OK:\n"),
        row(&M::encodeSetEnableRequest, 1, "AS:1:0:Speaker:SetEnableRequest:0:OK:<1:0:1:0:1:0>:\n",
            [](auto& r) { set(r.enable, true, false, true, false, true, false); }),
        row(&M::encodeSetStylePatternRequest, 9,
            "AS:9:0:Speaker:SetStylePatternRequest:0:OK:<CF:2>:\n",
            [](auto& r) {
                r.channel = "CF";
                r.style = 2;
            }),

        row(&M::encodeGetEnableRequest, 10, "AS:10:0:Speaker:GetEnableRequest:0:OK:\n"),
        row(&S::encodeGetEnableResponse, 45,
            "AS:45:0:Speaker:GetEnableResponse:0:OK:<0:1:1:0:0:1>:\n",
            [](auto& r) { set(r.enable, false, true, true, false, false, true); }),
        row(&S::encodeSetEnableResponse, 47, "AS:47:0:Speaker:SetEnableResponse:0:OK:\n"),
        row(&M::encodeGetDelayRequest, 11, "AS:11:0:Speaker:GetDelayRequest:0:OK:\n"),
        row(&M::encodeSetDelayRequest, 12,
            "AS:12:0:Speaker:SetDelayRequest:0:OK:<2.5:-1:0.001:1e-05:100:0.75>:\n",
            [](auto& r) { set(r.delay, 2.5f, -1, 0.001f, 1e-05f, 100, 0.75f); }),
        row(&S::encodeSetDelayResponse, 48, "AS:48:0:Speaker:SetDelayResponse:0:OK:\n"),
        row(&S::encodeSetStylePatternResponse, 49,
            "AS:49:0:Speaker:SetStylePatternResponse:0:OK:\n"),
    };
    expectRows(rows, 12);
}

}  // namespace
