#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "CabledDaemon.h"
#include "LaunchTest.h"

namespace {

class TuningTest : public LaunchTest {
protected:
    void clearLog() const {
        std::FILE* file = std::fopen(log.path().c_str(), "w");
        if (file != nullptr) {
            std::fclose(file);
        }
    }
    // The daemon's request lines that set something, in order: "SetMasterRequest".
    std::vector<std::string> setRequests() const {
        std::vector<std::string> found;
        const std::string text = log.read();
        for (size_t at = text.find("[AST][INF]onSet"); at != std::string::npos;
             at = text.find("[AST][INF]onSet", at + 1)) {
            const size_t end = text.find(',', at);
            found.push_back(text.substr(at + 12, end - at - 12));
        }
        return found;
    }
};

struct Mode {
    std::vector<std::string> daemonArgs;
    std::string eq;      // the equaliser feature served
    int values;          // what a snapshot of the simulated device holds
    std::string reverb;  // a script line for Reverb, "" without it
    std::string reverbDiff;
};

// Snapshot, change single values, see exactly those in the diff, apply the snapshot
// with the bypass held on, and find the device equal to it again.
TEST_F(TuningTest, SnapshotChangeDiffApplyInEveryEqualiserMode) {
    const Mode modes[] = {
        {{}, "EqV2", 97, "", ""},
        {{"--eqMode=1"}, "Eq", 162, "", ""},
        {{"--reverb"}, "EqV2", 98, "Reverb SetMode 3\n", "Reverb.mode: 0 -> 3\n"},
    };
    for (const Mode& mode : modes) {
        MasterRun::TempFile first;
        const std::string changes = "Gain SetMaster -6\n" + mode.eq +
                                    " SetBandConfig CF 3 2 250 -3.5 1.41 0 1\n"
                                    "Speaker SetDelay 0 0 2 2 0.5 0\n" +
                                    mode.reverb;
        const std::string diff = "Gain.master: -12 -> -6\n" + mode.eq +
                                 ".band[CF/3]: value3=0 value4=0.707 -> value3=-3.5 value4=1.41\n"
                                 "Speaker.delay[LS]: 1.5 -> 2\n"
                                 "Speaker.delay[RS]: 1.5 -> 2\n" +
                                 mode.reverbDiff;
        std::string back;
        for (size_t at = 0, end; (end = diff.find('\n', at)) != std::string::npos; at = end + 1) {
            const std::string line = diff.substr(at, end - at);
            const size_t colon = line.find(": ");
            const size_t arrow = line.find(" -> ");
            back += line.substr(0, colon) + ": " + line.substr(arrow + 4) + " -> " +
                    line.substr(colon + 2, arrow - colon - 2) + '\n';
        }
        const std::string snapshot = "snapshot --output=" + first.path() + '\n';
        const std::string compare = "diff " + first.path() + " device\n";
        const std::string apply = "apply " + first.path() + " --bypass\n";
        MasterRun::TempFile script(snapshot + changes + compare + apply + compare);
        std::vector<std::string> args{"--keep-going", "--script=" + script.path(), "--"};
        args.insert(args.end(), mode.daemonArgs.begin(), mode.daemonArgs.end());
        const MasterRun::Result r = launch(args);

        std::string echoed;
        for (size_t at = 0, end; (end = changes.find('\n', at)) != std::string::npos;
             at = end + 1) {
            echoed += "> " + changes.substr(at, end - at) + "\nOK\n";
        }
        const int changed = 4 + (mode.reverb.empty() ? 0 : 1);
        EXPECT_EQ(r.out, "> " + snapshot + first.path() + ": " + std::to_string(mode.values) +
                             " values\n" + echoed + "> " + compare + diff + "> " + apply + back +
                             "OK: " + std::to_string(changed) +
                             " values set, the device matches\n> " + compare)
            << mode.eq;
        EXPECT_EQ(r.status, 1) << "the first diff differs";
        EXPECT_EQ(r.err, stderrWith());
        // The bypass went on before the first value and off after the last.
        // One message sets both delays.
        const size_t messages = changed - 1;
        const std::vector<std::string> sets = setRequests();
        ASSERT_EQ(sets.size(), 2 * messages + 2) << mode.eq;
        EXPECT_EQ(sets[messages], "SetBypassRequest");
        EXPECT_EQ(sets.back(), "SetBypassRequest");
        const std::string daemonLog = log.read();
        // Asking whether reverb is on would set reverb mode 0.
        EXPECT_EQ(daemonLog.find("Reverb:GetEnableRequest"), std::string::npos);
        const size_t on = daemonLog.find(":Common:SetBypassRequest:0:OK:<1>:");
        EXPECT_LT(on, daemonLog.find(":Common:SetBypassRequest:0:OK:<0>:"));
        clearLog();
    }
}

// With nothing else to set, --bypass does not drop the audio for nothing: the device
// already matching gets no set request, and a document that only switches the bypass
// gets that one request.
TEST_F(TuningTest, BypassIsHeldOnlyWhenThereIsSomethingToSet) {
    MasterRun::TempFile same;
    MasterRun::TempFile script("snapshot --output=" + same.path() + "\napply " + same.path() +
                               " --bypass\n");
    const MasterRun::Result matching = launch({"--script=" + script.path()});
    EXPECT_EQ(matching.status, 0);
    EXPECT_EQ(matching.out, "> snapshot --output=" + same.path() + '\n' + same.path() +
                                ": 97 values\n> apply " + same.path() +
                                " --bypass\nOK: nothing to set, the device matches\n");
    EXPECT_EQ(setRequests(), std::vector<std::string>{});
    clearLog();

    MasterRun::TempFile on(R"({"format": "vek-tuning/1", "settings": {"Common": {"bypass": true}}})");
    const MasterRun::Result bypassOnly = launch({"apply", on.path(), "--bypass"});
    EXPECT_EQ(bypassOnly.status, 0);
    EXPECT_EQ(bypassOnly.out,
              "Common.bypass: 0 -> 1\nOK: 1 value set, the device matches\n");
    EXPECT_EQ(setRequests(), std::vector<std::string>{"SetBypassRequest"});
}

TEST_F(TuningTest, DryRunListsTheRequestsInOrderAndSetsNothing) {
    MasterRun::TempFile document(R"({"format": "vek-tuning/1", "settings": {
        "Common": {"bypass": true},
        "Gain": {"master": -3, "channel": {"LS": -2}},
        "Speaker": {"delay": {"LS": 2}},
        "EqV2": {"bandCount": {"L1": 10}, "band": {"L1": [null,
            {"value1": 2, "value2": 63, "value3": 4, "value4": 0.707, "value5": 0, "value6": 1}]}}
    }})");
    const MasterRun::Result r = launch({"apply", document.path(), "--dry-run"});
    EXPECT_EQ(r.status, 0);
    // The bypass first since it goes on; band counts before bands; a channel gain that
    // is already there is not sent.
    EXPECT_EQ(r.out,
              "Common SetBypass 1\n"
              "Gain SetMaster -3\n"
              "EqV2 SetBandCount 10 10 10 10 10 10\n"
              "EqV2 SetBandConfig L1 1 2 63 4 0.707 0 1\n"
              "Speaker SetDelay 0 0 2 1.5 0.5 0\n");
    EXPECT_EQ(r.err, stderrWith());
    EXPECT_EQ(setRequests(), std::vector<std::string>{});
}

