#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include "MasterRun.h"
#include "CabledDaemon.h"
#include "ServeRig.h"

namespace {

// Every path named in text replaced by a placeholder, the snapshot's time dropped and the
// daemon's response numbers (which count the server's own requests too) blanked: what
// is left must be the same byte for byte.
std::string neutral(std::string text, const std::vector<std::string>& paths) {
    text = std::regex_replace(text, std::regex(R"("self":\d+)"), "\"self\":N");
    // The longest first: /dev/pts/1 would take the front off /dev/pts/10.
    std::vector<std::string> longestFirst = paths;
    std::sort(longestFirst.begin(), longestFirst.end(),
              [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
    for (const std::string& path : longestFirst) {
        for (size_t at = text.find(path); at != std::string::npos; at = text.find(path, at)) {
            text.replace(at, path.size(), "PATH");
        }
    }
    const size_t time = text.find("\"time\": \"");
    if (time != std::string::npos) {
        text.erase(time, text.find('\n', time) - time);
    }
    return text;
}

// Two daemons started alike: one behind the server, one on a line of our own. Each
// command runs once through the server and once directly, and must print the same and
// end with the same status.
class ServeConnectTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(serve.ready()) << serve.output(); }

    void same(std::vector<std::string> args, const std::string& input = "") {
        std::vector<std::string> remote = args;
        std::vector<std::string> local = args;
        remote.insert(remote.begin(), "--connect=" + serve.url());
        local.insert(local.begin(), "--device=" + direct.path());
        const MasterRun::Result r = MasterRun::run(remote, input);
        const MasterRun::Result d = MasterRun::run(local, input);
        const std::vector<std::string> paths{served.path(), direct.path(), first.path(),
                                             second.path()};
        EXPECT_EQ(neutral(r.out, paths), neutral(d.out, paths)) << args[0];
        EXPECT_EQ(r.err, d.err) << args[0];
        EXPECT_EQ(r.status, d.status) << args[0];
    }

    CabledDaemon served;
    CabledDaemon direct;
    ServeRig serve{{served.path()}};
    MasterRun::TempFile first;
    MasterRun::TempFile second;
};

TEST_F(ServeConnectTest, EveryCommandPrintsWhatADirectRunPrints) {
    same({"Gain", "GetChannel"});
    same({"--json", "EqV2", "GetBandConfig", "CF", "7"});
    same({"Common", "SetBypass", "1"});
    same({"--script=-"},
         "Gain SetMaster -7\nGain GetMaster\nEqV2 SetBandConfig CF 3 2 1000 -3.5 0.707 0 1\n"
         "Speaker GetDelay\nCommon GetBypass\n");
    same({"snapshot"});
    same({"snapshot", "--output=" + first.path()});
    const std::string tuning =
        R"({"format": "vek-tuning/1", "settings": {"Common": {"bypass": false},)"
        R"( "Gain": {"master": -2, "channel": {"CF": -6}},)"
        R"( "EqV2": {"band": {"LF": [null, {"value1": 2, "value2": 4464, "value3": 1.5, "value4": 1, "value5": 0, "value6": 1}]}}}})";
    MasterRun::TempFile document(tuning);
    same({"diff", document.path(), "device"});
    same({"--json", "diff", "device", document.path()});
    same({"apply", document.path(), "--dry-run"});
    same({"apply", document.path(), "--bypass"});
    same({"diff", document.path(), "device"});
    same({"--json", "apply", document.path()});
    // Refused before anything is sent, by the same checks.
    same({"Gain", "SetMaster"});
    MasterRun::TempFile bad(R"({"format": "vek-tuning/1", "settings": {"Gain": {"master": "loud"}}})");
    same({"apply", bad.path()});
}

TEST_F(ServeConnectTest, FilesOfAnySizeComeWhole) {
    std::string bytes(3 * 1024 * 1024 + 7, '\0');
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7 + i / 4096);
    }
    MasterRun::TempFile file(bytes);
    same({"Common", "FileContent", file.path(), "--output=" + first.path()});
    EXPECT_EQ(first.read(), bytes);
    same({"--json", "Common", "FileContent", file.path()});

    const ServeRig::Reply list = serve.call("GET", "/api/devices/0/files/Gain");
    EXPECT_EQ(list.status, 200);
    EXPECT_NE(list.body.find(R"("fields":{"feature":"Gain","files":["/media/flash/nvm/mixhub/volume_property.xml"]})"),
              std::string::npos)
        << list.body;
    const ServeRig::Reply content = serve.call("GET", "/api/devices/0/files/Gain/0");
    EXPECT_EQ(content.headers.at("Content-Disposition"), "attachment; filename=\"volume_property.xml\"");
    EXPECT_EQ(serve.call("GET", "/api/devices/0/files/Gain/1").body,
              R"({"error":"Gain has 1 file, no file 1"})"
              "\n");
}

TEST_F(ServeConnectTest, ConnectOptionsAreChecked) {
    const MasterRun::Result both =
        MasterRun::run({"--connect=" + serve.url(), "--device=/dev/null", "Gain", "GetMaster"});
    EXPECT_EQ(both.status, 64);
    EXPECT_EQ(both.err.substr(0, both.err.find('\n')),
              "vek_master: --connect and --device, --devices or --launch exclude each other");
    const MasterRun::Result url = MasterRun::run({"--connect=ftp://x", "Gain", "GetMaster"});
    EXPECT_EQ(url.status, 64);
    EXPECT_EQ(url.err.substr(0, url.err.find('\n')),
              "vek_master: --connect=ftp://x is not http://HOST:PORT");
    const MasterRun::Result index =
        MasterRun::run({"--connect=" + serve.url(), "--device-index=3", "Gain", "GetMaster"});
    EXPECT_EQ(index.status, 64);
    EXPECT_EQ(index.err, "vek_master: no device 3 (devices 0 to 0)\n");
    const MasterRun::Result open = MasterRun::run({"serve", "--listen=0.0.0.0:0", "--device=/dev/null"});
    EXPECT_EQ(open.status, 64);
    EXPECT_EQ(open.err.substr(0, open.err.find('\n')),
              "vek_master: --listen=0.0.0.0:0 lets other machines in: give --token-file=FILE, "
              "whose token every client must then bring");
}

}  // namespace
