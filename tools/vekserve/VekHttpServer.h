#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>

#include "VekAccessGuard.h"
#include "VekConnection.h"
#include "VekEventHub.h"
#include "VekRouteTable.h"
#include "VekServeConfig.h"
#include "VekStaticAssets.h"

namespace vekserve {

// Accepts connections and keeps track of them; everything it does runs on the one
// thread that runs the io_context, so its connections share nothing else.
class VekHttpServer {
public:
    VekHttpServer(boost::asio::io_context& io, const VekServeConfig& config,
                  const VekRouteTable& routes, const VekStaticAssets& assets, VekEventHub& events);

    // Binds the listen address; "" or why not. port is the one taken.
    std::string listen(uint16_t& port);
    void stopAccepting();
    // Ends every connection once its answer under way is out; done when none is left.
    void closeAll(std::function<void()> done);

    // For the connections.
    void track(const std::shared_ptr<VekConnection>& connection);
    // A connection has ended.
    void untrack();
    boost::asio::io_context& io() { return io_; }
    const VekServeConfig& config() const { return config_; }
    const VekRouteTable& routes() const { return routes_; }
    const VekStaticAssets& assets() const { return assets_; }
    const VekAccessGuard& guard() const { return *guard_; }
    VekEventHub& events() { return events_; }

private:
    void accept();

    boost::asio::io_context& io_;
    const VekServeConfig& config_;
    const VekRouteTable& routes_;
    const VekStaticAssets& assets_;
    VekEventHub& events_;
    boost::asio::ip::tcp::acceptor acceptor_;
    std::unique_ptr<VekAccessGuard> guard_;
    std::list<std::weak_ptr<VekConnection>> connections_;
    size_t open_ = 0;
    std::function<void()> allClosed_;
};

}  // namespace vekserve
