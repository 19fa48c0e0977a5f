#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <cstdint>
#include <deque>
#include <memory>

#include "VekConnection.h"
#include "VekEventHub.h"
#include "VekHttpServer.h"

namespace vekserve {

// One subscriber of /api/events: every event as one text message, in order. Events
// wait in a bounded queue; a subscriber that falls that far behind is let go, so it
// never holds up the lines or the other subscribers.
class VekEventsSession : public VekConnection,
                         public std::enable_shared_from_this<VekEventsSession> {
public:
    VekEventsSession(boost::asio::ip::tcp::socket&& socket, VekHttpServer& server);

    void accept(boost::beast::http::request<boost::beast::http::string_body> request);
    void shutdown() override;

private:
    void read();
    void deliver(const VekEventHub::Text& event);
    void write();
    void finish();

    VekHttpServer& server_;
    boost::beast::websocket::stream<boost::beast::tcp_stream> ws_;
    boost::beast::flat_buffer buffer_;
    std::deque<VekEventHub::Text> queue_;
    uint64_t subscription_ = 0;
    bool tracked_ = false;
    bool writing_ = false;
    bool closing_ = false;
    bool finished_ = false;
};

}  // namespace vekserve
