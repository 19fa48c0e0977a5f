#include "VekHttpDispatch.h"

#include "VekHttpServer.h"

namespace vekserve {

VekHttpDispatch::Verdict VekHttpDispatch::dispatch(VekHttpRequest& request,
                                                   const std::shared_ptr<VekHttpExchange>& exchange) {
    using Headers = VekHttpExchange::Headers;
    if (!VekHttpRequest::validId(request.id)) {
        exchange->answer(400, VekHttpExchange::error(
                                  std::string(VekHttpRequest::kIdHeader) +
                                  " is 1 to 64 letters, digits and . _ : - (it names the request "
                                  "in the events)"));
        return Verdict::Handled;
    }
    if (request.id.empty()) {
        request.id = server_.nextRequestId();
    }
    VekRouteTable::Params params;
    std::string allowed;
    const VekRouteTable::Route* route =
        server_.routes().match(request.method, request.path, params, allowed);
    // The panel's own files hold nothing of a device: a browser gets the page that asks
    // for the token without one. The API and the events still need it.
    const VekStaticAssets::Asset* asset =
        route == nullptr && allowed.empty() && !request.upgrade && request.method == "GET"
            ? server_.assets().find(request.path)
            : nullptr;
    std::string why;
    const int denied = server_.guard().check(request, why, asset == nullptr);
    if (denied != 0) {
        exchange->answer(denied, VekHttpExchange::error(why),
                         denied == 401 ? Headers{{"WWW-Authenticate", "Bearer"}} : Headers{});
        return Verdict::Handled;
    }
    if (request.upgrade && request.path == kEventsPath) {
        return Verdict::Upgrade;
    }
    if (route != nullptr) {
        route->handler(exchange, params);
    } else if (asset != nullptr) {
        exchange->answerBytes(200, asset->type, asset->bytes);
    } else if (!allowed.empty()) {
        exchange->answer(405,
                         VekHttpExchange::error(request.method + " is not for " + request.path +
                                                " (" + allowed + " is)"),
                         {{"Allow", allowed}});
    } else {
        exchange->answer(404, VekHttpExchange::error("no route " + request.method + ' ' +
                                                     request.path + " (GET /api lists them)"));
    }
    return Verdict::Handled;
}

}  // namespace vekserve
