#include "VekSettingRoutes.h"

#include "VekRequestBody.h"

namespace vekserve {

using vekmaster::VekSettingAccess;

VekSettingRoutes::VekSettingRoutes(VekApiRoutes& api, VekRouteTable& table,
                                   std::shared_ptr<const vekmaster::VekDeviceProfile> limits)
    : api_(api), profile_(std::move(limits)), table_(vekmaster::VekSettingsTable::shared()) {
    const std::string base = "/api/devices/{}/settings/{}/{}";
    const struct {
        const char* tail;
        const char* part;
    } parts[] = {{"", "a setting"}, {"/{}", "a channel of a setting"}, {"/{}/{}", "a band"}};
    for (const auto& p : parts) {
        table.add("GET", base + p.tail,
                  std::string(p.part) + "'s value as a tuning document holds it: "
                                        "{\"setting\", \"status\", \"value\"}",
                  [this](const ExchangePtr& e, const Params& params) { read(e, params); });
        table.add("PUT", base + p.tail,
                  std::string("{\"value\"}: sets ") + p.part +
                      "'s value, or the fields or channels given (the rest as the device has "
                      "them); {\"setting\", \"status\"}",
                  [this](const ExchangePtr& e, const Params& params) { write(e, params); });
    }
}

bool VekSettingRoutes::locate(const ExchangePtr& exchange, const Params& params,
                              VekSettingAccess::Target& target) const {
    const vekmaster::VekError error =
        VekSettingAccess::locate(table_, Params(params.begin() + 1, params.end()), target);
    if (error) {
        VekApiRoutes::answerError(exchange, error);
    }
    return !error;
}

VekHttpExchange::Json VekSettingRoutes::answer(const VekSettingAccess::Target& target,
                                               const VekSettingAccess::Result& result) {
    const bool ng = result.reply.outcome == vekmaster::VekMasterReply::Outcome::Ng;
    return {{"setting", target.label()}, {"status", ng ? "NG" : "OK"}};
}

void VekSettingRoutes::read(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* line = api_.line(exchange, params[0]);
    VekSettingAccess::Target target;
    if (line == nullptr || !locate(exchange, params, target)) {
        return;
    }
    api_.submit(exchange, *line,
                [this, exchange, target](vekmaster::VekMasterSession&,
                                         vekmaster::VekSessionAccess& access) {
                    VekSettingAccess::Result result;
                    const vekmaster::VekError error =
                        VekSettingAccess(access, table_, profile_.get()).read(target, result);
                    if (error) {
                        VekApiRoutes::answerError(exchange, error);
                        return;
                    }
                    VekHttpExchange::Json body = answer(target, result);
                    body["value"] = std::move(result.value);
                    exchange->answer(200, body);
                });
}

void VekSettingRoutes::write(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* line = api_.line(exchange, params[0]);
    VekSettingAccess::Target target;
    if (line == nullptr || !locate(exchange, params, target)) {
        return;
    }
    VekHttpExchange::Json value;
    const std::string problem = VekRequestBody::settingValue(exchange->request().body, value);
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    // Nothing goes to the line that cannot be written; prepare changes only its copy.
    VekHttpExchange::Json checked = value;
    bool partial = false;
    const vekmaster::VekError bad = VekSettingAccess::prepare(target, checked, partial);
    if (bad) {
        VekApiRoutes::answerError(exchange, bad);
        return;
    }
    api_.submit(exchange, *line,
                [this, exchange, target, value](vekmaster::VekMasterSession&,
                                                vekmaster::VekSessionAccess& access) {
                    VekSettingAccess::Result result;
                    const vekmaster::VekError error =
                        VekSettingAccess(access, table_, profile_.get()).write(target, value, result);
                    if (error) {
                        VekApiRoutes::answerError(exchange, error);
                        return;
                    }
                    exchange->answer(200, answer(target, result));
                });
}

}  // namespace vekserve