TEST_F(TuningTest, LibraryFailuresAreMissingInASnapshotAndFailedInAnApply) {
    const MasterRun::Result snapshot =
        launch({"snapshot"}, "", {"AUDIO_SETTING_SIM=fail=getMasterGain:-5"});
    EXPECT_EQ(snapshot.status, 1);
    EXPECT_NE(snapshot.out.find("\n      \"master\": {\"missing\": \"NG\"},\n"), std::string::npos);
    EXPECT_EQ(snapshot.err, stderrWith("vek_master: 1 value missing: the device answered NG\n"));

    // The master gain is refused; a band value2 of 70000 is kept in 16 bits.
    MasterRun::TempFile document(R"({"format": "vek-tuning/1", "settings": {
        "Gain": {"master": -3, "channel": {"LF": -1}},
        "EqV2": {"band": {"CF": [
            {"value1": 2, "value2": 70000, "value3": 0, "value4": 0.707, "value5": 0, "value6": 1}]}}
    }})");
    // The default profile keeps a band's frequency within 20 Hz to 20 kHz: nothing is sent.
    const MasterRun::Result refused = launch({"apply", document.path()});
    EXPECT_EQ(refused.status, 64);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              stderrWith("vek_master: " + document.path() +
                         ": EqV2.band[CF/0]: EqV2 SetBandConfig value2 70000 is outside 20 to "
                         "20000 Hz (profile default); nothing was sent\n"));
    EXPECT_EQ(setRequests(), std::vector<std::string>{});
    // A profile of no limits lets it through, to the device's 16 bits.
    MasterRun::TempFile open(R"({"name": "open", "band": {"type": 0, "frequency": 1, "gain": 2,
                                 "q": 3, "types": {"2": "peaking"}}, "limits": []})");
    const MasterRun::Result apply = launch({"apply", document.path(), "--profile=" + open.path()},
                                           "", {"AUDIO_SETTING_SIM=fail=setMasterGain:-5"});
    EXPECT_EQ(apply.status, 1);
    EXPECT_EQ(apply.out,
              "Gain.channel[LF]: 0 -> -1\n"
              "EqV2.band[CF/0]: value2=31 -> value2=70000\n"
              "Gain.master: the device answered NG\n"
              "EqV2.band[CF/0]: did not take: the device has value2=4464\n"
              "NG: 2 of 3 values did not take (Gain.master, EqV2.band[CF/0])\n");
    EXPECT_EQ(apply.err, stderrWith());
}

