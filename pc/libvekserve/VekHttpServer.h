#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>

#include "VekAccessGuard.h"
#include "VekConnection.h"
#include "VekEventHub.h"
#include "VekHttpExchange.h"
#include "VekRouteTable.h"
#include "VekServeConfig.h"
#include "VekStaticAssets.h"

namespace vekserve {

// Accepts connections and keeps track of them; everything it does runs on the one
// thread that runs the io_context, so its connections share nothing else.
class VekHttpServer {
public:
    using Headers = VekHttpExchange::Headers;

    VekHttpServer(boost::asio::io_context& io, const VekServeConfig& config,
                  const VekRouteTable& routes, const VekStaticAssets& assets, VekEventHub& events);

    // Binds the listen address; "" or why not. port is the one taken.
    std::string listen(uint16_t& port);
    void stopAccepting();
    // Ends every connection once its answer under way is out; done when none is left.
    void closeAll(std::function<void()> done);

    // For the connections. A request's id, for the events it causes.
    std::string nextRequestId() { return std::to_string(++requests_); }
    void track(const std::shared_ptr<VekConnection>& connection);
    // A connection has ended.
    void untrack();
    boost::asio::io_context& io() { return io_; }
    const VekServeConfig& config() const { return config_; }
    const VekRouteTable& routes() const { return routes_; }
    const VekStaticAssets& assets() const { return assets_; }
    const VekAccessGuard& guard() const { return *guard_; }
    VekEventHub& events() { return events_; }

    // The headers every answer carries: no page of ours may be framed, sniffed into
    // another type, or run what it did not load from this server.
    static const Headers& securityHeaders();

private:
    void accept();
    // Past --max-clients: 503, and the connection ends.
    void turnAway(boost::asio::ip::tcp::socket socket);

    boost::asio::io_context& io_;
    const VekServeConfig& config_;
    const VekRouteTable& routes_;
    const VekStaticAssets& assets_;
    VekEventHub& events_;
    boost::asio::ip::tcp::acceptor acceptor_;
    // Out of descriptors: accepting again waits a moment instead of failing in a loop.
    boost::asio::steady_timer pause_;
    std::unique_ptr<VekAccessGuard> guard_;
    std::list<std::weak_ptr<VekConnection>> connections_;
    size_t open_ = 0;
    std::function<void()> allClosed_;
    uint64_t requests_ = 0;
};

}  // namespace vekserve
