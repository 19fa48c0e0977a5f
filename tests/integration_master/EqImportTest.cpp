#include <gtest/gtest.h>

#include <string>

#include "LaunchTest.h"

class EqImportTest : public LaunchTest {
protected:
    // The daemon's set requests, by message name, in order.
    std::string setRequests() const {
        std::string found;
        const std::string text = log.read();
        for (size_t at = text.find("[AST][INF]onSet"); at != std::string::npos;
             at = text.find("[AST][INF]onSet", at + 1)) {
            found += text.substr(at + 12, text.find(',', at) - at - 12) + ' ';
        }
        return found;
    }
};

namespace {

const char* const kFilters =
    "Preamp: -6.2 dB\n"
    "Filter 1: ON PK Fc 105 Hz Gain -3.9 dB Q 1.41\n"
    "Filter 2: ON LSC Fc 80 Hz Gain 5 dB Q 0.7\n"
    "Filter 3: OFF HP Fc 30 Hz\n";

// The same bands as the device holds them after the import, written out again.
const char* const kExported =
    "Filter 1: ON PK Fc 105 Hz Gain -3.9 dB Q 1.41\n"
    "Filter 2: ON LSC Fc 80 Hz Gain 5 dB Q 0.7\n"
    "Filter 3: OFF PK Fc 30 Hz Gain 0 dB Q 0.707107\n";

}  // namespace

// Imported onto two channels, exported as the device holds it, and that export imported
// again finds nothing to set.
TEST_F(EqImportTest, ImportSetsTheBandsAndGainsAndItsExportReadsBackTheSame) {
    MasterRun::TempFile filters(kFilters);
    MasterRun::TempFile exported(std::string("# EqV2 LF\n") + kExported);
    MasterRun::TempFile script("eq import " + filters.path() + " --channel=LF,CF\n" +
                               "eq export LF\n" + "eq import " + exported.path() +
                               " --channel=LF --preamp=ignore\n");
    const MasterRun::Result r = launch({"--script=" + script.path()});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, stderrWith());
    const std::string common =
        ": 3 EqV2 bands (10 before)\n%: gain G -> H dB (the preamp)\n"
        "%: largest difference from the file: under 0.01 dB\n";
    std::string expected = "> eq import " + filters.path() + " --channel=LF,CF\n";
    for (const char* const channel : {"LF", "CF"}) {
        const bool lf = std::string(channel) == "LF";
        std::string lines = channel + common;
        for (size_t at; (at = lines.find('%')) != std::string::npos;) {
            lines.replace(at, 1, channel);
        }
        lines.replace(lines.find('G'), 1, lf ? "0" : "-1");
        lines.replace(lines.find('H'), 1, lf ? "-6.2" : "-7.2");
        expected += lines;
    }
    expected +=
        "Gain.channel[LF]: 0 -> -6.2\n"
        "Gain.channel[CF]: -1 -> -7.2\n"
        "EqV2.bandCount[LF]: 10 -> 3\n"
        "EqV2.bandCount[CF]: 10 -> 3\n"
        "EqV2.band[LF/0]: value2=31 value3=0 value4=0.707 -> value2=105 value3=-3.9 value4=1.41\n"
        "EqV2.band[LF/1]: value1=2 value2=63 value3=0 value4=0.707 -> value1=1 value2=80 value3=5 "
        "value4=0.7\n"
        "EqV2.band[LF/2]: value1=2 value2=125 value4=0.707 -> value1=0 value2=30 value4=0.707107\n"
        "EqV2.band[CF/0]: value2=31 value3=0 value4=0.707 -> value2=105 value3=-3.9 value4=1.41\n"
        "EqV2.band[CF/1]: value1=2 value2=63 value3=0 value4=0.707 -> value1=1 value2=80 value3=5 "
        "value4=0.7\n"
        "EqV2.band[CF/2]: value1=2 value2=125 value4=0.707 -> value1=0 value2=30 value4=0.707107\n"
        "OK: 10 values set, the device matches\n"
        "> eq export LF\n";
    const std::string out = r.out;
    ASSERT_EQ(out.substr(0, expected.size()), expected);
    const std::string rest = out.substr(expected.size());
    EXPECT_EQ(rest.substr(rest.find('\n') + 1),
              std::string(kExported) + "> eq import " + exported.path() +
                  " --channel=LF --preamp=ignore\n"
                  "LF: 3 EqV2 bands (3 before)\n"
                  "LF: largest difference from the file: under 0.01 dB\n"
                  "OK: nothing to set, the device matches\n");
    EXPECT_EQ(setRequests(),
              "SetChannelRequest SetBandCountRequest SetBandConfigRequest SetBandConfigRequest "
              "SetBandConfigRequest SetBandConfigRequest SetBandConfigRequest "
              "SetBandConfigRequest ");
}