TEST_F(TuningTest, TenMegabytesOfAFileArriveByteForByte) {
    std::string content(10 * 1024 * 1024, '\0');
    std::mt19937 random(14);
    for (char& c : content) {
        c = static_cast<char>(random());
    }
    MasterRun::TempFile file(content);
    MasterRun::TempFile saved;
    const MasterRun::Result r =
        launch({"Common", "FileContent", file.path(), "--output=" + saved.path()});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "path=" + file.path() + "\nrawDataLength=10485760\nOK\n");
    EXPECT_EQ(r.err, stderrWith());
    EXPECT_TRUE(saved.read() == content) << "the saved file differs";
}

// Two documents compared, no device involved: floats by their wire text, values one side
// lacks as absent, values the device could not report as missing.
TEST(TuningDocumentTest, TwoDocumentsCompareByWireText) {
    MasterRun::TempFile a(R"({"format": "vek-tuning/1", "settings": {
        "Gain": {"master": -3, "channel": {"LF": 0.7070000001}},
        "Hfe": {"channel": {"LF": {"flag1": true, "flag2": false, "flag3": true, "value": 0.5}}}}})");
    MasterRun::TempFile b(R"({"format": "vek-tuning/1", "settings": {
        "Gain": {"master": {"missing": "NG"}, "channel": {"LF": 0.707, "RF": 1}},
        "Hfe": {"channel": {"LF": {"flag1": true, "flag2": true, "flag3": true, "value": 0.5}}}}})");
    const MasterRun::Result r = MasterRun::run({"diff", a.path(), b.path()});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out,
              "Gain.master: -3 -> missing (NG)\n"
              "Gain.channel[RF]: (absent) -> 1\n"
              "Hfe.channel[LF]: flag2=0 -> flag2=1\n");
    EXPECT_EQ(r.err, "");

    const MasterRun::Result json = MasterRun::run({"--json", "diff", a.path(), b.path()});
    EXPECT_EQ(json.out,
              "{\"equal\":false,\"differences\":["
              "{\"setting\":\"Gain.master\",\"a\":-3,\"b\":{\"missing\":\"NG\"}},"
              "{\"setting\":\"Gain.channel[RF]\",\"a\":null,\"b\":1},"
              "{\"setting\":\"Hfe.channel[LF]\",\"a\":{\"flag1\":true,\"flag2\":false,"
              "\"flag3\":true,\"value\":0.5},\"b\":{\"flag1\":true,\"flag2\":true,\"flag3\":true,"
              "\"value\":0.5}}]}\n");

    const MasterRun::Result same = MasterRun::run({"diff", a.path(), a.path()});
    EXPECT_EQ(same.status, 0);
    EXPECT_EQ(same.out, "");
}

struct BadDocument {
    std::string text;
    std::string complaint;
};

// Every entry is checked before a line is opened: the running daemon sees nothing.
TEST(TuningDocumentTest, ABadEntryIsNamedAndNothingIsSent) {
    CabledDaemon daemon;
    ASSERT_TRUE(daemon.ready());
    const std::string head = R"({"format": "vek-tuning/1", "settings": )";
    const BadDocument cases[] = {
        {R"({"format": "vek-tuning/2", "settings": {}})",
         "format: expected \"vek-tuning/1\", found \"vek-tuning/2\""},
        {"[1]", "the document is not a JSON object"},
        {head + R"({"Volume": {}}})",
         "settings.Volume: unknown feature (features: Common Gain Eq EqV2 Hfe Vb Speaker "
         "Reverb)"},
        {head + R"({"Gain": {"volume": 1}}})",
         "settings.Gain.volume: unknown setting (settings: master channel fadeBalance)"},
        {head + R"({"Gain": {"master": "loud"}}})",
         "settings.Gain.master: is not a number a float can hold"},
        {head + R"({"Gain": {"channel": {"XX": 0}}}})",
         "settings.Gain.channel: unknown channel XX (channels: LF RF LS RS CF L1)"},
        {head + R"({"Gain": {"fadeBalance": [0, 0]}}})",
         "settings.Gain.fadeBalance: is not an array of 3 int values"},
        {head + R"({"Speaker": {"enable": {"LF": 1}}}})",
         "settings.Speaker.enable.LF: is not true or false"},
        {head + R"({"Hfe": {"channel": {"LS": {"flag1": true}}}}})",
         "settings.Hfe.channel.LS: has no flag2"},
        {head + R"({"EqV2": {"band": {"CF": [{"value1": 4294967296, "value2": 0, "value3": 0,
            "value4": 0, "value5": 0, "value6": 0}]}}}})",
         "settings.EqV2.band.CF[0]: value1 is out of range (-2147483648 to 2147483647)"},
        {head + R"({"EqV2": {"bandCount": {"LF": 1.5}}}})",
         "settings.EqV2.bandCount.LF: is not an integer"},
    };
    for (const BadDocument& c : cases) {
        MasterRun::TempFile document(c.text);
        const MasterRun::Result r =
            MasterRun::run({"--device=" + daemon.path(), "apply", document.path()});
        EXPECT_EQ(r.status, 64) << c.complaint;
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(r.err, "vek_master: " + document.path() + ": " + c.complaint + '\n');
    }
    MasterRun::TempFile broken("{\"format\": ");
    const MasterRun::Result r =
        MasterRun::run({"--device=" + daemon.path(), "diff", broken.path(), "device"});
    EXPECT_EQ(r.status, 64);
    EXPECT_NE(r.err.find(broken.path() + ": parse error at line 1, column 12"), std::string::npos)
        << r.err;
    EXPECT_EQ(daemon.log().find("RECV"), std::string::npos) << daemon.log();
}

