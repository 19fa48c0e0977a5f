#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "VekFrameReader.h"
#include "VekRawStringSink.h"
#include "VekSettingAccess.h"

using namespace vekmaster;

namespace {

using Json = VekSettingAccess::Json;

// A device that answers from a table of payloads by request ("EqV2 GetBandConfig CF 7"),
// each answer decoded from its wire form as off a line; what it was asked, in order.
class FakeDevice : public VekDeviceAccess {
public:
    std::map<std::string, std::string> answers;  // request -> "OK:<...>" or "NG:<...>"
    std::vector<std::string> asked;
    size_t batches = 0;

    const VekMasterReply& request(const std::string& feature, const std::string& name,
                                  const vekprotocol::VekFields& args, VekRawSink*) override {
        std::string text = feature + ' ' + name;
        for (const std::string& arg : args) {
            text += ' ' + arg;
        }
        asked.push_back(text);
        reply_.expect(feature, name + "Response");
        const auto found = answers.find(text);
        if (found == answers.end()) {
            reply_.outcome = VekMasterReply::Outcome::NoAnswer;
            reply_.problem = "no answer to " + text;
            return reply_;
        }
        const std::string frame =
            "AS:1:0:" + feature + ':' + name + "Response:0:" + found->second + ":\n";
        std::string raw;
        VekRawStringSink memory(raw);
        VekFrameReader reader(decoder_, reply_);
        reader.await(memory);
        reader.feed(frame.data(), frame.size());
        reply_.outcome = reply_.fail ? VekMasterReply::Outcome::Ng : VekMasterReply::Outcome::Ok;
        return reply_;
    }
    void exchange(VekMasterExchange::Batch& batch) override {
        ++batches;
        VekDeviceAccess::exchange(batch);
    }
    bool read(const Json*, VekDeviceReading&) override { return false; }
    VekTuningApply::Result apply(const Json&, const VekTuningApply::Options&) override {
        return {};
    }
    const VekMasterReply& failure() const override { return reply_; }

private:
    VekMasterReply reply_;
    VekReplyDecoder decoder_{reply_};
};

class SettingAccessTest : public ::testing::Test {
protected:
    const VekSettingsTable& table = VekSettingsTable::shared();
    FakeDevice device;
    VekSettingAccess settings{device, table, VekDeviceProfile::inUse().get()};

