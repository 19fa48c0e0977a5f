#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <nlohmann/json.hpp>
#include <regex>
#include <thread>

#include "EventsClient.h"
#include "MasterRun.h"
#include "CabledDaemon.h"
#include "ServeRig.h"

namespace {

using Json = nlohmann::json;

const char* const kEqV2Features = R"(["Common","EqV2","Gain","Hfe","Speaker","Vb"])";

std::string message(const std::string& feature, const std::string& name, const std::string& args = "") {
    return R"({"feature":")" + feature + R"(","message":")" + name + '"' +
           (args.empty() ? "" : R"(,"args":)" + args) + '}';
}

std::string error(const std::string& text) {
    return Json{{"error", text}}.dump() + '\n';
}

std::vector<Json> parsed(const std::vector<std::string>& messages) {
    std::vector<Json> out;
    for (const std::string& text : messages) {
        out.push_back(Json::parse(text));
    }
    return out;
}

TEST(ServeApiTest, TwoLinesAreServedAtOnceEachWithItsOwnFeatures) {
    CabledDaemon flexible;
    CabledDaemon fixed({"--reverb", "--eqMode=1"});
    ServeRig serve({flexible.path(), fixed.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();

    EXPECT_EQ(serve.call("GET", "/api/devices").body,
              R"({"devices":[{"index":0,"path":")" + flexible.path() +
                  R"(","state":"connected","version":"A00020001","features":)" + kEqV2Features +
                  R"(},{"index":1,"path":")" + fixed.path() +
                  R"(","state":"connected","version":"A00020001","features":["Common","Eq","Gain","Hfe","Reverb","Speaker","Vb"]}]})"
                  "\n");
    // The lines connect each on its own thread, in either order.
    const std::string out = serve.output();
    EXPECT_EQ(out.rfind("vek_master serve: listening on http://127.0.0.1:" +
                            std::to_string(serve.port()) + '\n',
                        0),
              0u);
    EXPECT_NE(out.find(flexible.path() + ": connected (A00020001; Common EqV2 Gain Hfe Speaker Vb)\n"),
              std::string::npos);
    EXPECT_NE(out.find(fixed.path() +
                       ": connected (A00020001; Common Eq Gain Hfe Reverb Speaker Vb)\n"),
              std::string::npos);

    // After the server's two identifying requests, the first answer of each line is its 3rd.
    const ServeRig::Reply set =
        serve.call("POST", "/api/devices/0/request", message("Gain", "SetMaster", "[-6.5]"));
    EXPECT_EQ(set.status, 200);
    EXPECT_EQ(set.headers.at("Content-Type"), "application/json");
    EXPECT_EQ(set.body,
              R"({"feature":"Gain","message":"SetMasterResponse","self":3,"status":"OK","fields":{},)"
              R"("rawDataLength":0,"frame":"AS:3:0:Gain:SetMasterResponse:0:OK:"})"
              "\n");
    EXPECT_EQ(serve.call("POST", "/api/devices/1/request", message("Reverb", "SetMode", "[\"2\"]"))
                  .status,
              200);
    EXPECT_EQ(serve.call("POST", "/api/devices/1/request", message("Reverb", "GetMode")).body,
              R"({"feature":"Reverb","message":"GetModeResponse","self":4,"status":"OK","fields":{"mode":2},)"
              R"("rawDataLength":0,"frame":"AS:4:0:Reverb:GetModeResponse:0:OK:<2>:"})"
              "\n");
    EXPECT_EQ(serve.call("POST", "/api/devices/0/request", message("Gain", "GetMaster")).body,
              R"({"feature":"Gain","message":"GetMasterResponse","self":4,"status":"OK","fields":{"masterGain":-6.5},)"
              R"("rawDataLength":0,"frame":"AS:4:0:Gain:GetMasterResponse:0:OK:<-6.5>:"})"
              "\n");
    // An array field takes its elements flat or as one array.
    EXPECT_EQ(serve.call("POST", "/api/devices/0/request",
                         message("Gain", "SetChannel", "[[0, -1, -2, -3, -4, -5]]"))
                  .status,
              200);
    EXPECT_NE(serve.call("POST", "/api/devices/0/request", message("Gain", "GetChannel"))
                  .body.find(R"("fields":{"channelGain":[0,-1,-2,-3,-4,-5]})"),
              std::string::npos);
}

