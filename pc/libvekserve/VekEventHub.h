#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VekValueJson.h"

namespace vekserve {

// Hands every event (a request or answer on a line, a line's state) to every
// subscriber, in the order published. Events come from the line threads; a subscriber's
// deliver function only passes the shared text on to its own thread, so publishing
// never waits for a slow client.
class VekEventHub {
public:
    using Json = vekmaster::VekValueJson::Json;
    using Text = std::shared_ptr<const std::string>;
    using Deliver = std::function<void(const Text& event)>;
    // The events a new subscriber gets first: the state of every line.
    using Opening = std::function<std::vector<Json>()>;

    void setOpening(Opening opening) { opening_ = std::move(opening); }
    // Adds a subscriber, which is given the opening events before any other; its id.
    uint64_t subscribe(Deliver deliver);
    void unsubscribe(uint64_t id);
    // Stamps the event with the time ("time": "2024-05-01T10:00:00.123Z") and sends it.
    void publish(Json event);
    size_t subscribers() const;

    // UTC now, to the millisecond.
    static std::string now();

private:
    mutable std::mutex mutex_;
    std::map<uint64_t, Deliver> subscribers_;
    uint64_t next_ = 1;
    Opening opening_;
};

}  // namespace vekserve
