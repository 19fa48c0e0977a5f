#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "LaunchTest.h"

namespace {

using SafetyLimitTest = LaunchTest;

// An out-of-range value never reaches the line: not alone, not as one line of a script.
TEST_F(SafetyLimitTest, AValueOutsideTheProfileIsRefusedUnlessForced) {
    const MasterRun::Result refused = launch({"Gain", "SetMaster", "60"});
    EXPECT_EQ(refused.status, 64);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(
        refused.err,
        "vek_master: Gain SetMaster masterGain 60 is outside -60 to 12 dB (profile default)\n" +
            std::string(MasterRun::kTryHelp));
    EXPECT_EQ(log.read().find("SetMasterRequest"), std::string::npos);

    MasterRun::TempFile script("Gain SetMaster -6\nSpeaker SetDelay 0 0 0 0 0 -1\n");
    const MasterRun::Result inScript = launch({"--script=" + script.path()});
    EXPECT_EQ(inScript.status, 64);
    EXPECT_EQ(inScript.err, "vek_master: " + script.path() +
                                ":2: Speaker SetDelay delay[L1] -1 is outside 0 to 20 ms (profile "
                                "default)\n" +
                                MasterRun::kTryHelp);
    EXPECT_EQ(log.read().find("SetMasterRequest"), std::string::npos);

    const MasterRun::Result forced = launch({"--force", "Gain", "SetMaster", "60"});
    EXPECT_EQ(forced.status, 0);
    EXPECT_EQ(forced.out, "OK\n");
    EXPECT_EQ(forced.err,
              "vek_master: --force: Gain SetMaster masterGain 60 is outside -60 to 12 "
              "dB (profile default); sending it anyway\n" +
                  stderrWith());
    EXPECT_NE(log.read().find("Gain:SetMasterRequest:0:OK:<60>:"), std::string::npos);
}

TEST_F(SafetyLimitTest, AProfileFileReplacesTheRangesAndABadOneIsNamed) {
    MasterRun::TempFile strict(R"({"name": "strict", "band": {"type": 0, "frequency": 1, "gain": 2,
        "q": 3, "types": {"2": "peaking"}}, "limits": [{"feature": "Gain", "message": "SetMaster",
        "field": "masterGain", "min": -30, "max": -10, "unit": "dB"}]})");
    const MasterRun::Result r = launch({"--profile=" + strict.path(), "Gain", "SetMaster", "-6"});
    EXPECT_EQ(r.status, 64);
    EXPECT_EQ(r.err.rfind("vek_master: Gain SetMaster masterGain -6 is outside -30 to -10 dB "
                          "(profile strict)\n",
                          0),
              0u);

    MasterRun::TempFile bad(R"({"name": "bad", "band": {"type": 0, "frequency": 1, "gain": 2,
        "q": 3, "types": {"2": "peaking"}}, "limits": [{"feature": "Gain", "message": "SetMaster",
        "field": "gain", "min": -30, "max": -10}]})");
    const MasterRun::Result wrong = launch({"--profile=" + bad.path(), "Gain", "GetMaster"});
    EXPECT_EQ(wrong.status, 64);
    EXPECT_EQ(wrong.err, "vek_master: profile " + bad.path() +
                             ": limits[0] (Gain SetMaster gain): SetMaster has no field gain "
                             "(fields: masterGain)\n");
    const MasterRun::Result missing = launch({"--profile=/nonexistent.json", "Gain", "GetMaster"});
    EXPECT_EQ(missing.status, 74);
    EXPECT_EQ(missing.err,
              "vek_master: profile /nonexistent.json: cannot be read: No such file or directory\n");
}

// The curve of a band set on the device, drawn; and of a document, without a device.
TEST_F(SafetyLimitTest, CurvesComeFromTheDeviceOrADocument) {
    MasterRun::TempFile picture;
    MasterRun::TempFile script(
        "EqV2 SetBandConfig CF 3 2 1000 6 1 0 1\ncurve CF --svg=" + picture.path() + "\n");
    const MasterRun::Result drawn = launch({"--script=" + script.path()});
    EXPECT_EQ(drawn.status, 0) << drawn.err;
    // Its lowest and highest points: the peak is on the grid point nearest 1 kHz.
    const std::string head =
        "> EqV2 SetBandConfig CF 3 2 1000 6 1 0 1\nOK\n> curve CF --svg=" + picture.path() +
        "\nEqV2 CF, 10 bands (profile default): ";
    EXPECT_EQ(drawn.out.rfind(head, 0), 0u) << drawn.out;
    const std::string tail = " to 5.997 dB at 989 Hz; written to " + picture.path() + "\n";
    EXPECT_EQ(drawn.out.substr(drawn.out.size() - std::min(tail.size(), drawn.out.size())), tail);
    const std::string svg = picture.read();
    EXPECT_EQ(svg.rfind("<svg xmlns=\"http://www.w3.org/2000/svg\"", 0), 0u);
    EXPECT_NE(svg.find(">Equaliser response: EqV2 CF, 10 bands (profile default)</text>"),
              std::string::npos);
    EXPECT_NE(svg.find(">1k</text>"), std::string::npos);

    MasterRun::TempFile document(R"({"format": "vek-tuning/1", "settings": {"Eq": {"band": {"LF": [
        {"value1": 4, "value2": 1000, "value3": 0, "value4": 0.7071, "value5": 0, "value6": 1}]}}}})");
    const MasterRun::Result csv =
        MasterRun::run({"curve", "LF", "--document=" + document.path(), "--csv", "--points=16"});
    EXPECT_EQ(csv.status, 0) << csv.err;
    EXPECT_EQ(csv.err, "");
    EXPECT_EQ(csv.out.rfind("frequency,total,band0\n20.00,0.000,0.000\n", 0), 0u) << csv.out;
    EXPECT_NE(csv.out.find("\n20000.00,"), std::string::npos);
    EXPECT_EQ(std::count(csv.out.begin(), csv.out.end(), '\n'), 17);
}

}  // namespace
