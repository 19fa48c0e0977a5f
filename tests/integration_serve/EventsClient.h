#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// A subscriber of /api/events on a thread of its own, keeping every message.
class EventsClient {
public:
    // origin: the Origin header, none when empty.
    EventsClient(uint16_t port, const std::string& origin = "",
                 const std::string& target = "/api/events");
    ~EventsClient();
    EventsClient(const EventsClient&) = delete;
    EventsClient& operator=(const EventsClient&) = delete;

    // The upgrade went through.
    bool open() const;
    std::vector<std::string> messages() const;
    // Waits until count messages hold text; true when they do.
    bool await(const std::string& text, size_t count = 1,
               std::chrono::milliseconds limit = std::chrono::seconds(20)) const;
    // The connection has ended (the server closed it).
    bool ended() const;

private:
    struct State;
    std::shared_ptr<State> state_;
    std::thread thread_;
};
