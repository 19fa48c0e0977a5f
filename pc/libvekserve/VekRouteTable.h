#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VekHttpExchange.h"

namespace vekserve {

// The API's routes: a method and a path pattern whose "{}" segments match any one
// segment, each with its handler and a line saying what it does. A new route is one add.
class VekRouteTable {
public:
    using Params = std::vector<std::string>;
    using Handler =
        std::function<void(const std::shared_ptr<VekHttpExchange>& exchange, const Params& params)>;
    struct Route {
        std::string method;
        std::string pattern;  // "/api/devices/{}/request"
        std::string what;
        Handler handler;
    };

    void add(std::string method, std::string pattern, std::string what, Handler handler);
    // The route for method and path, with the "{}" segments in params; null when none.
    // allowed then names the methods the path has ("" when the path has none).
    const Route* match(const std::string& method, const std::string& path, Params& params,
                       std::string& allowed) const;
    // Every route as {"method", "path", "what"}, for GET /api.
    VekHttpExchange::Json list() const;

private:
    static bool fits(const std::string& pattern, const std::string& path, Params& params);

    std::vector<Route> routes_;
};

}  // namespace vekserve
