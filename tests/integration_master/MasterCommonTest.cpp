#include <string>
#include <vector>

#include "LaunchTest.h"

namespace {

class MasterCommonTest : public LaunchTest {};

struct OneCommand {
    std::vector<std::string> args;
    std::string out;
};

TEST_F(MasterCommonTest, AnswersArePrintedAsLinesOrJson) {
    const OneCommand cases[] = {
        {{"Common", "FileList", "Reverb"}, "feature=Reverb\nfiles=\nOK\n"},
        {{"Common", "SetBypass", "1"}, "OK\n"},
        {{"Common", "FileList", "Gain", "--json"},
         "{\"feature\":\"Common\",\"message\":\"FileListResponse\",\"self\":1,\"status\":\"OK\","
         "\"fields\":{\"feature\":\"Gain\",\"files\":[\"/media/flash/nvm/mixhub/"
         "volume_property.xml\"]},\"rawDataLength\":0}\n"},
    };
    for (const OneCommand& c : cases) {
        const MasterRun::Result r = launch(c.args);
        EXPECT_EQ(r.status, 0) << c.out;
        EXPECT_EQ(r.out, c.out);
        EXPECT_EQ(r.err, stderrWith());
    }
}

TEST_F(MasterCommonTest, FileContentRawDataGoesToTheOutputFile) {
    const std::string bytes("<a>\0b\nAS:1:0:Common:\n", 21);
    MasterRun::TempFile file(bytes);
    MasterRun::TempFile saved;
    const MasterRun::Result r =
        launch({"Common", "FileContent", file.path(), "--output=" + saved.path()});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "path=" + file.path() + "\nrawDataLength=21\nOK\n");
    EXPECT_EQ(saved.read(), bytes);

    const MasterRun::Result json = launch({"--json", "Common", "FileContent", file.path()});
    EXPECT_EQ(json.out,
              "{\"feature\":\"Common\",\"message\":\"FileContentResponse\",\"self\":1,"
              "\"status\":\"OK\",\"fields\":{\"path\":\"" +
                  file.path() + "\"},\"rawDataLength\":21}\n");
}

TEST_F(MasterCommonTest, ScriptStopsAtTheFirstFailureUnlessToldToKeepGoing) {
    MasterRun::TempFile script(
        "# bypass reads fail in this run\n"
        "Common Version M1.0   # trailing comment\n"
        "\n"
        "\tCommon GetBypass\r\n"
        "Common FileList Reverb\n");
    const std::vector<std::string> failing{"AUDIO_SETTING_SIM=fail=getBypass:-5"};
    const std::string upToFailure =
        "> Common Version M1.0\nversion=A00020001\nOK\n> Common GetBypass\nenable=0\nNG\n";

    const MasterRun::Result stopped = launch({"--script=" + script.path()}, "", failing);
    EXPECT_EQ(stopped.status, 1);
    EXPECT_EQ(stopped.out, upToFailure);
    EXPECT_EQ(stopped.err, stderrWith());
    // One request number per command, counted over the whole run.
    const std::string daemonLog = log.read();
    EXPECT_NE(daemonLog.find("+RECV-AS:1:0:Common:VersionRequest:0:OK:<M1.0>:\n-RECV"),
              std::string::npos);
    EXPECT_NE(daemonLog.find("+RECV-AS:2:0:Common:GetBypassRequest:0:OK:\n-RECV"),
              std::string::npos);
    EXPECT_EQ(daemonLog.find("FileListRequest"), std::string::npos);

    // The same script from standard input, to the end.
    const MasterRun::Result all = launch({"--script=-", "--keep-going"}, script.read(), failing);
    EXPECT_EQ(all.status, 1);
    EXPECT_EQ(all.out, upToFailure + "> Common FileList Reverb\nfeature=Reverb\nfiles=\nOK\n");
}

TEST_F(MasterCommonTest, AnUnansweredRequestTimesOut) {
    // Reverb is served only with --reverb.
    const MasterRun::Result r = launch({"--timeout=300", "Reverb", "GetMode"});
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, stderrWith("vek_master: no answer to Reverb GetMode within 300 ms\n"));
}

TEST_F(MasterCommonTest, AnAnswerLargerThanTheDevicesCacheArrivesWhole) {
    // Its tail looks like the awaited answer: as raw data it must not pass for one.
    const std::string content =
        std::string(50000, 'A') + "S:9:0:Common:FileContentResponse:0:OK:<fake>:\n";
    MasterRun::TempFile big(content);
    MasterRun::TempFile saved;
    MasterRun::TempFile script("Common FileContent " + big.path() + " --output=" + saved.path() +
                               "\nCommon Version M1.0\n");
    const MasterRun::Result r = launch({"--script=" + script.path()});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "> Common FileContent " + big.path() + " --output=" + saved.path() +
                         "\npath=" + big.path() +
                         "\nrawDataLength=" + std::to_string(content.size()) +
                         "\nOK\n> Common Version M1.0\nversion=A00020001\nOK\n");
    EXPECT_EQ(r.err, stderrWith());
    EXPECT_EQ(saved.read(), content);
}

TEST_F(MasterCommonTest, ADaemonThatNeverGreetsIsReported) {
    const MasterRun::Result r =
        MasterRun::run({"--launch=/bin/true", "--log=" + log.path(), "Common", "Feature"});
    EXPECT_EQ(r.status, 69);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "daemon log: " + log.path() +
                         "\nvek_master: the daemon ended before it greeted\n"
                         "daemon exited with status 0\n");
}

}  // namespace
