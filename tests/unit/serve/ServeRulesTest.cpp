#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "VekAccessGuard.h"
#include "VekBodyStream.h"
#include "VekExitHttp.h"
#include "VekHttpRequest.h"
#include "VekRequestBody.h"
#include "VekRouteTable.h"

using namespace vekserve;
using namespace vekmaster;

namespace {

VekHttpRequest from(const std::string& host, const std::string& origin = "",
                    const std::string& authorization = "", const std::string& target = "/api") {
    VekHttpRequest request;
    request.target = target;
    request.splitTarget();
    request.host = host;
    request.origin = origin;
    request.authorization = authorization;
    return request;
}

TEST(ServeRulesTest, OnlyRequestsNamingThisServerPass) {
    VekServeConfig config;
    const VekAccessGuard guard(config, 8741);
    std::string why;
    for (const char* host : {"127.0.0.1:8741", "localhost:8741", "LOCALHOST:8741", "[::1]:8741",
                             "127.1.2.3:8741"}) {
        EXPECT_EQ(guard.check(from(host), why), 0) << host;
    }
    for (const char* host : {"evil.example:8741", "127.0.0.1:8742", "127.0.0.1", "", "[::1",
                             "[::1]8741", "[::1]x:8741",
                             "192.168.1.5:8741", "localhost.evil.example:8741"}) {
        EXPECT_EQ(guard.check(from(host), why), 403) << host;
    }
    EXPECT_EQ(guard.check(from("localhost:8741", "http://localhost:8741"), why), 0);
    for (const char* origin : {"http://evil.example", "https://localhost:8741", "null",
                               "http://localhost:9999"}) {
        EXPECT_EQ(guard.check(from("localhost:8741", origin), why), 403) << origin;
    }
    EXPECT_EQ(why, "requests from the page at http://localhost:9999 are not accepted");

    // A wildcard listen address takes any IP address, still no name.
    config.host = "0.0.0.0";
    EXPECT_EQ(guard.check(from("192.168.1.5:8741"), why), 0);
    EXPECT_EQ(guard.check(from("rack-pc.example:8741"), why), 403);
}

TEST(ServeRulesTest, WithATokenEveryRequestBringsIt) {
    VekServeConfig config;
    config.token = "0123456789abcdef";
    const VekAccessGuard guard(config, 80);
    std::string why;
    EXPECT_EQ(guard.check(from("localhost", "", "Bearer 0123456789abcdef"), why), 0);
    EXPECT_EQ(guard.check(from("localhost", "", "", "/api/events?access_token=0123456789abcdef"), why),
              0);
    EXPECT_EQ(guard.check(from("localhost", "", "Bearer 0123456789abcdeF"), why), 401);
    EXPECT_EQ(why, "the token is not this server's");
    EXPECT_EQ(guard.check(from("localhost", "", "Bearer 0123456789abcdef0"), why), 401);
    EXPECT_EQ(guard.check(from("localhost", "", "Basic 0123456789abcdef"), why), 401);
    EXPECT_EQ(guard.check(from("localhost"), why), 401);
    EXPECT_EQ(why, "this server needs a token: Authorization: Bearer TOKEN");
    // The panel's files: no token, but the Host and Origin checks all the same.
    EXPECT_EQ(guard.check(from("localhost"), why, false), 0);
    EXPECT_EQ(guard.check(from("evil.example"), why, false), 403);
    EXPECT_EQ(guard.check(from("localhost", "http://evil.example"), why, false), 403);
}

TEST(ServeRulesTest, RequestIdsAreShortPlainNames) {
    const std::string good[] = {"", "7", "panel-x1y2z3-12", "a.b_c:d-E", std::string(64, 'i')};
    for (const std::string& id : good) {
        EXPECT_TRUE(VekHttpRequest::validId(id)) << id;
    }
    const std::string bad[] = {"a b", "a\"b", "a\r\nX: y", "\xc3\xa9", std::string(65, 'i')};
    for (const std::string& id : bad) {
        EXPECT_FALSE(VekHttpRequest::validId(id)) << id;
    }
}

TEST(ServeRulesTest, ListenAddressesAndTheirReach) {
    VekServeConfig config;
    EXPECT_EQ(config.listen("[::1]:0"), "");
    EXPECT_EQ(config.host, "::1");
    EXPECT_TRUE(config.loopback());
    EXPECT_EQ(config.listen("0.0.0.0:8741"), "");
    EXPECT_FALSE(config.loopback());
    EXPECT_EQ(config.listen("localhost:80"), "");
    EXPECT_TRUE(config.loopback());
    EXPECT_EQ(config.listen("::1:8741"), "");  // unbracketed: the last ':' begins the port
    EXPECT_EQ(config.host, "::1");
    EXPECT_EQ(config.port, 8741);
    EXPECT_EQ(config.listen("8741"), "--listen=8741 is not HOST:PORT");
    EXPECT_EQ(config.listen("[::1:8741"), "--listen=[::1:8741 is not HOST:PORT");
    EXPECT_EQ(config.listen("host.example:8741"),
              "--listen=host.example:8741: host.example is not an IP address or localhost");
    EXPECT_EQ(config.listen("127.0.0.1:65536"),
              "--listen=127.0.0.1:65536: 65536 is not a port (0 to 65535)");
}

TEST(ServeRulesTest, RoutesMatchWholeSegments) {
    VekRouteTable table;
    int hit = -1;
    table.add("GET", "/api/devices/{}/files/{}", "", [&](const auto&, const auto&) { hit = 1; });
    table.add("GET", "/api/devices/{}/files/{}/{}", "", [&](const auto&, const auto&) { hit = 2; });
    table.add("POST", "/api/devices/{}/apply", "", [&](const auto&, const auto&) { hit = 3; });
    VekRouteTable::Params params;
    std::string allowed;
    const VekRouteTable::Route* route = table.match("GET", "/api/devices/0/files/Gain/12", params, allowed);
    ASSERT_NE(route, nullptr);
    route->handler(nullptr, params);
    EXPECT_EQ(hit, 2);
    EXPECT_EQ(params, (VekRouteTable::Params{"0", "Gain", "12"}));
    EXPECT_EQ(table.match("GET", "/api/devices//files/Gain", params, allowed), nullptr);
    EXPECT_EQ(table.match("GET", "/api/devices/0/files/Gain/", params, allowed), nullptr);
    EXPECT_EQ(table.match("GET", "/api/devices/0/apply", params, allowed), nullptr);
    EXPECT_EQ(allowed, "POST");
    EXPECT_EQ(table.match("GET", "/api/devices/0/applyx", params, allowed), nullptr);
    EXPECT_EQ(allowed, "");
}

TEST(ServeRulesTest, TheQueryIsDecoded) {
    const VekHttpRequest request =
        from("", "", "", "/api/x?dry_run=1&bypass&path=%2Fmedia%2Fa+b.xml&bad=%zz&=v&raw=0");
    EXPECT_EQ(request.path, "/api/x");
    EXPECT_TRUE(request.flag("dry_run"));
    EXPECT_TRUE(request.flag("bypass"));
    EXPECT_FALSE(request.flag("raw"));
    EXPECT_FALSE(request.flag("missing"));
    EXPECT_EQ(request.param("path"), "/media/a b.xml");
    EXPECT_EQ(request.param("bad"), "%zz");
}

TEST(ServeRulesTest, AMessageBodyBecomesWireTextOfItsFieldTypes) {
    vekprotocol::VekFields args;
    const auto read = [&](const std::string& body) {
        VekCheckedRequest checked;
        const VekError problem = VekRequestBody::message(
            VekMessageCatalog::shared(), &VekDeviceProfile::builtIn(), body, checked);
        args = checked.valid() ? checked.args() : vekprotocol::VekFields{"unchecked"};
        return problem.text;
    };
    EXPECT_EQ(read(R"({"feature":"EqV2","message":"SetBandConfig","args":["CF",3,2,1000,-3.5,0.707,0,1]})"), "");
    EXPECT_EQ(args, (vekprotocol::VekFields{"CF", "3", "2", "1000", "-3.5", "0.707", "0", "1"}));
    EXPECT_EQ(read(R"({"feature":"Speaker","message":"SetEnable","args":[[true,false,true,true,true,false]]})"), "");
    EXPECT_EQ(args, (vekprotocol::VekFields{"1", "0", "1", "1", "1", "0"}));
    EXPECT_EQ(read(R"({"feature":"Common","message":"FileList","args":["Gain"]})"), "");
    EXPECT_EQ(read(R"({"feature":"Common","message":"Feature"})"), "");
    EXPECT_TRUE(args.empty());

    EXPECT_EQ(read(R"({"feature":"EqV2","message":"GetBandConfig","args":["CF",-1]})"),
              "EqV2 GetBandConfig: argument 2 (band:uint) is out of range (0 to 4294967295)");
    EXPECT_EQ(read(R"({"feature":"Common","message":"SetBypass","args":[1]})"),
              "Common SetBypass: argument 1 (enable:bool) is not true or false");
    EXPECT_EQ(read(R"({"feature":"Gain","message":"SetMaster","args":[-1, 2]})"),
              "Gain SetMaster takes 1 argument (masterGain:float), got 2");
    EXPECT_EQ(read(R"({"feature":"Common","message":"FileContent","args":["a:b"]})"),
              "Common FileContent: argument 'a:b' cannot be sent (it is empty or holds ':' or a line "
              "feed)");
    EXPECT_EQ(read(R"({"feature":"Gain","message":"SetMaster","args":{}})"), "args must be an array");
    EXPECT_EQ(read(R"({"feature":"Gain"})"),
              R"(expected {"feature": FEATURE, "message": MESSAGE, "args": [ARG...]})");
    EXPECT_EQ(read("{\"feature\":").rfind("the body is not JSON: ", 0), 0u);
}

// Nesting is counted on the text, so that no body deep enough to overflow the stack of
// the JSON library's recursion is ever parsed.
TEST(ServeRulesTest, NestingPastTheLimitIsRefusedBeforeParsing) {
    const auto nested = [](size_t depth, const std::string& inner = "") {
        std::string text;
        for (size_t i = 0; i < depth; ++i) {
            text += i % 2 == 0 ? "[" : "{\"k\":";
        }
        text += inner.empty() ? "0" : inner;
        for (size_t i = depth; i-- > 0;) {
            text += i % 2 == 0 ? "]" : "}";
        }
        return text;
    };
    EXPECT_TRUE(VekRequestBody::shallow(nested(VekRequestBody::kMaxDepth)));
    EXPECT_FALSE(VekRequestBody::shallow(nested(VekRequestBody::kMaxDepth + 1)));
    EXPECT_FALSE(VekRequestBody::shallow(std::string(VekRequestBody::kMaxDepth + 1, '[')));
    // Brackets in strings, escaped quotes included, are text; closing ones out of turn
    // do not lower the count below nothing.
    EXPECT_TRUE(VekRequestBody::shallow(nested(60, "\"[[[[[[[[\\\"[[[[[[[[\"")));
    EXPECT_FALSE(VekRequestBody::shallow(nested(60, "\"\\\\\"[[[[[[[[")));
    EXPECT_FALSE(VekRequestBody::shallow("]]]]" + nested(VekRequestBody::kMaxDepth + 1)));
    // Every body reader counts first.
    VekRequestBody::Diff diff;
    EXPECT_EQ(VekRequestBody::diff(VekSettingsTable::shared(), R"({"a":)" + nested(100000) + "}", diff),
              "the body nests arrays and objects deeper than 64 levels");
}

TEST(ServeRulesTest, ADiffHoldsADocumentAndAtMostOneDevice) {
    const VekSettingsTable& table = VekSettingsTable::shared();
    VekRequestBody::Diff diff;
    const std::string doc = R"({"format":"vek-tuning/1","settings":{"Gain":{"master":-3}}})";
    EXPECT_EQ(VekRequestBody::diff(table, R"({"a":"device","b":)" + doc + R"(,"device":2})", diff), "");
    EXPECT_TRUE(diff.device[0]);
    EXPECT_EQ(diff.index, 2);
    EXPECT_EQ(VekRequestBody::diff(table, R"({"a":"device","b":"device"})", diff),
              "diff compares the device with a document, or two documents");
    EXPECT_EQ(VekRequestBody::diff(table, R"({"a":)" + doc + R"(,"b":{"format":"x"}})", diff)
                  .rfind("b: ", 0),
              0u);
    EXPECT_EQ(VekRequestBody::index("1", 2), 1);
    for (const char* bad : {"2", "-1", "+1", " 1", "1x", "", "99999999999999999999"}) {
        EXPECT_EQ(VekRequestBody::index(bad, 2), -1) << bad;
    }
}

// A body stream holds its producer back while full and lets it go once the consumer
// has gone, so a client that stops reading never wedges a line.
TEST(ServeRulesTest, ABodyStreamBoundsWhatWaitsAndReleasesItsProducer) {
    std::atomic<int> wakes{0};
    VekBodyStream stream(4, [&] { ++wakes; });
    EXPECT_TRUE(stream.push("abcd", 4));
    std::atomic<bool> pushed{false};
    std::atomic<bool> result{true};
    std::thread producer([&] {
        result = stream.push("ef", 2);
        pushed = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(pushed);
    std::string out;
    EXPECT_EQ(stream.take(out), VekBodyStream::Take::Data);
    EXPECT_EQ(out, "abcd");
    producer.join();
    EXPECT_TRUE(result);
    stream.finish(true);
    EXPECT_EQ(stream.take(out), VekBodyStream::Take::Data);
    EXPECT_EQ(out, "ef");
    EXPECT_EQ(stream.take(out), VekBodyStream::Take::End);
    EXPECT_EQ(wakes, 3);

    VekBodyStream abandoned(1, [] {});
    EXPECT_TRUE(abandoned.push("x", 1));
    std::thread blocked([&] { result = abandoned.push("y", 1); });
    abandoned.close();
    blocked.join();
    EXPECT_FALSE(result);
    VekBodyStream cut(8, [] {});
    cut.finish(false);
    EXPECT_EQ(cut.take(out), VekBodyStream::Take::Broken);
}

// One table per place an error surfaces: a client of the server and a script running
// vek_master must read the same failure the same way.
TEST(ServeRulesTest, EachKindOfErrorHasOneExitStatusAndOneHttpStatus) {
    using Kind = vekmaster::VekError::Kind;
    using vekmaster::VekExitStatus;
    const struct {
        Kind kind;
        int exit;
        int http;
    } kinds[] = {
        {Kind::None, VekExitStatus::kOk, 200},        {Kind::Usage, VekExitStatus::kUsage, 400},
        {Kind::Range, VekExitStatus::kUsage, 400},    {Kind::NotFound, VekExitStatus::kUsage, 404},
        {Kind::Busy, VekExitStatus::kIo, 503},        {Kind::NoAnswer, VekExitStatus::kNoAnswer, 504},
        {Kind::LineFailed, VekExitStatus::kIo, 503}, {Kind::RawFailed, VekExitStatus::kIo, 502},
        {Kind::BadAnswer, VekExitStatus::kIo, 502},
    };
    for (const auto& k : kinds) {
        EXPECT_EQ(VekExitStatus::of(k.kind), k.exit) << static_cast<int>(k.kind);
        EXPECT_EQ(vekhttp::VekExitHttp::status(k.kind), k.http) << static_cast<int>(k.kind);
        // A status that comes back from a server reads as the exit status it stands for.
        if (k.kind != Kind::None) {
            EXPECT_EQ(vekhttp::VekExitHttp::exit(k.http), k.exit) << static_cast<int>(k.kind);
        }
    }
    // A reply without an answer carries its kind; an NG answer is no error but exits 1.
    VekMasterReply reply;
    reply.outcome = VekMasterReply::Outcome::Refused;
    reply.problem = "bad";
    EXPECT_EQ(reply.error().kind, Kind::Usage);
    EXPECT_EQ(reply.error().text, "bad");
    reply.outcome = VekMasterReply::Outcome::Ng;
    EXPECT_FALSE(reply.error());
    EXPECT_EQ(VekExitStatus::of(reply), VekExitStatus::kNg);
}

}  // namespace
