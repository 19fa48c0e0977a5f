#include <gtest/gtest.h>

#include <cmath>
#include <complex>

#include "VekFilterFit.h"
#include "VekFilterParser.h"
#include "VekFilterWriter.h"

using namespace vekmaster;

namespace {

using Shape = VekDeviceProfile::Shape;
using Band = VekResponseCurve::Band;
using Preamp = VekFilterFit::Preamp;

const VekDeviceProfile& eqProfile() {
    return VekDeviceProfile::builtIn();
}

const VekResponseCurve& eqGrid() {
    static const VekResponseCurve made(eqProfile(), 256);
    return made;
}

VekFilterList eqParsed(const std::string& text) {
    VekFilterList list;
    const std::vector<std::string> problems = VekFilterParser::parse(text, list);
    EXPECT_TRUE(problems.empty()) << problems.front();
    return list;
}

// A channel of ten flat peaking bands, as the simulator starts, and 0 dB gain.
VekFilterFit::Channel eqChannel(const std::string& feature = "EqV2", size_t bands = 10) {
    return {feature, "LF", std::vector<Band>(bands, Band{2, 1000, 0, 0.707, 0, 1}), -2};
}

VekFilterFit::Result eqFit(const std::string& text, bool fitting = false,
                         const VekFilterFit::Channel& target = eqChannel(),
                         Preamp preamp = Preamp::Channel) {
    return VekFilterFit::fit(eqParsed(text), eqProfile(), target, {fitting, preamp}, eqGrid());
}

// The cookbook's biquads written out again, apart from the library's curve code.
double eqCookbookDb(const std::string& type, double f0, double gain, double q, double f) {
    const double pi = 3.14159265358979323846;
    const double fs = 48000;
    const double w0 = 2 * pi * f0 / fs;
    const double a = std::pow(10, gain / 40);
    const double c = std::cos(w0);
    const double al = std::sin(w0) / (2 * q);
    double b[3];
    double d[3];
    if (type == "PK") {
        b[0] = 1 + al * a, b[1] = -2 * c, b[2] = 1 - al * a;
        d[0] = 1 + al / a, d[1] = -2 * c, d[2] = 1 - al / a;
    } else if (type == "LS" || type == "HS") {
        const double s = type == "LS" ? 1 : -1;  // the high shelf mirrors the low one
        const double r = 2 * std::sqrt(a) * al;
        b[0] = a * ((a + 1) - s * (a - 1) * c + r);
        b[1] = s * 2 * a * ((a - 1) - s * (a + 1) * c);
        b[2] = a * ((a + 1) - s * (a - 1) * c - r);
        d[0] = (a + 1) + s * (a - 1) * c + r;
        d[1] = -s * 2 * ((a - 1) + s * (a + 1) * c);
        d[2] = (a + 1) + s * (a - 1) * c - r;
    } else {
        const double s = type == "LP" ? -1 : 1;
        b[0] = (1 + s * c) / 2, b[1] = -s * (1 + s * c), b[2] = (1 + s * c) / 2;
        d[0] = 1 + al, d[1] = -2 * c, d[2] = 1 - al;
    }
    const std::complex<double> z = std::polar(1.0, -2 * pi * f / fs);
    return 20 * std::log10(std::abs(b[0] + b[1] * z + b[2] * z * z) /
                           std::abs(d[0] + d[1] * z + d[2] * z * z));
}

}  // namespace

