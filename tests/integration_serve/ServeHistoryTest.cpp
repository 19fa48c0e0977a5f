#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "EventsClient.h"
#include "ServeRig.h"

namespace {

using Json = nlohmann::json;

// A folder of its own for a test's documents and journal, removed after it.
class Scratch {
public:
    Scratch() {
        std::string pattern = std::filesystem::temp_directory_path().string() + "/vek-history-XXXXXX";
        path_ = mkdtemp(pattern.data()) != nullptr ? pattern : "";
    }
    ~Scratch() { std::filesystem::remove_all(path_); }
    std::string file(const std::string& name) const { return path_ + '/' + name; }
    std::string write(const std::string& name, const std::string& text) const {
        std::ofstream(file(name)) << text;
        return file(name);
    }
    std::string read(const std::string& name) const {
        std::ifstream in(file(name));
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }

private:
    std::string path_;
};

const char* const kBand = R"({"value1":1,"value2":1000,"value3":2,"value4":0.7,"value5":0,"value6":0})";
const char* const kDocument = R"({"format":"vek-tuning/1","settings":{
    "Gain":{"master":-7},
    "EqV2":{"band":{"CF":[null,null,{"value1":1,"value2":1000,"value3":2,"value4":0.7,"value5":0,"value6":0}]}}}})";

std::string set(const std::string& feature, const std::string& name, const std::string& args) {
    return R"({"feature":")" + feature + R"(","message":")" + name + R"(","args":)" + args + '}';
}

// A server with the document as its only device, and the journal in the scratch folder.
struct VirtualServe {
    VirtualServe(const Scratch& scratch, const std::string& document)
        : rig({}, {"--virtual=" + document, "--state-dir=" + scratch.file("state"),
                   std::string("--launch=") + VEK_TUNER_PATH}) {
        ready = rig.ready() && rig.awaitState(0, "connected");
    }
    Json get(const std::string& target) const { return parse(rig.call("GET", target)); }
    Json post(const std::string& target, const std::string& body = "") const {
        return parse(rig.call("POST", target, body));
    }
    static Json parse(const ServeRig::Reply& reply) {
        Json out = Json::parse(reply.body, nullptr, false);
        out["_status"] = reply.status;
        return out;
    }
    Json settings() const { return get("/api/devices/0/snapshot")["settings"]; }

    ServeRig rig;
    bool ready = false;
};

TEST(ServeHistoryTest, AVirtualDeviceHoldsItsDocumentAndSavesBackKeepingTheOldFile) {
    Scratch scratch;
    const std::string document = scratch.write("tuning.json", kDocument);
    std::string saved;
    {
        VirtualServe serve(scratch, document);
        ASSERT_TRUE(serve.ready) << serve.rig.output();
        const Json devices = serve.get("/api/devices")["devices"];
        ASSERT_EQ(devices.size(), 1u);
        EXPECT_EQ(devices[0]["path"], document);
        EXPECT_EQ(devices[0]["virtual"], true);
        const Json settings = serve.settings();
        EXPECT_EQ(settings["Gain"]["master"], -7);
        EXPECT_EQ(settings["EqV2"]["band"]["CF"][2], Json::parse(kBand));
        // Requests and curves work on it as on any line.
        EXPECT_EQ(serve.post("/api/devices/0/request", set("Gain", "SetMaster", "[-4]"))["status"], "OK");
        EXPECT_EQ(serve.get("/api/devices/0/eq/CF/curve?points=16")["_status"], 200);

        const Json answer = serve.post("/api/devices/0/save");
        EXPECT_EQ(answer["path"], document);
        EXPECT_EQ(answer["backup"], document + ".bak");
        EXPECT_EQ(scratch.read("tuning.json.bak"), kDocument);
        saved = scratch.read("tuning.json");
        EXPECT_EQ(Json::parse(saved)["settings"], serve.settings());
        EXPECT_EQ(Json::parse(saved)["settings"]["Gain"]["master"], -4);
        EXPECT_EQ(serve.post("/api/devices/0/save", R"({"path":7})")["_status"], 400);
    }
    // The saved whole tuning makes the same device again.
    VirtualServe again(scratch, document);
    ASSERT_TRUE(again.ready) << again.rig.output();
    EXPECT_EQ(again.settings(), Json::parse(saved)["settings"]);
}

