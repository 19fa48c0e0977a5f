#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <vector>

#include "CabledDaemon.h"
#include "MasterRun.h"
#include "VekCable.h"
#include "VekMasterSession.h"
#include "VekSerialLine.h"

// vek_master on the cable emulator: paced as a 115200-baud cable with 16 ms bridges, with
// noise, drops and a pull, against a daemon on a pseudo-terminal pair as the reference.
namespace {

using vekcable::VekCable;
using vekcable::VekCableModel;
using vekmaster::VekMasterExchange;
using vekmaster::VekMasterReply;
using vekmaster::VekMasterSession;
using Json = nlohmann::ordered_json;

VekCable::Options paced() {
    VekCable::Options options;
    options.toMaster = options.toDevice = VekCableModel::Settings{115200, 16, 62};
    return options;
}

MasterRun::Result master(const CabledDaemon& daemon, std::vector<std::string> args) {
    args.insert(args.begin(), "--device=" + daemon.path());
    return MasterRun::run(args);
}

// A snapshot without what differs between two runs: the time and the line's path.
Json snapshot(const CabledDaemon& daemon, const std::string& window) {
    MasterRun::TempFile file;
    const MasterRun::Result run = master(daemon, {"--window=" + window, "snapshot",
                                                  "--output=" + file.path()});
    EXPECT_EQ(run.status, 0) << run.err;
    Json document = Json::parse(file.read(), nullptr, false);
    document.erase("time");
    document["device"].erase("path");
    return document;
}

}  // namespace

// A window of requests through slow bridges gives what one request at a time through a
// pseudo-terminal gives: the same document, the same apply, the same device after it.
TEST(CableTest, SnapshotAndApplyEqualThoseOverAPseudoTerminal) {
    CabledDaemon pty;
    CabledDaemon cable({}, "", paced());
    ASSERT_TRUE(pty.ready() && cable.ready());
    const Json reference = snapshot(pty, "1");
    EXPECT_EQ(snapshot(cable, "8"), reference);

    MasterRun::TempFile document(R"({"format": "vek-tuning/1", "settings": {
        "Gain": {"master": -3, "channel": {"LF": -1, "CF": -6}},
        "EqV2": {"bandCount": {"CF": 12},
                 "band": {"CF": [null, null, null, null, null, null, null, null, null, null,
                    {"value1": 2, "value2": 5000, "value3": -2, "value4": 1, "value5": 0, "value6": 1},
                    {"value1": 2, "value2": 9000, "value3": 3, "value4": 2, "value5": 0, "value6": 1}]}},
        "Speaker": {"delay": {"LS": 2.5}}}})");
    const MasterRun::Result onPty = master(pty, {"--window=1", "--json", "apply", document.path()});
    const MasterRun::Result onCable = master(cable, {"--json", "apply", document.path()});
    EXPECT_EQ(onPty.status, 0) << onPty.err;
    EXPECT_EQ(onCable.out, onPty.out);
    EXPECT_EQ(onCable.status, onPty.status);
    EXPECT_EQ(snapshot(cable, "8"), snapshot(pty, "1"));
}

// The device answers NG to the first of the set requests with a second one on the line:
// nothing more is sent, the second is awaited, and the result says which went out.
TEST(CableTest, ApplyStopsAtAnNgAndReportsWhatWasSent) {
    CabledDaemon cable({}, "fail=setMasterGain:-5", paced());
    ASSERT_TRUE(cable.ready());
    MasterRun::TempFile document(R"({"format": "vek-tuning/1", "settings": {
        "Gain": {"master": -3, "channel": {"LF": -1}},
        "Speaker": {"delay": {"LS": 2.5}}, "Common": {"bypass": false}}})");
    const MasterRun::Result run =
        master(cable, {"--window=2", "--json", "apply", document.path()});
    EXPECT_EQ(run.status, 1) << run.err;
    const Json result = Json::parse(run.out, nullptr, false);
    EXPECT_EQ(result["sent"].dump(),
              R"([{"request":"Gain SetMaster -3","answer":"NG"},)"
              R"({"request":"Gain SetChannel -1 -0.5 -2 -2.5 -1 -4","answer":"OK"}])");
    EXPECT_EQ(result["error"], "stopped at an NG: 2 of 3 requests were sent");
    EXPECT_EQ(result["changes"].dump(),
              R"([{"setting":"Gain.channel[LF]","from":"0","to":"-1"}])");
    // The delay was never sent: the device still has its own.
    const MasterRun::Result delay = master(cable, {"Speaker", "GetDelay"});
    EXPECT_EQ(delay.out, "delay=0:0:1.5:1.5:0.5:0\nOK\n");
}

namespace {

// Requests of several kinds, so that an answer given to the wrong one would show.
VekMasterExchange::Batch mixed(const VekMasterSession& session, size_t n) {
    const char* channels[] = {"LF", "RF", "LS", "RS", "CF", "L1"};
    VekMasterExchange::Batch batch(n);
    for (size_t i = 0; i < n; ++i) {
        VekMasterExchange& e = batch[i];
        switch (i % 3) {
            case 0:
                e.message = session.catalog().find("EqV2", "GetBandConfig");
                e.args = {channels[i % 6], std::to_string(i % 10)};
                break;
            case 1:
                e.message = session.catalog().find("Gain", i % 2 ? "GetChannel" : "GetMaster");
                break;
            default:
                e.message = session.catalog().find("Speaker", "GetDelay");
                break;
        }
    }
    return batch;
}

struct Scenario {
    const char* name;
    VekCable::Options cable;
};

VekCable::Options faulty(VekCable::Direction direction, VekCableModel::Fault kind,
                         int64_t atByte, size_t count) {
    VekCable::Options options = paced();
    VekCable::Fault fault;
    fault.direction = direction;
    fault.kind = kind;
    fault.atByte = atByte;
    fault.count = count;
    options.faults.push_back(fault);
    return options;
}

}  // namespace