// A file that does not fit is refused with every problem and exit 65, and nothing is
// set; with --fit it goes on, each change listed. The fixed-band equaliser keeps its 20.
TEST_F(EqImportTest, MisfitsAreRefusedWithNothingSentOrFittedWithFit) {
    MasterRun::TempFile filters(
        "Filter 1: ON PK Fc 10 Hz Gain -3 dB Q 1\n"
        "Filter 2: ON PK Fc 1000 Hz Gain 2 dB Q 40\n"
        "Include: other.txt\n");
    const MasterRun::Result refused =
        launch({"eq", "import", filters.path(), "--channel=RS", "--", "--eqMode=1"});
    EXPECT_EQ(refused.status, 65);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              stderrWith("vek_master: " + filters.path() +
                         ": line 3: 'Include: other.txt' is not a Preamp or Filter line\n"
                         "vek_master: " + filters.path() +
                         ": nothing was sent (--fit clamps and drops what does not fit)\n"));

    MasterRun::TempFile fitting(
        "Filter 1: ON PK Fc 10 Hz Gain -3 dB Q 1\nFilter 2: ON PK Fc 1000 Hz Gain 2 dB Q 40\n");
    const MasterRun::Result misfit =
        launch({"eq", "import", fitting.path(), "--channel=RS", "--", "--eqMode=1"});
    EXPECT_EQ(misfit.status, 65);
    EXPECT_EQ(misfit.err,
              stderrWith("vek_master: " + fitting.path() +
                         ": line 1: Fc 10 Hz is outside 20 to 20000 Hz (profile default)\n"
                         "vek_master: " + fitting.path() +
                         ": line 2: Q 40 is outside 0.1 to 16 (profile default)\n"
                         "vek_master: " + fitting.path() +
                         ": nothing was sent (--fit clamps and drops what does not fit)\n"));
    EXPECT_EQ(setRequests(), "");

    const MasterRun::Result fitted =
        launch({"eq", "import", fitting.path(), "--channel=RS", "--fit", "--", "--eqMode=1"});
    EXPECT_EQ(fitted.status, 0) << fitted.err;
    EXPECT_EQ(fitted.out.substr(0, fitted.out.find("RS: largest")),
              "RS: 20 Eq bands (20 before)\n"
              "RS: line 1: Fc 10 Hz clamped to 20 Hz\n"
              "RS: line 2: Q 40 clamped to 16\n");
    // Two bands take the filters, the other eighteen are switched off.
    EXPECT_NE(fitted.out.find("Eq.band[RS/19]: value1=2 -> value1=0\n"), std::string::npos);
    EXPECT_NE(fitted.out.find("OK: 20 values set, the device matches\n"), std::string::npos);
}

// Into a tuning document, no device involved: its bands and gain change and nothing else;
// a dry run leaves the file as it was.
TEST_F(EqImportTest, ImportIntoADocumentAndExportFromIt) {
    MasterRun::TempFile document;
    ASSERT_EQ(launch({"snapshot", "--output=" + document.path()}).status, 0);
    const std::string before = document.read();
    MasterRun::TempFile filters(kFilters);
    const std::vector<std::string> import{"eq", "import", filters.path(), "--channel=L1",
                                          "--document=" + document.path()};
    std::vector<std::string> dry = import;
    dry.push_back("--dry-run");
    const MasterRun::Result planned = MasterRun::run(dry);
    EXPECT_EQ(planned.status, 0) << planned.err;
    EXPECT_EQ(planned.out.substr(planned.out.rfind("L1: largest")),
              "L1: largest difference from the file: under 0.01 dB\nthe document would change\n");
    EXPECT_EQ(document.read(), before);

    const MasterRun::Result done = MasterRun::run(import);
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(done.out,
              "L1: 3 EqV2 bands (5 before)\nL1: gain -4 -> -10.2 dB (the preamp)\n"
              "L1: largest difference from the file: under 0.01 dB\nwritten to " +
                  document.path() + '\n');
    const MasterRun::Result exported =
        MasterRun::run({"eq", "export", "L1", "--document=" + document.path()});
    // A document keeps the float's every digit, where the device's answer has six.
    std::string kept = kExported;
    kept.replace(kept.rfind("0.707107"), 8, "0.70710677");
    EXPECT_EQ(exported.out,
              "# EqV2 L1, 3 bands (profile default, from " + document.path() + ")\n" + kept);
    // Only the channel's gain, band count and bands differ from the snapshot.
    MasterRun::TempFile original(before);
    const MasterRun::Result changed = MasterRun::run({"diff", original.path(), document.path()});
    EXPECT_EQ(changed.out.substr(0, changed.out.find("EqV2.band[")),
              "Gain.channel[L1]: -4 -> -10.2\nEqV2.bandCount[L1]: 5 -> 3\n");
}