TEST(ServeHistoryTest, UndoAndRedoStepOverAnApplyAsOneStepAndANewChangeDropsTheRedo) {
    Scratch scratch;
    VirtualServe serve(scratch, scratch.write("tuning.json", kDocument));
    ASSERT_TRUE(serve.ready) << serve.rig.output();
    EventsClient other(serve.rig.port());
    ASSERT_TRUE(other.open());

    ASSERT_EQ(serve.post("/api/devices/0/request", set("Gain", "SetMaster", "[-3]"))["status"], "OK");
    const Json applied = serve.post(
        "/api/devices/0/apply",
        R"({"format":"vek-tuning/1","settings":{"Gain":{"master":-1,"channel":{"LS":-6}}}})");
    ASSERT_EQ(applied["status"], "OK") << applied;

    Json history = serve.get("/api/devices/0/history");
    ASSERT_EQ(history["total"], 2);
    const Json& apply = history["steps"][0];
    EXPECT_EQ(apply["kind"], "apply");
    EXPECT_EQ(apply["changes"], Json::parse(R"([{"setting":"Gain.master","old":-3,"new":-1},
        {"setting":"Gain.channel","channel":"LS","old":-2,"new":-6}])"));
    EXPECT_EQ(history["steps"][1]["changes"],
              Json::parse(R"([{"setting":"Gain.master","old":-7,"new":-3}])"));

    // The apply goes back as a whole, its requests seen by every client.
    const Json undone = serve.post("/api/devices/0/undo");
    EXPECT_EQ(undone["undone"]["id"], apply["id"]);
    EXPECT_EQ(undone["apply"]["requests"],
              Json::parse(R"(["Gain SetMaster -3","Gain SetChannel 0 -0.5 -2 -2.5 -1 -4"])"));
    EXPECT_TRUE(other.await(R"("message":"SetChannel")"));
    EXPECT_EQ(serve.settings()["Gain"]["channel"]["LS"], -2);
    EXPECT_EQ(serve.post("/api/devices/0/undo")["undone"]["kind"], "request");
    EXPECT_EQ(serve.settings()["Gain"]["master"], -7);
    EXPECT_EQ(serve.post("/api/devices/0/undo")["_status"], 409);

    EXPECT_EQ(serve.post("/api/devices/0/redo")["redone"]["kind"], "request");
    EXPECT_EQ(serve.settings()["Gain"]["master"], -3);
    history = serve.get("/api/devices/0/history?limit=1");
    EXPECT_EQ(history["steps"][0]["kind"], "redo");
    EXPECT_EQ(history["steps"][0]["state"], "final");
    // A new change: the undone apply can no longer be redone.
    ASSERT_EQ(serve.post("/api/devices/0/request", set("Gain", "SetMaster", "[-9]"))["status"], "OK");
    EXPECT_EQ(serve.post("/api/devices/0/redo")["_status"], 409);
    EXPECT_EQ(serve.get("/api/devices/0/history?limit=0")["_status"], 400);
}

