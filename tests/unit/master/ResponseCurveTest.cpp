#include <gtest/gtest.h>

#include <cmath>

#include "VekChannelBands.h"
#include "VekResponseCurve.h"

using namespace vekmaster;

namespace {

// Type codes of the built-in profile.
constexpr double kOff = 0;
constexpr double kLowShelf = 1;
constexpr double kPeaking = 2;
constexpr double kHighShelf = 3;
constexpr double kLowPass = 4;
constexpr double kHighPass = 5;

VekResponseCurve::Band band(double type, double frequency, double gain, double q) {
    return {type, frequency, gain, q, 0, 1};
}

const VekResponseCurve& curve() {
    static const VekResponseCurve made(VekDeviceProfile::builtIn(), 256);
    return made;
}

}  // namespace

TEST(ResponseCurveTest, APeakingBandHasItsGainAtItsCentreAndNoneTwoDecadesAway) {
    const VekResponseCurve::Band peak = band(kPeaking, 1000, 6, 1);
    EXPECT_NEAR(curve().at(peak, 1000), 6, 0.01);
    EXPECT_NEAR(curve().at(peak, 10), 0, 0.05);
    EXPECT_NEAR(curve().at(peak, 100000.0 / 4), 0, 0.3);  // 20 kHz is only 1.3 decades up
    EXPECT_NEAR(curve().at(band(kPeaking, 200, -9, 2), 2), 0, 0.01);
    EXPECT_NEAR(curve().at(band(kPeaking, 200, -9, 2), 200), -9, 0.01);
}

TEST(ResponseCurveTest, ShelvesReachTheirGainFarIntoTheShelf) {
    const VekResponseCurve::Band low = band(kLowShelf, 200, 6, 0.707);
    EXPECT_NEAR(curve().at(low, 20), 6, 0.1);
    EXPECT_NEAR(curve().at(low, 200), 3, 0.1);  // half the gain at the corner
    EXPECT_NEAR(curve().at(low, 10000), 0, 0.05);
    const VekResponseCurve::Band high = band(kHighShelf, 2000, -8, 0.707);
    EXPECT_NEAR(curve().at(high, 20000), -8, 0.3);
    EXPECT_NEAR(curve().at(high, 20), 0, 0.05);
}

TEST(ResponseCurveTest, PassFiltersAreThreeDecibelsDownAtTheirCornerWithQ0707) {
    const VekResponseCurve::Band low = band(kLowPass, 1000, 0, 0.7071);
    EXPECT_NEAR(curve().at(low, 1000), -3.01, 0.05);
    EXPECT_NEAR(curve().at(low, 50), 0, 0.01);
    EXPECT_LT(curve().at(low, 10000), -39);  // 12 dB an octave
    const VekResponseCurve::Band high = band(kHighPass, 100, 0, 0.7071);
    EXPECT_NEAR(curve().at(high, 100), -3.01, 0.05);
    EXPECT_NEAR(curve().at(high, 10000), 0, 0.01);
}

TEST(ResponseCurveTest, BandsThatMakeNoFilterAreFlat) {
    for (const VekResponseCurve::Band& flat :
         {band(kOff, 1000, 12, 1), band(7, 1000, 12, 1), band(kPeaking, 0, 12, 1),
          band(kPeaking, 30000, 12, 1), band(kPeaking, 1000, 12, 0), band(kPeaking, 1000, NAN, 1),
          band(21e39, 1000, 12, 1), band(-1e300, 1000, 12, 1)}) {
        EXPECT_EQ(curve().at(flat, 1000), 0);
    }
}

TEST(ResponseCurveTest, TheGridIsLogSpacedAndBandsAddInDecibels) {
    const VekResponseCurve small(VekDeviceProfile::builtIn(), 16);
    ASSERT_EQ(small.frequencies().size(), 16u);
    EXPECT_DOUBLE_EQ(small.frequencies().front(), 20);
    EXPECT_NEAR(small.frequencies().back(), 20000, 1e-9);
    EXPECT_NEAR(small.frequencies()[1] / small.frequencies()[0],
                small.frequencies()[15] / small.frequencies()[14], 1e-9);
    EXPECT_EQ(VekResponseCurve(VekDeviceProfile::builtIn(), 5).frequencies().size(), 16u);

    const std::vector<VekResponseCurve::Band> bands = {band(kPeaking, 100, 6, 1),
                                                       band(kHighShelf, 5000, -4, 0.707)};
    const VekResponseCurve::Json json = small.json(bands);
    EXPECT_EQ(json["sampleRate"], 48000);
    ASSERT_EQ(json["bands"].size(), 2u);
    EXPECT_EQ(json["bands"][1]["band"], 1);
    EXPECT_EQ(json["bands"][1]["values"], VekResponseCurve::Json({3, 5000, -4, 0.707, 0, 1}));
    for (size_t i = 0; i < 16; ++i) {
        const double sum = json["bands"][0]["curve"][i].get<double>() +
                           json["bands"][1]["curve"][i].get<double>();
        EXPECT_NEAR(json["total"][i].get<double>(), sum, 0.002) << i;
    }
}

TEST(ResponseCurveTest, ADocumentGivesAChannelsBandsUpToItsCount) {
    VekChannelBands bands;
    const auto document = VekValueJson::Json::parse(R"({"settings": {"EqV2": {
        "bandCount": {"CF": 2},
        "band": {"CF": [{"value1": 2, "value2": 100, "value3": 3, "value4": 1, "value5": 0, "value6": 1},
                        null,
                        {"value1": 2, "value2": 900, "value3": 3, "value4": 1, "value5": 0, "value6": 1}]}}}})");
    EXPECT_EQ(bands.take(document, "CF"), "");
    EXPECT_EQ(bands.feature, "EqV2");
    ASSERT_EQ(bands.bands.size(), 1u);
    EXPECT_EQ(bands.bands[0][1], 100);
    EXPECT_EQ(bands.take(document, "LF"),
              "the document holds no bands of LF (settings.EqV2.band.LF or settings.Eq.band.LF)");
    EXPECT_EQ(bands.take(document, "XX"), "no channel XX (channels: LF RF LS RS CF L1)");
}