// Every type of both forms, fitted to a channel: the curve that will be set is the
// cookbook's within 0.05 dB at every point of the grid.
TEST(FilterImportTest, EveryTypeOfBothFormsSetsTheCookbookCurve) {
    struct Case {
        std::string line;
        std::string type;  // the cookbook's shape
        double f0, gain, q;
    };
    const double butterworth = 1 / std::sqrt(2.0);
    const Case cases[] = {
        {"ON PK Fc 105 Hz Gain -3.9 dB Q 1.41", "PK", 105, -3.9, 1.41},
        {"ON LSC Fc 120 Hz Gain 4.5 dB Q 0.9", "LS", 120, 4.5, 0.9},
        {"ON HSC Fc 6000 Hz Gain -2.5 dB Q 0.6", "HS", 6000, -2.5, 0.6},
        {"ON LS Fc 80 Hz Gain 6 dB Q 0.71", "LS", 80, 6, 0.71},
        {"ON HS Fc 9 kHz Gain 3 dB", "HS", 9000, 3, butterworth},
        // A 6 dB slope: S = 0.5, so 1/Q = sqrt((A + 1/A)(1/S - 1) + 2).
        {"ON LS 6dB Fc 300 Hz Gain -6 dB", "LS", 300, -6,
         1 / std::sqrt((std::pow(10, -6.0 / 40) + std::pow(10, 6.0 / 40)) + 2)},
        {"ON LP Fc 12000 Hz", "LP", 12000, 0, butterworth},
        {"ON LPQ Fc 8000 Hz Q 2", "LP", 8000, 0, 2},
        {"ON HP Fc 40 Hz", "HP", 40, 0, butterworth},
        {"ON HPQ Fc 25 Hz Q 0.5", "HP", 25, 0, 0.5},
    };
    for (const bool rew : {false, true}) {
        for (const Case& c : cases) {
            const std::string text =
                rew ? "Filter Settings file\n\nRoom EQ V5.31\nDated: Mar 1, 2026\nNotes:\n"
                      "Equaliser: Generic\nFilter  1: " + c.line + "\nFilter  2: None\n"
                    : "Preamp: 0 dB\nFilter 1: " + c.line + '\n';
            const VekFilterFit::Result r = eqFit(text);
            ASSERT_TRUE(r.problems.empty()) << c.line;
            ASSERT_EQ(r.bands.size(), 1u) << c.line;
            for (size_t k = 0; k < eqGrid().frequencies().size(); ++k) {
                const double f = eqGrid().frequencies()[k];
                ASSERT_NEAR(r.set[k], eqCookbookDb(c.type, c.f0, c.gain, c.q, f), 0.05)
                    << c.line << " at " << f << " Hz";
            }
            EXPECT_LT(r.largestDb, 0.05) << c.line;
        }
    }
}

TEST(FilterImportTest, BandsTakeTheProfilesCodesAndKeepTheirOtherValues) {
    VekFilterFit::Channel target = eqChannel();
    target.bands[0] = {2, 1000, 0, 0.707, 7, 9};
    const VekFilterFit::Result r = eqFit(
        "Filter 1: ON PK Fc 63.4 Hz Gain -5 dB Q 4\nFilter 2: OFF HSC Fc 5000 Hz Gain 2 dB Q 0.7\n"
        "Filter: ON HP Fc 30 Hz\n",
        false, target);
    ASSERT_EQ(r.bands.size(), 3u);
    EXPECT_EQ(r.bands[0], (Band{2, 63, -5, 4, 7, 9}));
    EXPECT_EQ(r.bands[1], (Band{0, 5000, 2, static_cast<float>(0.7), 0, 1}));
    EXPECT_EQ(r.bands[2], (Band{5, 30, 0, static_cast<float>(VekFilterParser::kButterworthQ), 0, 1}));
    ASSERT_EQ(r.changes.size(), 1u);
    EXPECT_EQ(r.changes[0].text, "line 1: Fc 63.4 Hz set as 63 Hz (the device takes whole hertz)");
    EXPECT_FALSE(r.fixedCount);

    // The fixed-band equaliser keeps its 20 bands: those after the file's are switched off.
    const VekFilterFit::Result fixed = eqFit("Filter 1: ON PK Fc 100 Hz Gain 1 dB Q 1\n", false,
                                           eqChannel("Eq", 20));
    ASSERT_EQ(fixed.bands.size(), 20u);
    EXPECT_TRUE(fixed.fixedCount);
    EXPECT_EQ(fixed.bands[1], (Band{0, 1000, 0, 0.707, 0, 1}));
}