TEST(ServeHistoryTest, AFilterImportAndASettingWriteAreEachOneStepUndoneAsOne) {
    Scratch scratch;
    VirtualServe serve(scratch, scratch.write("tuning.json", kDocument));
    ASSERT_TRUE(serve.ready) << serve.rig.output();
    const Json before = serve.settings();
    const Json imported = serve.post("/api/devices/0/eq/import", R"({"channels":"CF","text":
        "Preamp: -2 dB\nFilter 1: ON PK Fc 500 Hz Gain -3 dB Q 1.5\n"})");
    ASSERT_EQ(imported["_status"], 200) << imported;

    const Json history = serve.get("/api/devices/0/history");
    ASSERT_EQ(history["total"], 1);
    const Json& step = history["steps"][0];
    EXPECT_EQ(step["kind"], "import");
    std::vector<std::string> touched;
    for (const Json& change : step["changes"]) {
        touched.push_back(change["setting"].get<std::string>());
    }
    EXPECT_EQ(touched, (std::vector<std::string>{"Gain.channel", "EqV2.bandCount", "EqV2.band"}));

    EXPECT_EQ(serve.post("/api/devices/0/undo")["undone"]["kind"], "import");
    EXPECT_EQ(serve.settings(), before);

    // What the panel writes, a setting by its address, is a step of its own.
    const ServeRig::Reply put = serve.rig.call("PUT", "/api/devices/0/settings/Gain/channel/CF",
                                               R"({"value":-4})");
    ASSERT_EQ(put.status, 200) << put.body;
    const Json last = serve.get("/api/devices/0/history?limit=1")["steps"][0];
    EXPECT_EQ(last["kind"], "setting");
    EXPECT_EQ(last["changes"], Json::parse(R"([{"setting":"Gain.channel","channel":"CF","old":-1,"new":-4}])"));
    EXPECT_EQ(serve.post("/api/devices/0/undo")["undone"]["kind"], "setting");
    EXPECT_EQ(serve.settings(), before);
}

TEST(ServeHistoryTest, ACheckpointApplySendsExactlyTheSettingsThatDiffer) {
    Scratch scratch;
    VirtualServe serve(scratch, scratch.write("tuning.json", kDocument));
    ASSERT_TRUE(serve.ready) << serve.rig.output();
    ASSERT_EQ(serve.post("/api/devices/0/checkpoints", R"({"name":"A"})")["_status"], 201);
    const Json batch = serve.post("/api/devices/0/batch", R"({"messages":[)" +
                                      set("Gain", "SetMaster", "[-2]") + ',' +
                                      set("EqV2", "SetBandConfig", R"(["RF",3,1,500,-4,1.5,0,0])") + "]}");
    ASSERT_EQ(batch["answers"].size(), 2u);
    EXPECT_EQ(serve.get("/api/devices/0/history?limit=1")["steps"][0]["changes"].size(), 2u);
    ASSERT_EQ(serve.post("/api/devices/0/checkpoints", R"({"name":"B"})")["_status"], 201);
    EXPECT_EQ(serve.get("/api/devices/0/checkpoints")["checkpoints"].size(), 2u);

    const Json toA = serve.post("/api/devices/0/checkpoints/A/apply");
    EXPECT_EQ(toA["apply"]["requests"],
              Json::parse(R"(["Gain SetMaster -7","EqV2 SetBandConfig RF 3 2 250 0 0.707 0 1"])"))
        << toA;
    // Right after A was applied the device is known to hold A: nothing is read but the
    // device's identity and the values set.
    EventsClient events(serve.rig.port());
    ASSERT_TRUE(events.open());
    const Json toB = serve.post("/api/devices/0/checkpoints/B/apply");
    ASSERT_TRUE(events.await(R"("message":"GetBandConfigResponse")"));
    std::vector<std::string> asked;
    for (const std::string& text : events.messages()) {
        const Json event = Json::parse(text);
        if (event["type"] == "request") {
            asked.push_back(event["request"]["feature"].get<std::string>() + ' ' +
                            event["request"]["message"].get<std::string>());
        }
    }
    EXPECT_EQ(asked, (std::vector<std::string>{"Common Version", "Common Feature",
                                               "Gain SetMaster", "EqV2 SetBandConfig",
                                               "Gain GetMaster", "EqV2 GetBandConfig"}));
    EXPECT_EQ(toB["apply"]["requests"],
              Json::parse(R"(["Gain SetMaster -2","EqV2 SetBandConfig RF 3 1 500 -4 1.5 0 0"])"));
    EXPECT_EQ(serve.post("/api/devices/0/checkpoints/B/apply")["apply"]["requests"], Json::array());
    EXPECT_EQ(serve.get("/api/devices/0/history?limit=1")["steps"][0]["kind"], "checkpoint");
    EXPECT_EQ(serve.post("/api/devices/0/checkpoints/C/apply")["_status"], 404);
    EXPECT_EQ(serve.post("/api/devices/0/checkpoints", R"({"name":"a b"})")["_status"], 400);
}

