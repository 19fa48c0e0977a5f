#pragma once

#include <memory>
#include <string>

#include "VekApiRoutes.h"
#include "VekChangeRecorder.h"
#include "VekTuningApply.h"

namespace vekserve {

// What the journal serves: a device's history, undo and redo, named checkpoints and
// their apply, and saving a device's tuning to a document (a virtual device's own file).
class VekHistoryRoutes {
public:
    using ExchangePtr = VekApiRoutes::ExchangePtr;
    using Params = VekApiRoutes::Params;
    using Json = VekHttpExchange::Json;

    static constexpr int64_t kPageSize = 50;
    static constexpr int64_t kMaxPage = 1000;

    // recorder has the journal; without one, only save is served (the others answer 503).
    VekHistoryRoutes(VekApiRoutes::Lines& lines, VekRouteTable& table,
                     const VekChangeRecorder& recorder);
    VekHistoryRoutes(const VekHistoryRoutes&) = delete;
    VekHistoryRoutes& operator=(const VekHistoryRoutes&) = delete;

private:
    void history(const ExchangePtr& exchange, const Params& params);
    // Undo (back true) or redo of the device's step.
    void step(const ExchangePtr& exchange, const Params& params, bool back);
    void keep(const ExchangePtr& exchange, const Params& params);
    void list(const ExchangePtr& exchange, const Params& params);
    void restore(const ExchangePtr& exchange, const Params& params);
    void save(const ExchangePtr& exchange, const Params& params);

    // The line a path names, with a journal; null after answering.
    VekLineWorker* line(const ExchangePtr& exchange, const std::string& index, bool journal);
    // Applies document and records it as a step of kind; answers {"apply": result, ...}
    // with extra's members beside it. True when the whole document took.
    bool applyStep(const ExchangePtr& exchange, vekmaster::VekSessionAccess& access,
                   const std::string& device, const Json& document,
                   const vekmaster::VekTuningApply::Options& options, const std::string& kind,
                   int64_t target, Json extra) const;

    VekApiRoutes::Lines& lines_;
    const VekChangeRecorder& recorder_;
};

}  // namespace vekserve
