#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "CabledDaemon.h"
#include "EventsClient.h"
#include "ServeRig.h"

namespace {

using Json = nlohmann::json;

const std::string kSettings = "/api/devices/0/settings/";

std::string value(const std::string& json) {
    return R"({"value":)" + json + '}';
}

// The request events' messages and ARGs, in order: "Gain SetChannel -3 -0.5 ...".
std::vector<std::string> requests(const EventsClient& events) {
    std::vector<std::string> out;
    for (const std::string& text : events.messages()) {
        const Json event = Json::parse(text);
        if (event["type"] != "request") {
            continue;
        }
        std::string line = event["request"]["feature"].get<std::string>() + ' ' +
                           event["request"]["message"].get<std::string>();
        for (const Json& arg : event["request"]["args"]) {
            line += ' ' + arg.get<std::string>();
        }
        out.push_back(line);
    }
    return out;
}

TEST(ServeSettingTest, ASettingIsReadAndWrittenByItsAddressAndEveryoneSeesTheRequests) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    EventsClient events(serve.port());
    ASSERT_TRUE(events.open());

    EXPECT_EQ(serve.call("GET", kSettings + "Gain/master").body,
              R"({"setting":"Gain.master","status":"OK","value":-12}
)");
    // One channel of a value one message sets for all: the others go as the device has them.
    EXPECT_EQ(serve.call("PUT", kSettings + "Gain/channel/LF", value("-3")).body,
              R"({"setting":"Gain.channel[LF]","status":"OK"}
)");
    EXPECT_EQ(serve.call("GET", kSettings + "Gain/channel").body,
              R"({"setting":"Gain.channel","status":"OK","value":)"
              R"({"LF":-3,"RF":-0.5,"LS":-2,"RS":-2.5,"CF":-1,"L1":-4}}
)");
    // Some fields of a band: the rest as the device has them.
    EXPECT_EQ(serve.call("PUT", kSettings + "EqV2/band/CF/7", value(R"({"value3":-3.5})")).status,
              200);
    EXPECT_EQ(serve.call("GET", kSettings + "EqV2/band/CF/7").body,
              R"({"setting":"EqV2.band[CF/7]","status":"OK","value":)"
              R"({"value1":2,"value2":4000,"value3":-3.5,"value4":0.707,"value5":0,"value6":1}}
)");
    ASSERT_TRUE(events.await("\"type\":\"response\"", 7));
    EXPECT_EQ(requests(events),
              (std::vector<std::string>{
                  "Gain GetMaster", "Gain GetChannel", "Gain SetChannel -3 -0.5 -2 -2.5 -1 -4",
                  "Gain GetChannel", "EqV2 GetBandConfig CF 7",
                  "EqV2 SetBandConfig CF 7 2 4000 -3.5 0.707 0 1", "EqV2 GetBandConfig CF 7"}));

    // A channel's bands: as many as its band count says.
    const Json bands = Json::parse(serve.call("GET", kSettings + "EqV2/band/CF").body);
    const Json counts = Json::parse(serve.call("GET", kSettings + "EqV2/bandCount/CF").body);
    ASSERT_TRUE(bands["value"].is_array()) << bands;
    EXPECT_EQ(Json(bands["value"].size()), counts["value"]);
    EXPECT_EQ(bands["value"][7]["value3"], -3.5);
}

TEST(ServeSettingTest, SettingsReadTogetherAreAnsweredInOrderEachAsItsGet) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    const ServeRig::Reply reply = serve.call(
        "POST", "/api/devices/0/settings",
        R"({"settings": ["Gain/master", "Gain/treble", "Hfe/channel/LS", "EqV2/band/CF/7"]})");
    ASSERT_EQ(reply.status, 200) << reply.body;
    const Json answers = Json::parse(reply.body)["answers"];
    ASSERT_EQ(answers.size(), 4u);
    // A refused address keeps its place; the others are what GET of each answers.
    EXPECT_EQ(answers[1].dump(), R"({"body":{"error":"no setting Gain.treble"},"status":404})");
    const char* const paths[] = {"Gain/master", "", "Hfe/channel/LS", "EqV2/band/CF/7"};
    for (const size_t i : {0, 2, 3}) {
        EXPECT_EQ(answers[i]["status"], 200);
        EXPECT_EQ(answers[i]["body"], Json::parse(serve.call("GET", kSettings + paths[i]).body));
    }
    EXPECT_EQ(serve.call("POST", "/api/devices/0/settings", R"({"settings": ["Gain"]})").body,
              R"({"error":"expected {\"settings\": [\"FEATURE/SETTING[/CHANNEL[/BAND]]\", ...]}"})"
              "\n");
}

TEST(ServeSettingTest, AnAddressOrValueThatCannotBeServedIsRefusedBeforeTheLine) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    EventsClient events(serve.port());
    ASSERT_TRUE(events.open());
    const struct {
        const char* method;
        std::string path;
        std::string body;
        int status;
        std::string answer;
    } refused[] = {
        {"GET", kSettings + "Gain/treble", "", 404, R"({"error":"no setting Gain.treble"})"},
        {"GET", "/api/devices/2/settings/Gain/master", "", 404,
         R"j({"error":"no device 2 (devices 0 to 0)"})j"},
        {"GET", kSettings + "Gain/master/LF", "", 400,
         R"({"error":"Gain.master has no channels"})"},
        {"GET", kSettings + "EqV2/band/CF/x", "", 400,
         R"({"error":"EqV2.band: band x is not 0 to 39"})"},
        {"GET", kSettings + "EqV2/band/CF/40", "", 400,
         R"({"error":"EqV2.band: band 40 is not 0 to 39"})"},
        {"GET", kSettings + "Hfe/channel/XX", "", 400,
         R"({"error":"Hfe.channel: channel 'XX' is not one of LF RF LS RS CF L1"})"},
        {"PUT", kSettings + "Eq/bandCount", value("[1,1,1,1,1,1]"), 400,
         R"({"error":"Eq.bandCount can only be read"})"},
        {"PUT", kSettings + "Hfe/channel", value("{}"), 400,
         R"({"error":"Hfe.channel: a value is written for one channel"})"},
        {"PUT", kSettings + "EqV2/band/CF/1", value(R"({"value1":3.5})"), 400,
         R"({"error":"EqV2.band[CF/1]: value1 is not an integer"})"},
        {"PUT", kSettings + "Gain/master", R"({"level":1})", 400,
         R"({"error":"the body is not {\"value\": VALUE}"})"},
        {"PUT", kSettings + "Gain/master", value("13"), 400,
         R"j({"error":"Gain SetMaster masterGain 13 is outside -60 to 12 dB (profile default)",)j"
         R"("field":"masterGain","min":-60,"max":12})"},
    };
    for (const auto& r : refused) {
        const ServeRig::Reply reply = serve.call(r.method, r.path, r.body);
        EXPECT_EQ(reply.status, r.status) << r.path;
        EXPECT_EQ(reply.body, r.answer + '\n') << r.path;
    }
    // Nothing of it went on the line: the first request the line sees is this one.
    EXPECT_EQ(serve.call("GET", kSettings + "Gain/master").status, 200);
    ASSERT_TRUE(events.await("\"type\":\"response\""));
    EXPECT_EQ(requests(events), std::vector<std::string>{"Gain GetMaster"});
}

}  // namespace
