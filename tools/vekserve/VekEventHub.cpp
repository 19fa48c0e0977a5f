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
    // The opening is read before the lock: it asks the lines, which publish without
    // holding their own lock, so no order of locks can deadlock.
    const std::vector<Json> opening = opening_ ? opening_() : std::vector<Json>();
    std::lock_guard<std::mutex> lock(mutex_);
    for (const Json& event : opening) {
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
    event["time"] = now();
    const Text text = std::make_shared<const std::string>(VekValueJson::dump(event));
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& subscriber : subscribers_) {
        subscriber.second(text);
    }
}

size_t VekEventHub::subscribers() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return subscribers_.size();
}

}  // namespace vekserve
