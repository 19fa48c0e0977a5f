#include "VekRouteTable.h"

namespace vekserve {

void VekRouteTable::add(std::string method, std::string pattern, std::string what,
                        Handler handler) {
    routes_.push_back({std::move(method), std::move(pattern), std::move(what), std::move(handler)});
}

bool VekRouteTable::fits(const std::string& pattern, const std::string& path, Params& params) {
    params.clear();
    size_t p = 0;
    size_t q = 0;
    while (p < pattern.size() && q <= path.size()) {
        if (pattern.compare(p, 2, "{}") == 0) {
            const size_t end = path.find('/', q);
            const size_t stop = end == std::string::npos ? path.size() : end;
            if (stop == q) {
                return false;
            }
            params.push_back(path.substr(q, stop - q));
            p += 2;
            q = stop;
        } else if (q < path.size() && pattern[p] == path[q]) {
            ++p;
            ++q;
        } else {
            return false;
        }
    }
    return p == pattern.size() && q == path.size();
}

const VekRouteTable::Route* VekRouteTable::match(const std::string& method,
                                                 const std::string& path, Params& params,
                                                 std::string& allowed) const {
    allowed.clear();
    for (const Route& route : routes_) {
        if (!fits(route.pattern, path, params)) {
            continue;
        }
        if (route.method == method) {
            return &route;
        }
        allowed += (allowed.empty() ? "" : ", ") + route.method;
    }
    params.clear();
    return nullptr;
}

VekHttpExchange::Json VekRouteTable::list() const {
    VekHttpExchange::Json out = VekHttpExchange::Json::array();
    for (const Route& route : routes_) {
        out.push_back({{"method", route.method}, {"path", route.pattern}, {"what", route.what}});
    }
    return out;
}

}  // namespace vekserve