// Two clients change one device at once: each gets every answer once, the line carries
// one request at a time, and each client sees its own changes in its own order.
TEST(ServeApiTest, TwoClientsOnOneLineAreAnsweredOnceAndInTurn) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    EventsClient events(serve.port());
    ASSERT_TRUE(events.open());

    constexpr int kRounds = 25;
    std::atomic<int> wrong{0};
    const auto client = [&](const std::string& set, const std::string& get, const std::string& field,
                            int base, const std::string& rest) {
        for (int i = 0; i < kRounds; ++i) {
            const std::string value = std::to_string(base - i);
            const ServeRig::Reply s = serve.call("POST", "/api/devices/0/request",
                                                 message("Gain", set, "[" + value + rest + "]"));
            const ServeRig::Reply g =
                serve.call("POST", "/api/devices/0/request", message("Gain", get));
            const bool mine = g.body.find("\"" + field + "\":" + value) != std::string::npos ||
                              g.body.find("\"" + field + "\":[" + value + ",") != std::string::npos;
            wrong += s.status == 200 && g.status == 200 && mine ? 0 : 1;
        }
    };
    std::thread first(client, "SetMaster", "GetMaster", "masterGain", -1, "");
    std::thread second(client, "SetFadeBalance", "GetFadeBalance", "fadeBalance", 100, ", 0, 15");
    first.join();
    second.join();
    EXPECT_EQ(wrong, 0);

    // 4 * kRounds requests, the two clients' on the line together: the answers come in
    // the order of the requests, each to the client that sent it.
    ASSERT_TRUE(events.await("\"type\":\"response\"", 4 * kRounds));
    std::vector<Json> requests;
    std::vector<Json> responses;
    for (const Json& event : parsed(events.messages())) {
        if (event["type"] == "request") {
            requests.push_back(event);
        } else if (event["type"] == "response") {
            responses.push_back(event);
        }
    }
    ASSERT_EQ(requests.size(), 4u * kRounds);
    ASSERT_EQ(responses.size(), 4u * kRounds);
    for (size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(requests[i]["client"], responses[i]["client"]);
        EXPECT_EQ(requests[i]["request"]["message"].get<std::string>() + "Response",
                  responses[i]["reply"]["message"]);
        EXPECT_EQ(responses[i]["reply"]["self"], 3 + i);
    }
}

TEST(ServeApiTest, ASubscriberSeesEveryLineAndEveryRequestOfAnotherClient) {
    CabledDaemon first;
    CabledDaemon second;
    ServeRig serve({first.path(), second.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    EventsClient events(serve.port());
    ASSERT_TRUE(events.open());

    const MasterRun::Result r = MasterRun::run({"--connect=" + serve.url(), "--device-index=1",
                                                "Gain", "SetMaster", "-4"});
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_TRUE(events.await("\"type\":\"response\""));
    const std::vector<Json> seen = parsed(events.messages());
    ASSERT_EQ(seen.size(), 4u);
    // The opening: each line's state.
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(seen[i]["type"], "state");
        EXPECT_EQ(seen[i]["device"], i);
        EXPECT_EQ(seen[i]["state"], "connected");
        EXPECT_EQ(seen[i]["features"].dump(), kEqV2Features);
    }
    EXPECT_EQ(seen[0]["path"], first.path());
    const std::regex time(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z)");
    const std::regex client(R"(127\.0\.0\.1:\d+)");
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(std::regex_match(seen[i].value("time", ""), time)) << seen[i];
    }
    const Json& request = seen[2];
    EXPECT_EQ(request["type"], "request");
    EXPECT_EQ(request["device"], 1);
    EXPECT_EQ(request["path"], second.path());
    EXPECT_TRUE(std::regex_match(request["client"].get<std::string>(), client)) << request;
    EXPECT_EQ(request["request"].dump(), R"({"args":["-4"],"feature":"Gain","message":"SetMaster"})");
    EXPECT_TRUE(std::regex_match(request["time"].get<std::string>(), time)) << request;
    const Json& response = seen[3];
    EXPECT_EQ(response["client"], request["client"]);
    EXPECT_EQ(response["reply"]["message"], "SetMasterResponse");
    EXPECT_EQ(response["reply"]["status"], "OK");
    // Both name the HTTP request that caused them: one the server named, or the
    // client's own name for it.
    EXPECT_TRUE(std::regex_match(request.value("requestId", ""), std::regex(R"(\d+)"))) << request;
    EXPECT_EQ(response["requestId"], request["requestId"]);
    EXPECT_EQ(serve.call("POST", "/api/devices/0/request", message("Gain", "GetMaster"),
                         {{"Vek-Request-Id", "tab-1:7"}})
                  .status,
              200);
    ASSERT_TRUE(events.await("\"type\":\"response\"", 2));
    const std::vector<Json> more = parsed(events.messages());
    ASSERT_EQ(more.size(), 6u);
    EXPECT_EQ(more[4]["requestId"], "tab-1:7");
    EXPECT_EQ(more[5]["requestId"], "tab-1:7");
}

