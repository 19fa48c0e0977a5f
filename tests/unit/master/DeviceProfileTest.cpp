#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "VekDeviceProfile.h"
#include "VekMessageCatalog.h"
#include "VekSettingsTable.h"
#include "VekTuningDocument.h"

using namespace vekmaster;

namespace {

const VekDeviceProfile& profile() {
    return VekDeviceProfile::builtIn();
}

// The check of FEATURE MESSAGE ARG... as the catalogue sends it.
std::string check(const std::string& feature, const std::string& name,
                  const vekprotocol::VekFields& args) {
    const VekMessageCatalog& catalog = VekMessageCatalog::shared();
    return profile().check(*catalog.find(feature, name), args).text;
}

// A profile text with one limit entry replaced.
std::string withLimit(const std::string& entry) {
    return R"({"name": "t", "band": {"type": 0, "frequency": 1, "gain": 2, "q": 3,
               "types": {"2": "peaking"}}, "limits": [)" +
           entry + "]}";
}

}  // namespace

TEST(DeviceProfileTest, TheBuiltInProfileNamesTheValueTheRangeAndItself) {
    EXPECT_EQ(check("Gain", "SetMaster", {"60"}),
              "Gain SetMaster masterGain 60 is outside -60 to 12 dB (profile default)");
    EXPECT_EQ(check("Gain", "SetMaster", {"12"}), "");
    EXPECT_EQ(check("Gain", "SetMaster", {"-60"}), "");
    EXPECT_EQ(check("Gain", "SetMaster", {"nan"}),
              "Gain SetMaster masterGain nan is outside -60 to 12 dB (profile default)");
    // Six-element arrays are named by channel; the first offender is reported.
    EXPECT_EQ(check("Gain", "SetChannel", {"0", "0", "-40", "20", "0", "0"}),
              "Gain SetChannel channelGain[LS] -40 is outside -30 to 12 dB (profile default)");
    EXPECT_EQ(check("Speaker", "SetDelay", {"0", "0", "0", "0", "0", "25"}),
              "Speaker SetDelay delay[L1] 25 is outside 0 to 20 ms (profile default)");
    // Fade/balance lists its field three times: each element has its own range.
    EXPECT_EQ(check("Gain", "SetFadeBalance", {"2", "-1", "15"}), "");
    EXPECT_EQ(check("Gain", "SetFadeBalance", {"2", "-1", "-1"}),
              "Gain SetFadeBalance fadeBalance[2] -1 is outside 0 to 100 (profile default)");
    // The value as the request carries it: -1 for a uint band index is 4294967295.
    EXPECT_EQ(check("EqV2", "SetBandConfig", {"CF", "3", "2", "1000", "-3.5", "0.707", "0", "1"}), "");
    EXPECT_EQ(check("EqV2", "SetBandConfig", {"CF", "3", "2", "19", "-3.5", "0.707", "0", "1"}),
              "EqV2 SetBandConfig value2 19 is outside 20 to 20000 Hz (profile default)");
    EXPECT_EQ(check("Eq", "SetBandConfig", {"CF", "20", "2", "1000", "0", "1", "0", "1"}),
              "Eq SetBandConfig band 20 is outside 0 to 19 (profile default)");
    EXPECT_EQ(check("Speaker", "SetSinePattern", {"LF", "1000"}), "");
    EXPECT_EQ(check("Speaker", "SetSinePattern", {"LF", "30000"}),
              "Speaker SetSinePattern frequency 30000 is outside 20 to 20000 Hz (profile default)");
    // Values without a range pass.
    EXPECT_EQ(check("Hfe", "SetChannelConfig", {"LF", "1", "0", "1", "1e30"}), "");
}

TEST(DeviceProfileTest, TheCatalogueRefusesOutOfRangeValuesUnlessLimitsAreOff) {
    const VekMessageCatalog& catalog = VekMessageCatalog::shared();
    const VekMasterMessage& master = *catalog.find("Gain", "SetMaster");
    VekCheckedRequest checked;
    const VekError range = catalog.check(master, {"60"}, &profile(), checked);
    EXPECT_EQ(range.kind, VekError::Kind::Range);
    EXPECT_EQ(range.text, "Gain SetMaster masterGain 60 is outside -60 to 12 dB (profile default)");
    EXPECT_EQ(range.field, "masterGain");
    EXPECT_EQ(range.min, -60);
    EXPECT_EQ(range.max, 12);
    EXPECT_FALSE(checked.valid());
    EXPECT_EQ(catalog.check(master, {"x"}, nullptr).kind, VekError::Kind::Usage);
    EXPECT_FALSE(catalog.check(master, {"60"}, nullptr, checked));
    ASSERT_TRUE(checked.valid());
    EXPECT_EQ(&checked.message(), &master);
    EXPECT_EQ(checked.args(), vekprotocol::VekFields{"60"});
}

TEST(DeviceProfileTest, ADocumentsValuesAreCheckedWhereTheyStand) {
    const VekSettingsTable& table = VekSettingsTable::shared();
    const auto breach = [&](const std::string& settings) {
        VekTuningDocument::Json document;
        EXPECT_EQ(VekTuningDocument::parse(R"({"format": "vek-tuning/1", "settings": )" + settings + "}",
                                           document),
                  "");
        EXPECT_EQ(VekTuningDocument::check(table, document), "");
        return VekTuningDocument::outOfRange(table, document, profile());
    };
    EXPECT_FALSE(breach(R"({"Gain": {"master": -6, "channel": {"LF": 0, "L1": -4}}})"));
    const VekError channel = breach(R"({"Gain": {"channel": {"RS": 13}}})");
    EXPECT_EQ(channel.text,
              "Gain.channel[RS]: Gain SetChannel channelGain[RS] 13 is outside -30 to 12 dB "
              "(profile default)");
    EXPECT_EQ(channel.field, "channelGain");
    EXPECT_EQ(channel.min, -30);
    EXPECT_EQ(channel.max, 12);
    EXPECT_EQ(breach(R"({"EqV2": {"band": {"CF": [null, {"value1": 2, "value2": 1000, "value3": 30,
                      "value4": 1, "value5": 0, "value6": 1}]}}})")
                  .text,
              "EqV2.band[CF/1]: EqV2 SetBandConfig value3 30 is outside -24 to 12 dB (profile default)");
    // What the device reports but cannot take is not checked.
    EXPECT_FALSE(breach(R"({"Eq": {"bandCount": {"CF": 99}}})"));
}