TEST(FilterImportTest, LinesNotUnderstoodAreRefusedWithTheirNumbers) {
    VekFilterList list;
    EXPECT_EQ(VekFilterParser::parse("# auto-EQ\nPreamp: -6.2 dB\n\n"
                                     "Filter 1: ON PK Fc 105 Hz Gain -3.9 dB Q 1.41\n"
                                     "Channel: L\n"
                                     "Filter 2: ON BP Fc 100 Hz Q 2\n"
                                     "Filter 3: ON PK Fc 100 Hz Q 2\n"
                                     "Filter 4: ON LP Fc 100 Hz Q 2\n"
                                     "Filter 5: ON PK Fc abc Hz Gain 1 dB Q 2\n"
                                     "Filter 6: ON LS 18dB Fc 100 Hz Gain 3 dB\n"
                                     "Filter 7: ON PK Fc 100 Hz Gain 1 dB Q 2 BW 1\n"
                                     "Filter 8: MAYBE PK Fc 100 Hz Gain 1 dB Q 2\n"
                                     "Preamp: -1 dB\n"
                                     "Dated: today\n",
                                     list),
              (std::vector<std::string>{
                  "line 5: 'Channel: L' is not a Preamp or Filter line",
                  "line 6: type 'BP' is not read (types: PK LS LSC HS HSC LP LPQ HP HPQ)",
                  "line 7: PK needs Gain",
                  "line 8: LP takes no Q (LPQ does)",
                  "line 9: 'abc' is not a number (Fc)",
                  "line 10: a shelf's slope is above 0 and at most 12 dB an octave",
                  "line 11: 'BW' is not read (expected Fc, Gain or Q)",
                  "line 12: expected ON, OFF or None, not 'MAYBE'",
                  "line 13: a second Preamp (the first is on line 2)",
                  "line 14: 'Dated: today' is not a Preamp or Filter line",
              }));
    EXPECT_EQ(list.preamp, -6.2);
    EXPECT_EQ(list.filters.size(), 1u);
}

TEST(FilterImportTest, MisfitsAreProblemsWithoutFitAndChangesWithIt) {
    const std::string text =
        "Preamp: -1 dB\n"
        "Filter 1: ON PK Fc 10 Hz Gain -3 dB Q 1\n"
        "Filter 2: ON PK Fc 1000 Hz Gain 15 dB Q 20\n";
    const VekFilterFit::Result refused = eqFit(text);
    EXPECT_EQ(refused.problems,
              (std::vector<std::string>{"line 2: Fc 10 Hz is outside 20 to 20000 Hz (profile default)",
                                        "line 3: Gain 15 dB is outside -24 to 12 dB (profile default)",
                                        "line 3: Q 20 is outside 0.1 to 16 (profile default)"}));

    const VekFilterFit::Result fitted = eqFit(text, true);
    EXPECT_TRUE(fitted.problems.empty());
    std::vector<std::string> texts;
    for (const VekFilterFit::Change& change : fitted.changes) {
        texts.push_back(change.text);
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"line 2: Fc 10 Hz clamped to 20 Hz",
                                               "line 3: Gain 15 dB clamped to 12 dB",
                                               "line 3: Q 20 clamped to 16"}));
    EXPECT_EQ(fitted.changes[1].band, 1);
    EXPECT_EQ(fitted.bands[1], (Band{2, 1000, 12, 16, 0, 1}));
    // A clamped gain shows as a shortfall at the peak.
    const VekFilterFit::Result peak = eqFit("Filter: ON PK Fc 1000 Hz Gain 15 dB Q 1\n", true);
    EXPECT_NEAR(peak.largestDb, 3, 0.05);
    EXPECT_NEAR(peak.largestHz, 1000, 30);
}

// 41 filters for 40 bands: the OFF one goes first, then the one that moves the least.
TEST(FilterImportTest, TooManyFiltersAreRefusedOrTheLeastAudibleDropped) {
    std::string forty;
    for (int i = 0; i < 40; ++i) {
        forty += "Filter " + std::to_string(i + 1) + ": ON PK Fc " + std::to_string(50 + 400 * i) +
                 " Hz Gain " + (i == 7 ? "0.2" : "-3") + " dB Q 2\n";
    }
    const VekFilterFit::Result all = eqFit(forty, false, eqChannel("EqV2", 10));
    EXPECT_TRUE(all.problems.empty());
    EXPECT_EQ(all.bands.size(), 40u);
    EXPECT_LT(all.largestDb, 0.05);

    const std::string more = forty + "Filter 41: OFF PK Fc 100 Hz Gain 9 dB Q 1\n";
    EXPECT_EQ(eqFit(more).problems,
              std::vector<std::string>{"LF: 41 filters, but EqV2 takes at most 40 bands a channel"});
    const VekFilterFit::Result dropped = eqFit(more, true);
    ASSERT_EQ(dropped.bands.size(), 40u);
    ASSERT_EQ(dropped.changes.size(), 1u);
    EXPECT_EQ(dropped.changes[0].line, 41);

    // Into the fixed 20 bands, 21 filters lose the 0.2 dB one, on line 8.
    std::string twentyOne;
    for (int i = 0; i < 21; ++i) {
        twentyOne += "Filter: ON PK Fc " + std::to_string(50 + 900 * i) + " Hz Gain " +
                     (i == 7 ? "0.2" : "-3") + " dB Q 2\n";
    }
    EXPECT_EQ(eqFit(twentyOne, false, eqChannel("Eq", 20)).problems,
              std::vector<std::string>{"LF: 21 filters, but Eq takes at most 20 bands a channel"});
    const VekFilterFit::Result fixed = eqFit(twentyOne, true, eqChannel("Eq", 20));
    ASSERT_EQ(fixed.changes.size(), 1u);
    EXPECT_EQ(fixed.changes[0].line, 8);
    EXPECT_EQ(fixed.changes[0].text.rfind("line 8: dropped, Eq takes 20 bands", 0), 0u);
    EXPECT_NEAR(fixed.largestDb, 0.2, 0.01);
}

