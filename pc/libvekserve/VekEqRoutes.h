#pragma once

#include "VekApiRoutes.h"

namespace vekserve {

// Filter text onto a device's equaliser and its bands out as text:
//   POST /api/devices/{n}/eq/plan    the fit and both curves, nothing sent
//   POST /api/devices/{n}/eq/import  the same, then applied
//   GET  /api/devices/{n}/eq/{channel}/export?format=apo|rew
// The body of plan and import: {"text", "channels": "LF,CF" or ["LF", ...], "fit",
// "preamp": "channel"|"master"|"ignore", "points"}. A file that does not fit is 422
// with every problem.
class VekEqRoutes {
public:
    using ExchangePtr = VekApiRoutes::ExchangePtr;
    using Params = VekApiRoutes::Params;
    using Json = VekHttpExchange::Json;

    VekEqRoutes(VekApiRoutes& api, VekRouteTable& table);
    VekEqRoutes(const VekEqRoutes&) = delete;
    VekEqRoutes& operator=(const VekEqRoutes&) = delete;

private:
    void import(const ExchangePtr& exchange, const Params& params, bool dryRun);
    void exportBands(const ExchangePtr& exchange, const Params& params);

    VekApiRoutes& api_;
};

}  // namespace vekserve
