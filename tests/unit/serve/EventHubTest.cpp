#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "VekEventHub.h"

using namespace vekserve;

namespace {

using Json = VekEventHub::Json;

// A new subscriber is told every line's state first, then each event in the order it
// was published, each stamped with its time; one that left is told nothing more.
TEST(EventHubTest, ASubscriberGetsTheOpeningThenEveryEventInOrderUntilItLeaves) {
    VekEventHub hub;
    hub.setOpening([] {
        return std::vector<Json>{{{"type", "state"}, {"device", 0}},
                                 {{"type", "state"}, {"device", 1}}};
    });
    std::vector<Json> first;
    std::vector<Json> second;
    const uint64_t a = hub.subscribe([&](const VekEventHub::Text& t) { first.push_back(Json::parse(*t)); });
    hub.publish({{"type", "request"}, {"n", 1}});
    const uint64_t b = hub.subscribe([&](const VekEventHub::Text& t) { second.push_back(Json::parse(*t)); });
    EXPECT_NE(a, b);
    EXPECT_EQ(hub.subscribers(), 2u);
    hub.publish({{"type", "response"}, {"n", 2}});
    hub.unsubscribe(a);
    hub.publish({{"type", "request"}, {"n", 3}});
    EXPECT_EQ(hub.subscribers(), 1u);

    const auto kinds = [](const std::vector<Json>& events) {
        std::string text;
        for (const Json& e : events) {
            text += e["type"].get<std::string>() + (e.contains("n") ? e["n"].dump() : e["device"].dump()) + ' ';
        }
        return text;
    };
    EXPECT_EQ(kinds(first), "state0 state1 request1 response2 ");
    EXPECT_EQ(kinds(second), "state0 state1 response2 request3 ");
    const std::regex stamp(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z)");
    std::string previous;
    for (const Json& e : second) {
        const std::string time = e["time"];
        EXPECT_TRUE(std::regex_match(time, stamp)) << time;
        EXPECT_LE(previous, time);  // the stamps follow the order of publication
        previous = time;
    }
}

}  // namespace