TEST(ServeApiTest, AStoppedDaemonMarksItsLineLostUntilItGreetsAgain) {
    CabledDaemon lost;
    CabledDaemon other;
    ServeRig serve({lost.path(), other.path()}, {"--timeout=500"});
    ASSERT_TRUE(serve.ready()) << serve.output();
    EventsClient events(serve.port());
    ASSERT_TRUE(events.open());
    const std::string get = message("Gain", "GetMaster");

    ASSERT_EQ(lost.stop(), 0);
    const ServeRig::Reply unanswered = serve.call("POST", "/api/devices/0/request", get);
    EXPECT_EQ(unanswered.status, 504);
    EXPECT_EQ(unanswered.body, error("no answer to Gain GetMaster within 500 ms"));
    ASSERT_TRUE(serve.awaitState(0, "disconnected"));
    const std::string reason = "no answer to Gain GetMaster within 500 ms, nor to a version probe";
    EXPECT_TRUE(events.await(R"("reason":")" + reason + "\""));
    EXPECT_NE(serve.output().find(lost.path() + ": disconnected (" + reason + ")\n"),
              std::string::npos);

    const ServeRig::Reply refused = serve.call("POST", "/api/devices/0/request", get);
    EXPECT_EQ(refused.status, 503);
    EXPECT_EQ(refused.body, error(lost.path() + " is disconnected"));
    EXPECT_EQ(serve.call("POST", "/api/devices/1/request", get).status, 200);

    ASSERT_TRUE(lost.start());
    ASSERT_TRUE(serve.awaitState(0, "connected"));
    EXPECT_TRUE(events.await(R"("device":0,"path":")" + lost.path() + R"(","state":"connected")", 2));
    const ServeRig::Reply again = serve.call("POST", "/api/devices/0/request", get);
    EXPECT_EQ(again.status, 200);
    EXPECT_NE(again.body.find(R"("masterGain":-12)"), std::string::npos) << again.body;
}