TEST(FilterImportTest, ThePreampGoesOntoTheChannelTheMasterOrNowhere) {
    const std::string text = "Preamp: -6.2 dB\nFilter 1: ON PK Fc 100 Hz Gain 6 dB Q 1\n";
    const VekFilterFit::Result onChannel = eqFit(text);
    EXPECT_FLOAT_EQ(onChannel.gainFrom, -2);
    EXPECT_FLOAT_EQ(onChannel.gainTo, -8.2f);
    EXPECT_LT(onChannel.largestDb, 0.05);
    VekFilterFit::Channel master = eqChannel();
    master.gain = -12;
    EXPECT_FLOAT_EQ(eqFit(text, false, master, Preamp::Master).gainTo, -18.2f);
    const VekFilterFit::Result ignored = eqFit(text, false, eqChannel(), Preamp::Ignore);
    EXPECT_EQ(ignored.gainTo, -2);
    EXPECT_NEAR(ignored.largestDb, 6.2, 0.01);  // what the file asked for is not set

    VekFilterFit::Channel low = eqChannel();
    low.gain = -28;
    EXPECT_EQ(eqFit(text, false, low).problems,
              std::vector<std::string>{"line 1: Preamp -6.2 dB takes LF's gain from -28 to -34.2 "
                                       "dB, outside -30 to 12 dB"});
    const VekFilterFit::Result clamped = eqFit(text, true, low);
    EXPECT_EQ(clamped.gainTo, -30);
    EXPECT_NEAR(clamped.largestDb, 4.2, 0.01);
}

TEST(FilterImportTest, ExportedBandsReadBackTheSame) {
    const std::vector<Band> bands = {
        {2, 63, -5, 4, 0, 1},          {1, 105, 3.9f, 0.707f, 0, 1}, {3, 8000, -2.25f, 1.3f, 0, 1},
        {4, 16000, 0, static_cast<float>(VekFilterParser::kButterworthQ), 0, 1},
        {5, 30, 0, 0.5, 0, 1},          {0, 440, 1.5f, 2, 0, 1},
    };
    for (const VekFilterList::Form form : {VekFilterList::Form::Apo, VekFilterList::Form::Rew}) {
        const std::string text = VekFilterWriter::write(bands, eqProfile(), form, "EqV2 LF");
        VekFilterList list;
        EXPECT_TRUE(VekFilterParser::parse(text, list).empty()) << text;
        EXPECT_EQ(list.form, form);
        const VekFilterFit::Result r =
            VekFilterFit::fit(list, eqProfile(), eqChannel(), {}, eqGrid());
        EXPECT_TRUE(r.problems.empty()) << text;
        EXPECT_EQ(r.bands, bands) << text;
    }
    EXPECT_EQ(VekFilterWriter::write({bands[0], bands[3]}, eqProfile(), VekFilterList::Form::Apo, "x"),
              "# x\nFilter 1: ON PK Fc 63 Hz Gain -5 dB Q 4\nFilter 2: ON LP Fc 16000 Hz\n");
    const std::string rew = VekFilterWriter::write({bands[1]}, eqProfile(), VekFilterList::Form::Rew, "x");
    EXPECT_EQ(rew.substr(rew.find("Equaliser")),
              "Equaliser: Generic\nFilter 1:  ON  LSC      Fc 105.0 Hz  Gain 3.9 dB  Q 0.707\n");
}