TEST(ServeHistoryTest, AnUndoTheDeviceRefusesPartwayReportsWhatDidNotTakeAndStaysUndoable) {
    Scratch scratch;
    const std::string document = scratch.write("tuning.json", kDocument);
    {
        VirtualServe serve(scratch, document);
        ASSERT_TRUE(serve.ready) << serve.rig.output();
        ASSERT_EQ(serve.post("/api/devices/0/apply",
                             R"({"format":"vek-tuning/1","settings":{"Gain":{"master":-1},)"
                             R"("EqV2":{"band":{"LF":[{"value1":1,"value2":80,"value3":3,"value4":1,"value5":0,"value6":0}]}}}})")
                      ["status"],
                  "OK");
    }
    // The same device again (its journal goes by the document), now with nothing to set at
    // start and a master gain that cannot be set.
    scratch.write("tuning.json", R"({"format":"vek-tuning/1","settings":{"EqV2":{"band":{"LF":[)"
                                 R"({"value1":1,"value2":80,"value3":3,"value4":1,"value5":0,"value6":0}]}}}})");
    setenv("AUDIO_SETTING_SIM", "fail=setMasterGain:-5", 1);
    VirtualServe serve(scratch, document);
    unsetenv("AUDIO_SETTING_SIM");
    ASSERT_TRUE(serve.ready) << serve.rig.output();
    const Json undone = serve.post("/api/devices/0/undo");
    EXPECT_EQ(undone["_status"], 200);
    EXPECT_EQ(undone["apply"]["status"], "NG");
    EXPECT_EQ(undone["apply"]["sent"], Json::parse(R"([{"request":"Gain SetMaster -7","answer":"NG"},
        {"request":"EqV2 SetBandConfig LF 0 2 31 0 0.707 0 1","answer":"OK"}])"));
    EXPECT_EQ(undone["apply"]["failures"],
              Json::parse(R"([{"setting":"Gain.master","reason":"the device answered NG"}])"));
    // What took is history; the step itself stays to be undone once the device can.
    const Json history = serve.get("/api/devices/0/history");
    EXPECT_EQ(history["steps"][0]["kind"], "undo");
    EXPECT_EQ(history["steps"][0]["changes"].size(), 1u);
    EXPECT_EQ(history["steps"][1]["state"], "done");
}

// Changes answered one after another (never to the document's own -7, which would
// change nothing) while the server is killed at a random moment:
// every change that got its answer is in the journal when the server comes back.
TEST(ServeCrashTest, EveryAnsweredChangeSurvivesKill9) {
    Scratch scratch;
    const std::string document = scratch.write("tuning.json", kDocument);
    std::mt19937 random(28);
    std::set<std::string> answered;
    int value = 0;
    for (int round = 0; round < 20; ++round) {
        VirtualServe serve(scratch, document);
        ASSERT_TRUE(serve.ready) << serve.rig.output();
        std::atomic<bool> killed{false};
        std::thread writer([&] {
            while (!killed) {
                const std::string id = "c" + std::to_string(++value);
                const ServeRig::Reply reply =
                    serve.rig.call("POST", "/api/devices/0/request",
                                   set("Gain", "SetMaster", '[' + std::to_string(-(value % 6)) + ']'),
                                   {{"Vek-Request-Id", id}});
                if (reply.status == 200) {
                    answered.insert(id);
                }
            }
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(100 + random() % 400));
        serve.rig.stop(SIGKILL);
        killed = true;
        writer.join();
    }
    VirtualServe serve(scratch, document);
    ASSERT_TRUE(serve.ready) << serve.rig.output();
    std::set<std::string> journaled;
    for (size_t offset = 0;; offset += 1000) {
        const Json page =
            serve.get("/api/devices/0/history?limit=1000&offset=" + std::to_string(offset));
        for (const Json& step : page["steps"]) {
            journaled.insert(step["requestId"].get<std::string>());
        }
        if (page["steps"].size() < 1000) {
            break;
        }
    }
    ASSERT_GT(answered.size(), 8u);
    for (const std::string& id : answered) {
        EXPECT_TRUE(journaled.count(id) == 1) << id << " was answered but is not in the journal";
    }
}

}  // namespace