    VekSettingAccess::Target at(const std::string& feature, const std::string& name,
                                const std::string& channel = "", int band = -1) {
        VekSettingAccess::Target target;
        const VekError error =
            VekSettingAccess::locate(table, feature, name, channel, band, true, target);
        EXPECT_FALSE(error) << error.text;
        return target;
    }
    std::string located(const std::string& feature, const std::string& name,
                        const std::string& channel, int band, bool whole) {
        VekSettingAccess::Target target;
        return VekSettingAccess::locate(table, feature, name, channel, band, whole, target).text;
    }
};

TEST_F(SettingAccessTest, LocateRefusesWhatASettingDoesNotHave) {
    EXPECT_EQ(located("Hfe", "channel", "LF", 3, true), "Hfe.channel has no bands");
    EXPECT_EQ(located("EqV2", "band", "", 3, true), "EqV2.band: a band is named with its channel");
    // A value at a time: the whole of a setting per channel or band is not one.
    EXPECT_EQ(located("EqV2", "band", "CF", -1, false), "EqV2.band: band -1 is not 0 to 39");
    EXPECT_EQ(located("Hfe", "channel", "", -1, false),
              "Hfe.channel: channel '' is not one of LF RF LS RS CF L1");
    EXPECT_EQ(located("Gain", "channel", "", -1, false), "");
    EXPECT_EQ(located("Gain", "channel", "RS", -1, true), "");
}

TEST_F(SettingAccessTest, ReadsOneValueAChannelOfAnArrayAndEveryBandOfAChannel) {
    device.answers = {{"Gain GetMaster", "OK:<-12.5>"},
                      {"Gain GetChannel", "OK:<0:-0.5:-2:-2.5:-1:-4>"},
                      {"EqV2 GetBandCount", "OK:<2:2:1:1:2:0>"},
                      {"EqV2 GetBandConfig CF 0", "OK:<CF:0:2:100:1.5:0.7:0:1>"},
                      {"EqV2 GetBandConfig CF 1", "NG:<:0:0:0:0:0:0:0>"}};
    VekSettingAccess::Result result;
    ASSERT_FALSE(settings.read(at("Gain", "master"), result));
    EXPECT_EQ(result.value, Json(-12.5));
    EXPECT_EQ(result.message->name, "GetMaster");

    ASSERT_FALSE(settings.read(at("Gain", "channel", "LS"), result));
    EXPECT_EQ(result.value, Json(-2));
    ASSERT_FALSE(settings.read(at("Gain", "channel"), result));
    EXPECT_EQ(result.value.dump(), R"({"LF":0,"RF":-0.5,"LS":-2,"RS":-2.5,"CF":-1,"L1":-4})");

    // The counts first, then the channel's bands in one batch; an NG band is missing
    // and its answer is the one that decided.
    device.asked.clear();
    ASSERT_FALSE(settings.read(at("EqV2", "band", "CF"), result));
    EXPECT_EQ(device.asked,
              (std::vector<std::string>{"EqV2 GetBandCount", "EqV2 GetBandConfig CF 0",
                                        "EqV2 GetBandConfig CF 1"}));
    EXPECT_EQ(device.batches, 1u);
    EXPECT_EQ(result.value.dump(),
              R"([{"value1":2,"value2":100,"value3":1.5,"value4":0.7,"value5":0,"value6":1},)"
              R"({"missing":"NG"}])");
    EXPECT_EQ(result.reply.outcome, VekMasterReply::Outcome::Ng);

    // One band answered NG has no value; an unanswered one is an error.
    ASSERT_FALSE(settings.read(at("EqV2", "band", "CF", 1), result));
    EXPECT_TRUE(result.value.is_null());
    const VekError error = settings.read(at("EqV2", "band", "LF", 0), result);
    EXPECT_EQ(error.kind, VekError::Kind::NoAnswer);
    EXPECT_EQ(error.text, "no answer to EqV2 GetBandConfig LF 0");
}

TEST_F(SettingAccessTest, SeveralReadsGoInOneBatchAfterTheBandCountsTheyNeed) {
    device.answers = {{"EqV2 GetBandCount", "NG:<0:0:0:0:0:0>"},
                      {"EqV2 GetEnable", "OK:<1>"},
                      {"Hfe GetChannelConfig LS", "OK:<LS:1:0:1:0.25>"},
                      {"EqV2 GetBandConfig CF 2", "OK:<CF:2:2:100:1.5:0.7:0:1>"}};
    std::vector<VekSettingAccess::Result> results;
    ASSERT_FALSE(settings.read({at("EqV2", "band", "LF"), at("EqV2", "enable"),
                                at("Hfe", "channel", "LS"), at("EqV2", "band", "CF", 2)},
                               results));
    EXPECT_EQ(device.asked,
              (std::vector<std::string>{"EqV2 GetBandCount", "EqV2 GetEnable",
                                        "Hfe GetChannelConfig LS", "EqV2 GetBandConfig CF 2"}));
    EXPECT_EQ(device.batches, 1u);
    // Without its counts a channel's bands have the counts' NG; the rest are their own.
    EXPECT_EQ(results[0].message->name, "GetBandCount");
    EXPECT_EQ(results[0].reply.outcome, VekMasterReply::Outcome::Ng);
    EXPECT_EQ(results[1].value, Json(true));
    EXPECT_EQ(results[2].value.dump(), R"({"flag1":true,"flag2":false,"flag3":true,"value":0.25})");
    EXPECT_EQ(results[3].value["value3"], Json(1.5));
}

TEST_F(SettingAccessTest, APartialWriteCarriesTheDeviceValuesOfTheRest) {
    device.answers = {{"Gain GetChannel", "OK:<0:-0.5:-2:-2.5:-1:-4>"},
                      {"Gain SetChannel -3 -0.5 -2 -2.5 -1 -6", "OK:<>"},
                      {"EqV2 GetBandConfig CF 7", "OK:<CF:7:2:4000:0:0.707:0:1>"},
                      {"EqV2 SetBandConfig CF 7 2 4000 -3.5 0.707 0 1", "OK:<>"},
                      {"Gain SetMaster -10", "OK:<>"}};
    VekSettingAccess::Result result;
    ASSERT_FALSE(settings.write(at("Gain", "channel"), Json{{"LF", -3}, {"L1", -6}}, result));
    ASSERT_FALSE(settings.write(at("EqV2", "band", "CF", 7), Json{{"value3", -3.5}}, result));
    // A whole value is sent without asking.
    ASSERT_FALSE(settings.write(at("Gain", "master"), Json(-10), result));
    EXPECT_EQ(
        device.asked,
        (std::vector<std::string>{
            "Gain GetChannel", "Gain SetChannel -3 -0.5 -2 -2.5 -1 -6", "EqV2 GetBandConfig CF 7",
            "EqV2 SetBandConfig CF 7 2 4000 -3.5 0.707 0 1", "Gain SetMaster -10"}));
    EXPECT_EQ(result.message->name, "SetMaster");
    EXPECT_EQ(result.reply.outcome, VekMasterReply::Outcome::Ok);

    // The read answered NG: nothing is set, and that answer is the result.
    device.answers["EqV2 GetBandConfig CF 7"] = "NG:<:0:0:0:0:0:0:0>";
    device.asked.clear();
    ASSERT_FALSE(settings.write(at("EqV2", "band", "CF", 7), Json{{"value3", 1}}, result));
    EXPECT_EQ(device.asked, std::vector<std::string>{"EqV2 GetBandConfig CF 7"});
    EXPECT_EQ(result.message->name, "GetBandConfig");
}

TEST_F(SettingAccessTest, AWriteThatCannotBeSentSendsNothing) {
    const struct {
        VekSettingAccess::Target target;
        Json value;
        VekError::Kind kind;
        std::string text;
    } refused[] = {
        {at("EqV2", "band", "CF"), Json::object(), VekError::Kind::Usage,
         "EqV2.band[CF]: a value is written for one band"},
        {at("EqV2", "band", "CF", 1), Json{{"value7", 1}}, VekError::Kind::Usage,
         "EqV2.band[CF/1]: has an unknown field value7"},
        {at("Gain", "channel"), Json{{"XY", 1}}, VekError::Kind::Usage,
         "Gain.channel: unknown channel XY (channels: LF RF LS RS CF L1)"},
        {at("Gain", "master"), Json(13), VekError::Kind::Range,
         "Gain SetMaster masterGain 13 is outside -60 to 12 dB (profile default)"},
    };
    for (const auto& r : refused) {
        VekSettingAccess::Result result;
        const VekError error = settings.write(r.target, r.value, result);
        EXPECT_EQ(error.kind, r.kind) << r.text;
        EXPECT_EQ(error.text, r.text);
    }
    EXPECT_TRUE(device.asked.empty());
}

TEST_F(SettingAccessTest, WithoutLimitsAValueOutsideThemIsSentAndTold) {
    device.answers = {{"Gain SetMaster 20", "OK:<>"}};
    VekSettingAccess forced(device, table, nullptr);
    std::vector<std::string> told;
    forced.setSending([&](const VekCheckedRequest& request) {
        told.push_back(request.message().name + ' ' + request.args().at(0));
    });
    VekSettingAccess::Result result;
    ASSERT_FALSE(forced.write(at("Gain", "master"), Json(20), result));
    EXPECT_EQ(told, std::vector<std::string>{"SetMaster 20"});
}

}  // namespace
