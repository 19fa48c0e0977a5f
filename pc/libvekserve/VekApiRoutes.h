#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VekChangeRecorder.h"
#include "VekHttpExchange.h"
#include "VekLineWorker.h"
#include "VekDeviceProfile.h"
#include "VekMessageCatalog.h"
#include "VekRouteTable.h"
#include "VekServeConfig.h"
#include "VekSettingsTable.h"

namespace vekserve {

// The API: each route checks what it is given on the HTTP side (nothing reaches a line
// that the catalogue or the settings table refuses) and hands the rest to the line as a
// job. The answers are the structures the CLI prints, as JSON.
class VekApiRoutes {
public:
    using ExchangePtr = std::shared_ptr<VekHttpExchange>;
    using Params = VekRouteTable::Params;
    using Lines = std::vector<std::unique_ptr<VekLineWorker>>;

    // Adds the routes to table; lines and table must outlive the routes. Messages and
    // documents are checked against the ranges of limits. What changes a device goes to
    // recorder.
    VekApiRoutes(Lines& lines, VekRouteTable& table,
                 std::shared_ptr<const vekmaster::VekDeviceProfile> limits,
                 const VekChangeRecorder& recorder);
    VekApiRoutes(const VekApiRoutes&) = delete;
    VekApiRoutes& operator=(const VekApiRoutes&) = delete;

    // The status and body that say why a request got no answer.
    static void answerFailure(const ExchangePtr& exchange, const vekmaster::VekMasterReply& reply);
    // 200 with the answer as the API gives it, or the failure.
    static void answerReply(const ExchangePtr& exchange, const vekmaster::VekMasterReply& reply);
    using Json = VekHttpExchange::Json;
    // The body that says why: {"error"}, and for a value outside the profile's ranges
    // its field and range.
    static Json refusal(const vekmaster::VekError& error);
    // The status of the error's kind, with the body that says why.
    static void answerError(const ExchangePtr& exchange, const vekmaster::VekError& error);

    using Run = std::function<void(vekmaster::VekMasterSession&, vekmaster::VekSessionAccess&)>;
    // The line a path names; null after answering 404.
    VekLineWorker* line(const ExchangePtr& exchange, const std::string& index);
    // Queues run on the line; 503 when the line does not take it.
    static void submit(const ExchangePtr& exchange, VekLineWorker& line, Run run);
    // Where changes are journalled, for routes of other files that change settings.
    const VekChangeRecorder& recorder() const { return recorder_; }

private:

    void devices(const ExchangePtr& exchange);
    void message(const ExchangePtr& exchange, const Params& params);
    void snapshot(const ExchangePtr& exchange, const Params& params);
    void apply(const ExchangePtr& exchange, const Params& params);
    void diff(const ExchangePtr& exchange);
    void files(const ExchangePtr& exchange, const Params& params);
    void file(const ExchangePtr& exchange, const Params& params);
    void profile(const ExchangePtr& exchange);
    void trace(const ExchangePtr& exchange, const Params& params);
    void deviceCurve(const ExchangePtr& exchange, const Params& params);
    void curve(const ExchangePtr& exchange);
    void batch(const ExchangePtr& exchange, const Params& params);

    // Queues a job for the line with its client and its refusal filled in.
    static void submit(const ExchangePtr& exchange, VekLineWorker& line, VekLineJob job);

private:

    Lines& lines_;
    const std::shared_ptr<const vekmaster::VekDeviceProfile> profile_;
    const vekmaster::VekMessageCatalog& catalog_;
    const vekmaster::VekSettingsTable& table_;
    const VekChangeRecorder& recorder_;
};

}  // namespace vekserve
