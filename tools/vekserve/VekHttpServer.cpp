#include "VekHttpServer.h"

#include <boost/asio/ip/address.hpp>

#include "VekHttpSession.h"

namespace vekserve {

namespace net = boost::asio;
using tcp = net::ip::tcp;

VekHttpServer::VekHttpServer(net::io_context& io, const VekServeConfig& config,
                             const VekRouteTable& routes, const VekStaticAssets& assets,
                             VekEventHub& events)
    : io_(io), config_(config), routes_(routes), assets_(assets), events_(events), acceptor_(io) {}

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
        if (!ec) {
            std::make_shared<VekHttpSession>(std::move(socket), *this)->start();
        }
        accept();
    });
}

void VekHttpServer::stopAccepting() {
    boost::system::error_code ec;
    acceptor_.close(ec);
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
