#include "VekEventsSession.h"

#include <boost/asio/post.hpp>
#include <boost/beast/websocket.hpp>

namespace vekserve {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace websocket = beast::websocket;

VekEventsSession::VekEventsSession(net::ip::tcp::socket&& socket, VekHttpServer& server)
    : server_(server), ws_(std::move(socket)) {}

void VekEventsSession::accept(beast::http::request<beast::http::string_body> request) {
    server_.track(shared_from_this());
    tracked_ = true;
    ws_.set_option(websocket::stream_base::timeout::suggested(beast::role_type::server));
    ws_.set_option(websocket::stream_base::decorator(
        [](websocket::response_type& response) { response.set(beast::http::field::server, "vek_master"); }));
    ws_.async_accept(request, [self = shared_from_this()](beast::error_code ec) {
        if (ec || self->closing_) {
            self->finish();
            return;
        }
        std::weak_ptr<VekEventsSession> weak = self;
        net::io_context& io = self->server_.io();
        self->subscription_ = self->server_.events().subscribe([weak, &io](const VekEventHub::Text& event) {
            net::post(io, [weak, event] {
                if (std::shared_ptr<VekEventsSession> session = weak.lock()) {
                    session->deliver(event);
                }
            });
        });
        self->read();
    });
}

void VekEventsSession::read() {
    // Nothing a subscriber sends means anything; reading notices that it has gone.
    ws_.async_read(buffer_, [self = shared_from_this()](beast::error_code ec, size_t) {
        if (ec) {
            self->finish();
            return;
        }
        self->buffer_.clear();
        self->read();
    });
}

void VekEventsSession::deliver(const VekEventHub::Text& event) {
    if (finished_ || closing_) {
        return;
    }
    if (queue_.size() >= server_.config().subscriberLimit) {
        finish();
        return;
    }
    queue_.push_back(event);
    if (!writing_) {
        write();
    }
}

void VekEventsSession::write() {
    writing_ = true;
    ws_.text(true);
    ws_.async_write(net::buffer(*queue_.front()),
                    [self = shared_from_this()](beast::error_code ec, size_t) {
                        self->writing_ = false;
                        if (ec) {
                            self->finish();
                            return;
                        }
                        self->queue_.pop_front();
                        if (!self->queue_.empty() && !self->closing_) {
                            self->write();
                        } else if (self->closing_) {
                            self->shutdown();
                        }
                    });
}

void VekEventsSession::shutdown() {
    closing_ = true;
    if (writing_ || finished_) {
        return;
    }
    ws_.async_close(websocket::close_code::going_away,
                    [self = shared_from_this()](beast::error_code) { self->finish(); });
}

void VekEventsSession::finish() {
    if (finished_) {
        return;
    }
    finished_ = true;
    if (subscription_ != 0) {
        server_.events().unsubscribe(subscription_);
        subscription_ = 0;
    }
    queue_.clear();
    beast::error_code ec;
    beast::get_lowest_layer(ws_).socket().shutdown(net::ip::tcp::socket::shutdown_both, ec);
    beast::get_lowest_layer(ws_).close();
    if (tracked_) {
        server_.untrack();
    }
}

}  // namespace vekserve