TEST(ServeApiTest, BadInputIsRefusedWithItsStatusAndServingGoesOn) {
    CabledDaemon daemon;
    const std::string token = "a-token-for-these-tests";
    MasterRun::TempFile tokenFile(token + "\n");
    ServeRig serve({daemon.path()}, {"--token-file=" + tokenFile.path(), "--client-timeout=500"},
                   token);
    ASSERT_TRUE(serve.ready()) << serve.output();
    const std::map<std::string, std::string> bearer{{"Authorization", "Bearer " + token}};
    const std::string host = "127.0.0.1:" + std::to_string(serve.port());
    const auto with = [&](std::map<std::string, std::string> more) {
        more.insert(bearer.begin(), bearer.end());
        return more;
    };
    const auto post = [&](const std::string& body) {
        return serve.call("POST", "/api/devices/0/request", body, bearer);
    };
    struct Case {
        const char* what;
        ServeRig::Reply reply;
        int status;
        std::string body;
    };
    const Case cases[] = {
        {"no token", serve.call("GET", "/api/devices"), 401,
         error("this server needs a token: Authorization: Bearer TOKEN")},
        {"wrong token", serve.call("GET", "/api/devices", "", {{"Authorization", "Bearer nope"}}),
         401, error("the token is not this server's")},
        {"foreign Host", serve.call("GET", "/api/devices", "", with({{"Host", "evil.example:" + std::to_string(serve.port())}})),
         403, error("Host 'evil.example:" + std::to_string(serve.port()) + "' does not name this server")},
        {"foreign Origin",
         serve.call("POST", "/api/devices/0/request", message("Gain", "SetMaster", "[0]"),
                    with({{"Origin", "http://evil.example"}})),
         403, error("requests from the page at http://evil.example are not accepted")},
        {"body too large",
         serve.raw("POST /api/devices/0/request HTTP/1.1\r\nHost: " + host +
                   "\r\nAuthorization: Bearer " + token + "\r\nContent-Length: 2000000\r\n\r\n{"),
         413, error("the body is larger than 1048576 bytes")},
        {"not JSON", post("{\"feature\": Gain}"), 400, ""},
        {"not an object", post("[1]"), 400, error("the body is not a JSON object")},
        {"unknown feature", post(message("Loud", "SetMaster")), 400,
         error("unknown feature 'Loud' (features: Common Gain Reverb Eq EqV2 Hfe Vb Speaker)")},
        {"unknown message", post(message("Gain", "SetVolume")), 400,
         error("Gain has no message 'SetVolume' (messages: GetMaster SetMaster GetChannel "
               "SetChannel GetFadeBalance SetFadeBalance)")},
        {"missing argument", post(message("Gain", "SetMaster")), 400,
         error("Gain SetMaster takes 1 argument (masterGain:float), got 0")},
        {"argument of a wrong type", post(message("Gain", "SetChannel", R"([0, "x", 0, 0, 0, 0])")),
         400, error("Gain SetChannel: the arguments do not read as channelGain:float[6]")},
        {"argument out of range", post(message("Gain", "SetChannel", "[0, 1e300, 0, 0, 0, 0]")), 400,
         error("Gain SetChannel: argument 2 (channelGain:float[6]) is not a number a float can hold")},
        {"unknown route", serve.call("GET", "/api/nothing", "", bearer), 404,
         error("no route GET /api/nothing (GET /api lists them)")},
        {"unknown device", serve.call("GET", "/api/devices/9/snapshot", "", bearer), 404,
         error("no device 9 (devices 0 to 0)")},
        {"wrong method", serve.call("GET", "/api/devices/0/request", "", bearer), 405,
         error("GET is not for /api/devices/0/request (POST is)")},
        {"bad document", serve.call("POST", "/api/devices/0/apply", R"({"format":"other"})", bearer),
         400, ""},
        {"not HTTP", serve.raw("HELLO THERE\r\n\r\n"), 400, ""},
        {"slow client",
         serve.raw("POST /api/devices/0/request HTTP/1.1\r\nHost: " + host +
                   "\r\nContent-Length: 40\r\n\r\n{\"feature\""),
         408, error("the request did not come whole within 500 ms")},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.reply.status, c.status) << c.what << ": " << c.reply.body;
        if (!c.body.empty()) {
            EXPECT_EQ(c.reply.body, c.body) << c.what;
        } else {
            EXPECT_EQ(c.reply.body.rfind("{\"error\":\"", 0), 0u) << c.what << ": " << c.reply.body;
        }
    }
    EXPECT_EQ(cases[0].reply.headers.at("WWW-Authenticate"), "Bearer");
    EXPECT_EQ(cases[14].reply.headers.at("Allow"), "POST");

    const ServeRig::Reply upgrade = serve.call(
        "GET", "/api/events?access_token=" + token, "",
        {{"Origin", "http://evil.example"}, {"Connection", "Upgrade"}, {"Upgrade", "websocket"},
         {"Sec-WebSocket-Version", "13"}, {"Sec-WebSocket-Key", "dGhlIHNhbXBsZSBub25jZQ=="}});
    EXPECT_EQ(upgrade.status, 403);
    EXPECT_FALSE(EventsClient(serve.port(), "http://evil.example",
                              "/api/events?access_token=" + token)
                     .open());
    EventsClient own(serve.port(), "http://" + host, "/api/events?access_token=" + token);
    EXPECT_TRUE(own.open());

    // Nothing refused reached the line, and the server still serves.
    EXPECT_EQ(daemon.log().find("Set"), std::string::npos) << daemon.log();
    EXPECT_EQ(post(message("Gain", "SetMaster", "[-1]")).status, 200);
    EXPECT_NE(daemon.log().find("SetMasterRequest"), std::string::npos);
}

