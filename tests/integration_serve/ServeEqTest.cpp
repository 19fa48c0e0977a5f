#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "CabledDaemon.h"
#include "MasterRun.h"
#include "ServeRig.h"

namespace {

using Json = nlohmann::json;

const char* const kText =
    "Preamp: -3 dB\\n"
    "Filter 1: ON PK Fc 100 Hz Gain 4 dB Q 1\\n"
    "Filter 2: ON HSC Fc 8000 Hz Gain 20 dB Q 0.7\\n";

}  // namespace

// The plan shows the fit and both curves and sends nothing; a misfit is 422 with its
// problems; the import applies what the plan showed, and the export reads it back.
TEST(ServeEqTest, PlanImportAndExportThroughTheServer) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    const std::string body = std::string(R"({"text": ")") + kText + R"(", "channels": "RS")";

    const ServeRig::Reply refused = serve.call("POST", "/api/devices/0/eq/plan", body + "}");
    EXPECT_EQ(refused.status, 422);
    EXPECT_EQ(Json::parse(refused.body)["problems"],
              Json::parse(R"x(["text: line 3: Gain 20 dB is outside -24 to 12 dB (profile default)"])x"));

    const ServeRig::Reply plan =
        serve.call("POST", "/api/devices/0/eq/plan", body + R"(, "fit": true, "points": 64})");
    ASSERT_EQ(plan.status, 200) << plan.body;
    const Json planned = Json::parse(plan.body);
    const Json& channel = planned["channels"][0];
    EXPECT_EQ(channel["changes"][0]["text"], "line 3: Gain 20 dB clamped to 12 dB");
    EXPECT_EQ(channel["changes"][0]["band"], 1);
    EXPECT_EQ(channel["gain"], Json::parse(R"({"from": -2.5, "to": -5.5})"));
    EXPECT_EQ(channel["curves"]["after"].size(), 64u);
    EXPECT_EQ(channel["curves"]["before"].size(), 64u);
    EXPECT_NEAR(channel["largest"]["db"].get<double>(), 8, 0.5);
    EXPECT_EQ(planned["apply"]["requests"].size(), 4u);  // gain, count and two bands
    EXPECT_EQ(daemon.log().find("onSet"), std::string::npos);

    const ServeRig::Reply imported =
        serve.call("POST", "/api/devices/0/eq/import", body + R"(, "fit": true, "points": 64})");
    ASSERT_EQ(imported.status, 200) << imported.body;
    EXPECT_EQ(Json::parse(imported.body)["apply"]["status"], "OK");
    EXPECT_EQ(Json::parse(imported.body)["channels"][0]["curves"]["after"],
              channel["curves"]["after"]);

    const ServeRig::Reply exported = serve.call("GET", "/api/devices/0/eq/RS/export?format=apo");
    ASSERT_EQ(exported.status, 200) << exported.body;
    EXPECT_EQ(Json::parse(exported.body)["text"],
              "# EqV2 RS, 2 bands (profile default)\n"
              "Filter 1: ON PK Fc 100 Hz Gain 4 dB Q 1\n"
              "Filter 2: ON HSC Fc 8000 Hz Gain 12 dB Q 0.7\n");
    EXPECT_EQ(serve.call("GET", "/api/devices/0/eq/XX/export").status, 400);

    // vek_master --connect imports through the server with the same words.
    MasterRun::TempFile file("Filter 1: ON PK Fc 100 Hz Gain 4 dB Q 1\n");
    const MasterRun::Result connected = MasterRun::run(
        {"--connect=" + serve.url(), "eq", "import", file.path(), "--channel=RS"});
    EXPECT_EQ(connected.status, 0) << connected.err;
    EXPECT_EQ(connected.out,
              "RS: 1 EqV2 band (2 before)\n"
              "RS: largest difference from the file: under 0.01 dB\n"
              "EqV2.bandCount[RS]: 2 -> 1\n"
              "OK: 1 value set, the device matches\n");
}
