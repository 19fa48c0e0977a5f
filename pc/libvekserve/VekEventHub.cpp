#include "VekEventHub.h"

#include <chrono>
#include <ctime>

namespace vekserve {

using vekmaster::VekValueJson;

std::string VekEventHub::now() {
    using namespace std::chrono;
    const auto since = system_clock::now().time_since_epoch();
    const std::time_t seconds = static_cast<std::time_t>(duration_cast<std::chrono::seconds>(since).count());
    const int millis = static_cast<int>(duration_cast<milliseconds>(since).count() % 1000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[40];
    const size_t n = std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text + n, sizeof(text) - n, ".%03dZ", millis);
    return text;
}

uint64_t VekEventHub::subscribe(Deliver deliver) {
    // The opening is read under the lock that publishing takes, so no state event falls
    // between it and the subscription. The lines publish without holding their own lock,
    // so taking theirs inside this one cannot deadlock.
    std::lock_guard<std::mutex> lock(mutex_);
    const std::vector<Json> opening = opening_ ? opening_() : std::vector<Json>();
    const std::string time = now();
    for (Json event : opening) {
        event["time"] = time;
        deliver(std::make_shared<const std::string>(VekValueJson::dump(event)));
    }
    const uint64_t id = next_++;
    subscribers_.emplace(id, std::move(deliver));
    return id;
}

void VekEventHub::unsubscribe(uint64_t id) {
    std::lock_guard<std::mutex> lock(mutex_);
    subscribers_.erase(id);
}

void VekEventHub::publish(Json event) {
    std::lock_guard<std::mutex> lock(mutex_);
    // Stamped under the lock, so that the times of the events follow their order.
    event["time"] = now();
    const Text text = std::make_shared<const std::string>(VekValueJson::dump(event));
    for (const auto& subscriber : subscribers_) {
        subscriber.second(text);
    }
}

size_t VekEventHub::subscribers() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return subscribers_.size();
}

}  // namespace vekserve