// Values outside the profile's ranges never reach a line; the curve routes read a
// channel's bands from either equaliser, or take them from the body.
TEST(ServeApiTest, TheProfileGuardsEveryValueAndTheCurvesComeFromTheBands) {
    CabledDaemon flexible;
    CabledDaemon fixed({"--eqMode=1"});
    MasterRun::TempFile profile(R"({"name": "quiet", "sampleRate": 44100,
        "band": {"type": 0, "frequency": 1, "gain": 2, "q": 3, "types": {"2": "peaking"}},
        "limits": [{"feature": "Gain", "message": "SetMaster", "field": "masterGain",
                    "min": -40, "max": 0, "unit": "dB"}]})");
    ServeRig serve({flexible.path(), fixed.path()}, {"--profile=" + profile.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    EXPECT_NE(serve.output().find("vek_master serve: device profile quiet (" + profile.path() + ")\n"),
              std::string::npos);
    const Json described = Json::parse(serve.call("GET", "/api/profile").body);
    EXPECT_EQ(described["source"], profile.path());
    EXPECT_EQ(described["limits"][0],
              Json::parse(R"({"feature": "Gain", "message": "SetMaster", "field": "masterGain",
                              "min": -40, "max": 0, "unit": "dB"})"));
    // The schema gives each setting's messages, keys and fields with this profile's ranges.
    const Json schema = Json::parse(serve.call("GET", "/api/schema").body);
    EXPECT_EQ(schema["profile"]["name"], "quiet");
    EXPECT_EQ(schema["channels"], Json::parse(R"(["LF","RF","LS","RS","CF","L1"])"));
    const auto setting = [&](const std::string& path) {
        for (const Json& s : schema["settings"]) {
            if (s["path"] == path) {
                return s;
            }
        }
        return Json();
    };
    EXPECT_EQ(setting("Gain.master"), Json::parse(R"({"feature": "Gain", "name": "master",
        "path": "Gain.master", "range": "one", "get": "GetMaster", "set": "SetMaster",
        "lastSet": false, "disturbs": false, "needs": ["Gain"],
        "fields": [{"name": "masterGain", "type": "float", "base": "float", "count": 1,
                    "limits": [{"min": -40, "max": 0, "unit": "dB"}]}]})"));
    const Json bands = setting("EqV2.band");
    EXPECT_EQ(bands["bands"], Json::parse(R"({"max": 40, "count": "EqV2.bandCount"})"));
    EXPECT_EQ(bands["channels"].size(), 6u);
    EXPECT_EQ(bands["fields"].size(), 6u);
    EXPECT_EQ(setting("Reverb.enable")["set"], nullptr);
    EXPECT_EQ(setting("Common.bypass")["needs"], Json::array());
    EXPECT_EQ(schema["messages"].size(), 40u);

    const ServeRig::Reply loud =
        serve.call("POST", "/api/devices/0/request", message("Gain", "SetMaster", "[3]"));
    EXPECT_EQ(loud.status, 400);
    EXPECT_EQ(loud.body,
              R"x({"error":"Gain SetMaster masterGain 3 is outside -40 to 0 dB (profile quiet)",)x"
              R"("field":"masterGain","min":-40,"max":0})"
              "\n");
    const ServeRig::Reply applied = serve.call(
        "POST", "/api/devices/0/apply",
        R"({"format":"vek-tuning/1","settings":{"Gain":{"master":-50}}})");
    EXPECT_EQ(applied.status, 400);
    EXPECT_EQ(Json::parse(applied.body)["error"],
              "Gain.master: Gain SetMaster masterGain -50 is outside -40 to 0 dB (profile quiet)");
    EXPECT_EQ(serve.call("POST", "/api/devices/0/request", message("Gain", "SetMaster", "[-3]")).status,
              200);
    EXPECT_EQ(flexible.log().find("SetMasterRequest:0:OK:<3>"), std::string::npos);
    EXPECT_EQ(flexible.log().find("SetMasterRequest:0:OK:<-50>"), std::string::npos);
    EXPECT_NE(flexible.log().find("SetMasterRequest:0:OK:<-3>"), std::string::npos);

    // The simulator's CF holds ten flat peaking bands; one made +6 dB at 1 kHz shows.
    ASSERT_EQ(serve.call("POST", "/api/devices/0/request",
                         message("EqV2", "SetBandConfig", R"(["CF",5,2,1000,6,1,0,1])"))
                  .status,
              200);
    const ServeRig::Reply read = serve.call("GET", "/api/devices/0/eq/CF/curve?points=16");
    ASSERT_EQ(read.status, 200) << read.body;
    const Json curve = Json::parse(read.body);
    EXPECT_EQ(curve["device"], 0);
    EXPECT_EQ(curve["feature"], "EqV2");
    EXPECT_EQ(curve["channel"], "CF");
    EXPECT_EQ(curve["sampleRate"], 44100);
    EXPECT_EQ(curve["frequencies"].size(), 16u);
    EXPECT_EQ(curve["frequencies"][0], 20);
    ASSERT_EQ(curve["bands"].size(), 10u);
    EXPECT_EQ(curve["bands"][5]["values"], Json::parse("[2, 1000, 6, 1, 0, 1]"));
    double peak = -100;
    for (const Json& value : curve["total"]) {
        peak = std::max(peak, value.get<double>());
    }
    EXPECT_GT(peak, 4.5);  // the 16 points straddle 1 kHz
    EXPECT_LE(peak, 6.001);
    const Json fixedCurve = Json::parse(serve.call("GET", "/api/devices/1/eq/L1/curve").body);
    EXPECT_EQ(fixedCurve["feature"], "Eq");
    EXPECT_EQ(fixedCurve["frequencies"].size(), 256u);
    // vek_master --json curve prints the route's object, the device's index included.
    const MasterRun::Result cli =
        MasterRun::run({"--connect=" + serve.url(), "--device-index=1", "--profile=" + profile.path(),
                        "--json", "curve", "L1"});
    ASSERT_EQ(cli.status, 0) << cli.err;
    EXPECT_EQ(Json::parse(cli.out), fixedCurve);
    EXPECT_EQ(fixedCurve["device"], 1);

    const ServeRig::Reply posted =
        serve.call("POST", "/api/curve", R"({"bands": [[2, 1000, -6, 1, 0, 1]], "points": 16})");
    ASSERT_EQ(posted.status, 200);
    EXPECT_EQ(Json::parse(posted.body)["bands"][0]["band"], 0);
    EXPECT_EQ(Json::parse(posted.body).count("device"), 0u);
    const std::pair<ServeRig::Reply, std::string> refused[] = {
        {serve.call("GET", "/api/devices/0/eq/CF/curve?points=8"),
         error("points must be a whole number from 16 to 2048")},
        {serve.call("GET", "/api/devices/0/eq/XX/curve"),
         error("no channel XX (channels: LF RF LS RS CF L1)")},
        {serve.call("POST", "/api/curve", R"({"bands": [[2, 1000]]})"),
         error("bands[0] is not an array of six numbers")},
    };
    for (const auto& r : refused) {
        EXPECT_EQ(r.first.status, 400);
        EXPECT_EQ(r.first.body, r.second);
    }
}

// A page's reads go out as one batch: every message answered in its place, a refused
// one never sent, every event named by the batch's request.
TEST(ServeApiTest, ABatchIsAnsweredInOrderWithEachRefusalInItsPlace) {
    CabledDaemon device;
    MasterRun::TempFile profile(R"({"name": "quiet", "sampleRate": 44100,
        "band": {"type": 0, "frequency": 1, "gain": 2, "q": 3, "types": {"2": "peaking"}},
        "limits": [{"feature": "Gain", "message": "SetMaster", "field": "masterGain",
                    "min": -40, "max": 0, "unit": "dB"}]})");
    ServeRig serve({device.path()}, {"--profile=" + profile.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    EventsClient events(serve.port());
    ASSERT_TRUE(events.open());

    const ServeRig::Reply reply = serve.call(
        "POST", "/api/devices/0/batch",
        "{\"messages\": [" + message("Gain", "SetMaster", "[-3]") + ',' +
            message("Gain", "SetMaster", "[3]") + ',' + message("Gain", "GetMaster") + ',' +
            message("Gain", "Louder") + "]}",
        {{"Vek-Request-Id", "page-1"}});
    ASSERT_EQ(reply.status, 200) << reply.body;
    EXPECT_EQ(reply.body,
              R"({"answers":[{"status":200,"body":)"
              R"({"feature":"Gain","message":"SetMasterResponse","self":3,"status":"OK","fields":{},)"
              R"("rawDataLength":0,"frame":"AS:3:0:Gain:SetMasterResponse:0:OK:"}},)"
              R"x({"status":400,"body":{"error":"Gain SetMaster masterGain 3 is outside -40 to 0 dB (profile quiet)",)x"
              R"("field":"masterGain","min":-40,"max":0}},{"status":200,"body":)"
              R"({"feature":"Gain","message":"GetMasterResponse","self":4,"status":"OK",)"
              R"("fields":{"masterGain":-3},"rawDataLength":0,)"
              R"("frame":"AS:4:0:Gain:GetMasterResponse:0:OK:<-3>:"}},)"
              R"x({"status":400,"body":{"error":"Gain has no message 'Louder' (messages: GetMaster SetMaster )x"
              R"x(GetChannel SetChannel GetFadeBalance SetFadeBalance)"}}]})x"
              "\n");
    EXPECT_EQ(device.log().find("SetMasterRequest:0:OK:<3>"), std::string::npos);
    ASSERT_TRUE(events.await("\"type\":\"response\"", 2));
    const std::vector<Json> seen = parsed(events.messages());
    size_t named = 0;
    for (const Json& event : seen) {
        if (event["type"] != "state") {
            EXPECT_EQ(event["requestId"], "page-1") << event;
            ++named;
        }
    }
    EXPECT_EQ(named, 4u);

    const std::pair<std::string, std::string> refused[] = {
        {R"({"messages": []})",
         R"(expected {"messages": [{"feature", "message", "args"}, ...]})"},
        {R"({"messages": {}})",
         R"(expected {"messages": [{"feature", "message", "args"}, ...]})"},
    };
    for (const auto& r : refused) {
        const ServeRig::Reply answer = serve.call("POST", "/api/devices/0/batch", r.first);
        EXPECT_EQ(answer.status, 400);
        EXPECT_EQ(answer.body, error(r.second));
    }
    std::string many = "{\"messages\": [";
    for (int i = 0; i < 1025; ++i) {
        many += (i ? "," : "") + message("Gain", "GetMaster");
    }
    const ServeRig::Reply tooMany = serve.call("POST", "/api/devices/0/batch", many + "]}");
    EXPECT_EQ(tooMany.status, 400);
    EXPECT_EQ(tooMany.body, error("at most 1024 messages a batch"));
    EXPECT_EQ(serve.call("POST", "/api/devices/1/batch", R"({"messages": []})").status, 404);
}

