#include <string>
#include <vector>

#include "LaunchTest.h"
#include "VekPcapng.h"

namespace {

using vekmaster::VekPcapng;
using vekmaster::VekTrace;

class TraceTest : public LaunchTest {
protected:
    static VekTrace load(const std::string& path) {
        VekTrace trace;
        const std::string problem = VekPcapng::load(path, trace);
        EXPECT_EQ(problem, "");
        return trace;
    }
    static size_t requests(const VekTrace& trace) {
        size_t n = 0;
        for (const auto& p : trace.packets) {
            n += p.outbound && !p.stray ? 1 : 0;
        }
        return n;
    }
    static std::string replayed(size_t requests, size_t differences) {
        return "replayed " + std::to_string(requests) + " requests: " + std::to_string(differences) +
               (differences == 1 ? " difference\n" : " differences\n");
    }

    // A raw data block with line feeds and a frame's text in it: the log's dump of it
    // spans lines, and a frame reader must not take it for a frame.
    MasterRun::TempFile file{"line one\nAS:1:0:Gain:GetMasterRequest:0:OK:\nlast"};
    MasterRun::TempFile capture;
};

TEST_F(TraceTest, ACaptureHoldsEveryFrameAsSentAndTheLogGivesTheSameFrames) {
    MasterRun::TempFile script("Common Version M1.0\nGain SetMaster -10\nGain GetMaster\n"
                               "Common FileContent " + file.path() + "\nEqV2 GetBandConfig CF 7\n"
                               "Reverb GetMode\n");
    MasterRun::TempFile fromLog;
    // Reverb is not served: its request stays unanswered (and the script stops there).
    const MasterRun::Result r =
        launch({"--trace=" + capture.path(), "--script=" + script.path(), "--timeout=200"});
    ASSERT_EQ(r.status, 2) << r.err;
    const VekTrace captured = load(capture.path());
    ASSERT_EQ(captured.lines.size(), 1u);
    EXPECT_EQ(captured.lines[0].compare(0, 9, "/dev/pts/"), 0) << captured.lines[0];
    ASSERT_EQ(captured.packets.size(), 12u);
    EXPECT_TRUE(captured.packets[0].stray);
    EXPECT_EQ(captured.packets[0].bytes, "HELLO!\n");
    EXPECT_TRUE(captured.packets[1].outbound);
    EXPECT_EQ(captured.packets[1].bytes, "AS:1:0:Common:VersionRequest:0:OK:<M1.0>:\n");
    EXPECT_FALSE(captured.packets[2].outbound);
    EXPECT_EQ(captured.packets[2].bytes, "AS:1:0:Common:VersionResponse:0:OK:<A00020001>:\n");
    EXPECT_EQ(captured.packets[8].bytes, "AS:4:0:Common:FileContentResponse:" +
                                             std::to_string(file.read().size()) + ":OK:<" +
                                             file.path() + ">:\n" + file.read());
    EXPECT_EQ(captured.packets[11].bytes, "AS:6:0:Reverb:GetModeRequest:0:OK:\n");
    for (size_t i = 1; i < captured.packets.size(); ++i) {
        EXPECT_GE(captured.packets[i].timeUs, captured.packets[i - 1].timeUs);
    }

    const MasterRun::Result f =
        MasterRun::run({"trace", "from-log", log.path(), "--output=" + fromLog.path()});
    EXPECT_EQ(f.status, 0) << f.err;
    EXPECT_EQ(f.out, fromLog.path() + ": 12 frames from 1 line\n");
    const VekTrace logged = load(fromLog.path());
    EXPECT_EQ(logged.lines, captured.lines);
    ASSERT_EQ(logged.packets.size(), captured.packets.size());
    for (size_t i = 0; i < logged.packets.size(); ++i) {
        EXPECT_EQ(logged.packets[i].outbound, captured.packets[i].outbound) << i;
        EXPECT_EQ(logged.packets[i].stray, captured.packets[i].stray) << i;
        EXPECT_EQ(logged.packets[i].bytes, captured.packets[i].bytes) << i;
        EXPECT_EQ(logged.packets[i].timeUs, 0) << "the daemon's own log has no times";
    }

    const MasterRun::Result shown = MasterRun::run({"trace", "show", capture.path()});
    EXPECT_EQ(shown.status, 0);
    const std::string line = captured.lines[0];
    EXPECT_NE(shown.out.find(' ' + line + " <- stray HELLO!\\n\n"), std::string::npos) << shown.out;
    EXPECT_NE(shown.out.find(' ' + line + " -> AS:3:0:Gain:GetMasterRequest:0:OK:\n"),
              std::string::npos);
    const MasterRun::Result json = MasterRun::run({"trace", "show", fromLog.path(), "--json"});
    EXPECT_NE(json.out.find("{\"time\":\"-\",\"timeUs\":0,\"line\":\"" + line +
                            "\",\"direction\":\"to-master\",\"stray\":false,\"frame\":"
                            "\"AS:3:0:Gain:GetMasterResponse:0:OK:<-10>:\",\"feature\":\"Gain\","
                            "\"message\":\"GetMasterResponse\",\"status\":\"OK\",\"rawData\":0,"
                            "\"fields\":{\"masterGain\":\"-10\"}}\n"),
              std::string::npos)
        << json.out;
}

TEST_F(TraceTest, ASessionReplaysWithoutDifferenceAndAFailingLibraryShowsWhere) {
    MasterRun::TempFile script("Gain SetMaster -10\nGain GetMaster\nCommon FileContent " +
                               file.path() + "\nsnapshot\n");
    const MasterRun::Result r = launch({"--trace=" + capture.path(), "--script=" + script.path()});
    ASSERT_EQ(r.status, 0) << r.err;
    const size_t sent = requests(load(capture.path()));
    ASSERT_GT(sent, 50u) << "a snapshot reads every setting";

    for (const std::string timing : {"--timing=answered", "--timing=original"}) {
        const MasterRun::Result again =
            MasterRun::run({"trace", "replay", capture.path(), "--launch=" VEK_TUNER_PATH, timing});
        EXPECT_EQ(again.status, 0) << again.out << again.err;
        EXPECT_EQ(again.out, replayed(sent, 0));
    }

    const MasterRun::Result failing =
        MasterRun::run({"trace", "replay", capture.path(), "--launch=" VEK_TUNER_PATH},
                       "", {"AUDIO_SETTING_SIM=fail=getMasterGain:-5"});
    EXPECT_EQ(failing.status, 1);
    // The script's GetMaster and the snapshot's: status and value of each.
    const std::string expected =
        "request 2 (Gain GetMasterRequest): Gain GetMasterResponse: status OK, now NG\n"
        "request 2 (Gain GetMasterRequest): Gain GetMasterResponse: masterGain -10, now 0\n";
    EXPECT_EQ(failing.out.compare(0, expected.size(), expected), 0) << failing.out;
    EXPECT_NE(failing.out.find("(Gain GetMasterRequest): Gain GetMasterResponse: status OK, now NG\n",
                               expected.size()),
              std::string::npos);
    EXPECT_EQ(failing.out.substr(failing.out.size() - replayed(sent, 4).size()), replayed(sent, 4));
}

TEST_F(TraceTest, TraceCommandsRefuseWhatTheyCannotDo) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"trace", "replay", "x.pcapng"}, "trace replay needs either --launch=DAEMON or --device=PATH"},
        {{"trace", "from-log", "x.log"}, "trace from-log needs --output=FILE"},
        {{"trace", "show", "x", "--timing=original"}, "--launch, --device and --timing go with trace replay"},
        {{"Gain", "GetMaster", "--timing=original"}, "--timing goes with trace replay"},
        {{"trace", "replay", "x", "--device=/dev/null", "--timing=slow"},
         "--timing=slow is not original or answered"},
    };
    for (const auto& c : cases) {
        const MasterRun::Result r = MasterRun::run(c.first);
        EXPECT_EQ(r.status, 64);
        EXPECT_EQ(r.err, "vek_master: " + c.second + '\n' + MasterRun::kTryHelp);
    }
    MasterRun::TempFile notPcapng("not a capture at all");
    const MasterRun::Result r = MasterRun::run({"trace", "show", notPcapng.path()});
    EXPECT_EQ(r.status, 74);
    EXPECT_EQ(r.err, "vek_master: " + notPcapng.path() + ": not a pcapng file (it does not begin with a section header)\n");
}

}  // namespace