// A production line: one PC, a hub of cables, every command on every device at once.
TEST(TuningDevicesTest, SeveralDevicesAnswerOneLineEach) {
    CabledDaemon flexible;
    CabledDaemon fixed({"--eqMode=1"});
    ASSERT_TRUE(flexible.ready() && fixed.ready());
    const std::string a = flexible.path();
    const std::string b = fixed.path();
    const std::vector<std::string> both{"--device=" + a, "--device=" + b};
    const auto run = [&](std::vector<std::string> args) {
        args.insert(args.begin(), both.begin(), both.end());
        return MasterRun::run(args);
    };

    MasterRun::Result r = run({"Gain", "SetMaster", "-7"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, a + ": OK\n" + b + ": OK\n");
    r = run({"--json", "Gain", "GetMaster"});
    EXPECT_EQ(r.out, "{\"device\":\"" + a +
                         "\",\"exit\":0,\"feature\":\"Gain\",\"message\":\"GetMasterResponse\","
                         "\"self\":2,\"status\":\"OK\",\"fields\":{\"masterGain\":-7},"
                         "\"rawDataLength\":0}\n{\"device\":\"" +
                         b +
                         "\",\"exit\":0,\"feature\":\"Gain\",\"message\":\"GetMasterResponse\","
                         "\"self\":2,\"status\":\"OK\",\"fields\":{\"masterGain\":-7},"
                         "\"rawDataLength\":0}\n");

    char directory[] = "/tmp/vek_tuning_XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    const auto fileOf = [&](std::string device) {
        std::replace(device.begin(), device.end(), '/', '_');
        return std::string(directory) + '/' + device.substr(1) + ".json";
    };
    MasterRun::TempFile devices("# the hub\n" + a + "\n" + b + "\n");
    r = MasterRun::run(
        {"--devices=" + devices.path(), "snapshot", "--output=" + std::string(directory)});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, a + ": OK " + fileOf(a) + " (97 values)\n" + b + ": OK " + fileOf(b) +
                         " (162 values)\n");
    const MasterRun::Result reference = MasterRun::run({"diff", fileOf(a), fileOf(b)});
    EXPECT_NE(reference.out.find("\nEq.band[L1/19]: (absent) -> value1=2 value2=20000 "
                                 "value3=0 value4=0.707 value5=0 value6=1\n"),
              std::string::npos);

    // The worst status wins: a device without EqV2, a device that is not there.
    r = run({"--device=/nonexistent/tty", "apply", fileOf(a)});
    EXPECT_EQ(r.status, 74);
    EXPECT_EQ(r.out, a + ": OK: nothing to set, the device matches\n" + b +
                         ": the device does not serve EqV2 (it serves Common Eq Gain Hfe Speaker "
                         "Vb); nothing was set\n/nonexistent/tty: cannot open /nonexistent/tty: "
                         "No such file or directory\n");
    r = run({"diff", fileOf(b), "device"});
    EXPECT_EQ(r.status, 1);
    const std::string differences = a + ": 127 differences: Eq.enable: 1 -> (absent); ";
    EXPECT_EQ(r.out.substr(0, differences.size()), differences);
    EXPECT_EQ(r.out.substr(r.out.find('\n') + 1), b + ": equal\n");
    for (const std::string& device : {a, b}) {
        std::remove(fileOf(device).c_str());
    }
    rmdir(directory);
}

}  // namespace