TEST(ServeApiTest, AFullQueueIsAnswered503) {
    CabledDaemon daemon;  // serves no Reverb: a Reverb request waits its timeout out
    ServeRig serve({daemon.path()}, {"--queue=1", "--timeout=1000"});
    ASSERT_TRUE(serve.ready()) << serve.output();
    std::vector<ServeRig::Reply> replies(3);
    std::vector<std::thread> clients;
    for (size_t i = 0; i < replies.size(); ++i) {
        clients.emplace_back([&, i] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100 * i));
            replies[i] = serve.call("POST", "/api/devices/0/request", message("Reverb", "GetMode"));
        });
    }
    for (std::thread& client : clients) {
        client.join();
    }
    EXPECT_EQ(replies[0].status, 504);
    EXPECT_EQ(replies[1].status, 504);
    EXPECT_EQ(replies[2].status, 503);
    EXPECT_EQ(replies[2].body,
              error(daemon.path() + " has 1 requests waiting already; try again later"));
    // A daemon that ignores a feature it does not serve is still there.
    EXPECT_TRUE(serve.awaitState(0, "connected", std::chrono::milliseconds(0)));
}

TEST(ServeApiTest, SigtermEndsTheServerWithStatusZeroAndEveryAnsweredRequestDone) {
    // Request i sets the master gain to -masterOf(i) dB, within the profile's range.
    const auto masterOf = [](int i) { return i % 60 + 1; };
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    std::atomic<int> answered{0};
    std::vector<int> done;
    std::thread client([&] {
        for (int i = 1; i < 100000; ++i) {
            const ServeRig::Reply r = serve.call(
                "POST", "/api/devices/0/request",
                message("Gain", "SetMaster", "[-" + std::to_string(masterOf(i)) + "]"));
            if (r.status != 200) {
                break;
            }
            done.push_back(i);
            ++answered;
        }
    });
    while (answered < 20) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(serve.stop(SIGTERM), 0);
    client.join();
    const std::string log = daemon.log();
    for (const int i : done) {
        EXPECT_NE(log.find("Gain:SetMasterRequest:0:OK:<-" + std::to_string(masterOf(i)) + ">:"),
                  std::string::npos)
            << i;
    }
    const std::string out = serve.output();
    EXPECT_NE(out.find("vek_master serve: stopping (signal 15)\nvek_master serve: stopped\n"),
              std::string::npos)
        << out;
}

}  // namespace