// Garbled and lost answers, a garbled request and a pulled cable in the middle of a
// window: every request is answered with its own answer, or reported lost or failed.
TEST(CableTest, FaultsMidWindowNeverGiveOneRequestAnothersAnswer) {
    constexpr size_t kRequests = 36;
    VekMasterExchange::Batch reference;
    // Each session first asks for the version alone, as every command does: the device's
    // answer numbering is then known when the window opens.
    std::string version;
    std::string versionRequest;
    std::vector<int64_t> requestSizes;  // the catalogue goes with its session
    {
        CabledDaemon pty;
        ASSERT_TRUE(pty.ready());
        vekmaster::VekSerialLine line;
        ASSERT_EQ(line.open(pty.path(), 115200), "");
        VekMasterSession session(line, 1000);
        version = session.request("Common", "Version", {"test"}).frame;
        std::stringstream out;
        session.catalog().find("Common", "Version")->encode({"test"}, 1, out);
        versionRequest = out.str();
        reference = mixed(session, kRequests);
        for (size_t i = 0; i < reference.size(); ++i) {
            std::stringstream request;
            reference[i].message->encode(reference[i].args, static_cast<uint32_t>(i + 2), request);
            requestSizes.push_back(static_cast<int64_t>(request.str().size()));
        }
        session.exchange(reference);
        for (const VekMasterExchange& e : reference) {
            ASSERT_EQ(e.reply.outcome, VekMasterReply::Outcome::Ok) << e.reply.problem;
        }
    }
    // Where the k-th answer and request begin in their streams: the answers follow the
    // greeting, and a fresh daemon numbers them as the reference run did.
    const auto answerAt = [&](size_t k) {
        int64_t at = 7 + static_cast<int64_t>(version.size() + 1);
        for (size_t i = 0; i < k; ++i) {
            at += static_cast<int64_t>(reference[i].reply.frame.size() + 1);
        }
        return at;
    };
    const auto requestAt = [&](size_t k) {
        int64_t at = static_cast<int64_t>(versionRequest.size());
        for (size_t i = 0; i < k; ++i) {
            at += requestSizes[i];
        }
        return at;
    };
    VekCable::Options pulled = paced();
    pulled.pulls.push_back({0, answerAt(10), 60000});
    const Scenario scenarios[] = {
        {"noise on an answer's head",
         faulty(VekCable::ToMaster, VekCableModel::Fault::Noise, answerAt(6), 2)},
        {"part of an answer dropped",
         faulty(VekCable::ToMaster, VekCableModel::Fault::Drop, answerAt(12) + 5, 30)},
        {"a request garbled",
         faulty(VekCable::ToDevice, VekCableModel::Fault::Noise, requestAt(9), 2)},
        {"the cable pulled", pulled},
    };
    const uint64_t hits[] = {2, 30, 2, 1};
    for (size_t n = 0; n < 4; ++n) {
        const Scenario& scenario = scenarios[n];
        SCOPED_TRACE(scenario.name);
        CabledDaemon daemon({}, "", scenario.cable);
        ASSERT_TRUE(daemon.ready());
        vekmaster::VekSerialLine line;
        ASSERT_EQ(line.open(daemon.path(), 115200), "");
        VekMasterSession session(line, 1000);
        session.setWindow(8);  // a mix-up loses what is on the line: at most these
        ASSERT_EQ(session.request("Common", "Version", {"test"}).frame, version);
        VekMasterExchange::Batch batch = mixed(session, kRequests);
        session.exchange(batch);
        size_t answered = 0;
        size_t missed = 0;
        for (size_t i = 0; i < batch.size(); ++i) {
            const VekMasterReply& reply = batch[i].reply;
            if (reply.answered()) {
                ++answered;
                EXPECT_EQ(reply.frame.substr(reply.frame.find(':', 3)),
                          reference[i].reply.frame.substr(reference[i].reply.frame.find(':', 3)))
                    << "request " << i;
            } else {
                ++missed;
                EXPECT_FALSE(reply.problem.empty());
                EXPECT_TRUE(reply.lost || !batch[i].sent ||
                            reply.outcome == VekMasterReply::Outcome::LineFailed)
                    << "request " << i << ": " << reply.problem;
            }
        }
        const VekCable::Counters counters = daemon.cable().counters();
        EXPECT_EQ(counters.noisy[0] + counters.noisy[1] + counters.dropped[0] +
                          counters.dropped[1] + counters.pulls,
                  hits[n]);
        EXPECT_GT(answered, 0u);
        EXPECT_GT(missed, 0u);
        if (n < 3) {
            // The line was never lost: only the requests near the fault went without.
            EXPECT_GT(answered, kRequests - 12);
        }
    }
}
