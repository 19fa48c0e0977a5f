#include "EventsClient.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>

namespace net = boost::asio;
namespace beast = boost::beast;
namespace websocket = beast::websocket;

struct EventsClient::State {
    net::io_context io;
    websocket::stream<beast::tcp_stream> ws{io};
    beast::flat_buffer buffer;
    mutable std::mutex mutex;
    std::vector<std::string> messages;
    bool open = false;
    bool ended = false;

    void read() {
        ws.async_read(buffer, [this](beast::error_code ec, size_t) {
            std::lock_guard<std::mutex> lock(mutex);
            if (ec) {
                ended = true;
                return;
            }
            messages.push_back(beast::buffers_to_string(buffer.data()));
            buffer.clear();
            read();
        });
    }
};

EventsClient::EventsClient(uint16_t port, const std::string& origin, const std::string& target)
    : state_(std::make_shared<State>()) {
    State& s = *state_;
    beast::error_code ec;
    beast::get_lowest_layer(s.ws).connect(
        net::ip::tcp::endpoint(net::ip::make_address("127.0.0.1"), port), ec);
    if (!origin.empty()) {
        s.ws.set_option(websocket::stream_base::decorator(
            [origin](websocket::request_type& request) { request.set("Origin", origin); }));
    }
    if (!ec) {
        s.ws.handshake("127.0.0.1:" + std::to_string(port), target, ec);
    }
    s.open = !ec;
    if (s.open) {
        s.read();
        thread_ = std::thread([state = state_] { state->io.run(); });
    }
}

EventsClient::~EventsClient() {
    if (thread_.joinable()) {
        net::post(state_->io, [state = state_] { beast::get_lowest_layer(state->ws).close(); });
        thread_.join();
    }
}

bool EventsClient::open() const {
    return state_->open;
}

std::vector<std::string> EventsClient::messages() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->messages;
}

bool EventsClient::ended() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->ended;
}

bool EventsClient::await(const std::string& text, size_t count,
                         std::chrono::milliseconds limit) const {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        size_t seen = 0;
        for (const std::string& message : messages()) {
            seen += message.find(text) != std::string::npos ? 1 : 0;
        }
        if (seen >= count) {
            return true;
        }
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}