TEST(DeviceProfileTest, LoadingNamesTheFileAndTheBadEntry) {
    VekDeviceProfile loaded;
    EXPECT_EQ(loaded.parse(withLimit(""), "p.json"), "");
    EXPECT_EQ(loaded.name(), "t");
    EXPECT_EQ(loaded.sampleRate(), 48000);
    EXPECT_EQ(loaded.shape(2), VekDeviceProfile::Shape::Peaking);
    EXPECT_EQ(loaded.shape(7), VekDeviceProfile::Shape::Off);

    const std::pair<std::string, std::string> cases[] = {
        {"{", "profile p.json: "},
        {R"({"band": {}})", "profile p.json: name: expected a non-empty string"},
        {withLimit(R"({"feature": "Gain", "message": "SetMaster", "field": "gain", "min": 0, "max": 1})"),
         "profile p.json: limits[0] (Gain SetMaster gain): SetMaster has no field gain (fields: "
         "masterGain)"},
        {withLimit(R"({"feature": "Gain", "message": "Loud", "field": "x", "min": 0, "max": 1})"),
         "profile p.json: limits[0] (Gain Loud x): the catalogue has no message Gain Loud"},
        {withLimit(R"({"feature": "Gain", "message": "SetMaster", "field": "masterGain", "min": 2, "max": 1})"),
         "profile p.json: limits[0] (Gain SetMaster masterGain): expected numbers min and max with "
         "min <= max"},
        {withLimit(R"({"feature": "Gain", "message": "SetChannel", "field": "channelGain", "element": 6,
                       "min": 0, "max": 1})"),
         "profile p.json: limits[0] (Gain SetChannel channelGain): element is an index from 0 to 5"},
        {withLimit(R"({"feature": "Speaker", "message": "SetStylePattern", "field": "channel", "min": 0, "max": 1})"),
         "profile p.json: limits[0] (Speaker SetStylePattern channel): channel is not a number"},
        {R"({"name": "t", "band": {"type": 0, "frequency": 0, "gain": 2, "q": 3, "types": {"1": "peaking"}},
             "limits": []})",
         "profile p.json: band.frequency: value 0 already has another meaning"},
        {R"({"name": "t", "band": {"type": 0, "frequency": 1, "gain": 2, "q": 3, "types": {"1": "notch"}},
             "limits": []})",
         "profile p.json: band.types.1: expected one of off peaking lowShelf highShelf lowPass highPass"},
        // A misspelt member is refused, not taken for its default.
        {R"({"name": "t", "sampelRate": 44100, "band": {}, "limits": []})",
         "profile p.json: sampelRate: unknown member (members: name source sampleRate band limits)"},
        {R"({"name": "t", "band": {"type": 0, "frequency": 1, "gain": 2, "q": 3, "Q": 3,
             "types": {"2": "peaking"}}, "limits": []})",
         "profile p.json: band.Q: unknown member (members: type frequency gain q types)"},
        {withLimit(R"({"feature": "Gain", "message": "SetMaster", "field": "masterGain", "min": -1,
                       "max": 0, "unti": "dB"})"),
         "profile p.json: limits[0] (Gain SetMaster masterGain): unti: unknown member (members: "
         "feature message field element min max unit)"},
    };
    for (const auto& c : cases) {
        VekDeviceProfile bad;
        const std::string problem = bad.parse(c.first, "p.json");
        EXPECT_EQ(problem.substr(0, c.second.size()), c.second) << problem;
        EXPECT_FALSE(problem.empty());
    }
    // What GET /api/profile answers loads as a file, its source member included.
    VekDeviceProfile saved;
    EXPECT_EQ(saved.parse(VekValueJson::dump(profile().json()), "saved.json"), "");
    VekDeviceProfile missing;
    EXPECT_EQ(missing.load("/nonexistent/p.json"), "profile /nonexistent/p.json: cannot be read");
}

TEST(DeviceProfileTest, TheProfileInUseIsTheBuiltInOneUntilReplaced) {
    EXPECT_EQ(VekDeviceProfile::inUse()->source(), "built-in");
    auto other = std::make_shared<VekDeviceProfile>();
    ASSERT_EQ(other->parse(withLimit(R"({"feature": "Gain", "message": "SetMaster",
                                         "field": "masterGain", "min": -10, "max": 0, "unit": "dB"})"),
                           "mine.json"),
              "");
    VekDeviceProfile::use(other);
    const VekMessageCatalog& catalog = VekMessageCatalog::shared();
    EXPECT_EQ(catalog.check(*catalog.find("Gain", "SetMaster"), {"-12"},
                            VekDeviceProfile::inUse().get())
                  .text,
              "Gain SetMaster masterGain -12 is outside -10 to 0 dB (profile t)");
    EXPECT_EQ(VekDeviceProfile::inUse()->json()["source"], "mine.json");
    VekDeviceProfile::use(nullptr);
    EXPECT_EQ(VekDeviceProfile::inUse()->name(), "default");
}
