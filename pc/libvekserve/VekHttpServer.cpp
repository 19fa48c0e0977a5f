#include "VekHttpServer.h"

#include <boost/asio/ip/address.hpp>
#include <boost/asio/write.hpp>
#include <cerrno>
#include <chrono>

#include "VekHttpSession.h"

namespace vekserve {

namespace net = boost::asio;
using tcp = net::ip::tcp;

namespace {

// How long accepting waits when the process or the system is out of descriptors: long
// enough not to spin, short enough that a freed one is soon used.
constexpr auto kAcceptPause = std::chrono::milliseconds(100);

bool outOfDescriptors(const boost::system::error_code& ec) {
    return ec.category() == boost::system::system_category() &&
           (ec.value() == EMFILE || ec.value() == ENFILE || ec.value() == ENOBUFS ||
            ec.value() == ENOMEM);
}

}  // namespace

const VekHttpServer::Headers& VekHttpServer::securityHeaders() {
    static const Headers kHeaders{
        {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"},
        {"X-Frame-Options", "DENY"},
        {"X-Content-Type-Options", "nosniff"},
        {"Referrer-Policy", "no-referrer"},
    };
    return kHeaders;
}

VekHttpServer::VekHttpServer(net::io_context& io, const VekServeConfig& config,
                             const VekRouteTable& routes, const VekStaticAssets& assets,
                             VekEventHub& events)
    : io_(io),
      config_(config),
      routes_(routes),
      assets_(assets),
      events_(events),
      acceptor_(io),
      pause_(io) {}

std::string VekHttpServer::listen(uint16_t& port) {
    boost::system::error_code ec;
    const std::string name = config_.host == "localhost" ? "127.0.0.1" : config_.host;
    const net::ip::address address = net::ip::make_address(name, ec);
    const tcp::endpoint endpoint(address, config_.port);
    const std::string where = config_.host + ':' + std::to_string(config_.port);
    if (!ec) {
        acceptor_.open(endpoint.protocol(), ec);
    }
    if (!ec) {
        acceptor_.set_option(net::socket_base::reuse_address(true), ec);
    }
    if (!ec) {
        acceptor_.bind(endpoint, ec);
    }
    if (!ec) {
        acceptor_.listen(net::socket_base::max_listen_connections, ec);
    }
    if (ec) {
        return "cannot listen on " + where + ": " + ec.message();
    }
    port = acceptor_.local_endpoint(ec).port();
    guard_ = std::make_unique<VekAccessGuard>(config_, port);
    accept();
    return "";
}

void VekHttpServer::accept() {
    acceptor_.async_accept(io_, [this](boost::system::error_code ec, tcp::socket socket) {
        if (ec == net::error::operation_aborted || !acceptor_.is_open()) {
            return;
        }
        if (outOfDescriptors(ec)) {
            // The clients already in are served meanwhile; the waiting ones stay queued.
            pause_.expires_after(kAcceptPause);
            pause_.async_wait([this](const boost::system::error_code& e) {
                if (!e && acceptor_.is_open()) {
                    accept();
                }
            });
            return;
        }
        if (!ec && open_ >= config_.maxClients) {
            turnAway(std::move(socket));
        } else if (!ec) {
            std::make_shared<VekHttpSession>(std::move(socket), *this)->start();
        }
        accept();
    });
}

void VekHttpServer::turnAway(tcp::socket socket) {
    // The answer fits the socket's buffer, so writing it never waits for the client;
    // what the client sent meanwhile is read for a moment (closing on unread bytes would
    // reset the connection and could lose the answer), then the descriptor is given back.
    struct Refusal {
        tcp::socket socket;
        net::steady_timer limit;
        std::string text;
        char scrap[512];
        size_t read = 0;

        void close() {
            boost::system::error_code ignored;
            limit.cancel();
            socket.close(ignored);
        }
        static void drain(const std::shared_ptr<Refusal>& self) {
            self->socket.async_read_some(
                net::buffer(self->scrap), [self](const boost::system::error_code& ec, size_t n) {
                    self->read += n;
                    if (ec || self->read > 4 * sizeof(self->scrap)) {
                        self->close();
                    } else {
                        drain(self);
                    }
                });
        }
    };
    const std::string body = "{\"error\":\"the server has " + std::to_string(config_.maxClients) +
                             " clients already; try again later\"}\n";
    std::string text = "HTTP/1.1 503 Service Unavailable\r\nServer: vek_master\r\n"
                       "Content-Type: application/json\r\nCache-Control: no-store\r\n"
                       "Connection: close\r\nRetry-After: 1\r\n";
    for (const auto& field : securityHeaders()) {
        text += field.first + ": " + field.second + "\r\n";
    }
    text += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    auto refusal = std::make_shared<Refusal>(Refusal{std::move(socket), net::steady_timer(io_),
                                                     std::move(text), {}, 0});
    refusal->limit.expires_after(std::chrono::seconds(1));
    refusal->limit.async_wait([refusal](const boost::system::error_code& ec) {
        if (!ec) {
            refusal->close();
        }
    });
    net::async_write(refusal->socket, net::buffer(refusal->text),
                     [refusal](const boost::system::error_code& ec, size_t) {
                         boost::system::error_code ignored;
                         refusal->socket.shutdown(tcp::socket::shutdown_send, ignored);
                         if (ec) {
                             refusal->close();
                         } else {
                             Refusal::drain(refusal);
                         }
                     });
}

void VekHttpServer::stopAccepting() {
    boost::system::error_code ec;
    acceptor_.close(ec);
    pause_.cancel();
}

void VekHttpServer::track(const std::shared_ptr<VekConnection>& connection) {
    ++open_;
    // Connections that have ended leave their entries behind; clear them now and then so
    // a long run keeps only about as many as are open.
    if (connections_.size() > 2 * open_ + 16) {
        connections_.remove_if([](const std::weak_ptr<VekConnection>& c) { return c.expired(); });
    }
    connections_.push_back(connection);
}

void VekHttpServer::untrack() {
    --open_;
    if (open_ == 0 && allClosed_) {
        std::function<void()> done = std::move(allClosed_);
        allClosed_ = nullptr;
        done();
    }
}

void VekHttpServer::closeAll(std::function<void()> done) {
    allClosed_ = std::move(done);
    for (auto it = connections_.begin(); it != connections_.end();) {
        if (std::shared_ptr<VekConnection> connection = it->lock()) {
            connection->shutdown();
            ++it;
        } else {
            it = connections_.erase(it);
        }
    }
    if (open_ == 0 && allClosed_) {
        std::function<void()> finished = std::move(allClosed_);
        allClosed_ = nullptr;
        finished();
    }
}

}  // namespace vekserve
