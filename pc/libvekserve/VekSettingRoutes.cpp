#include "VekSettingRoutes.h"

#include "VekChangeSet.h"

#include "VekExitHttp.h"
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
    table.add("POST", "/api/devices/{}/settings",
              "{\"settings\": [\"FEATURE/SETTING[/CHANNEL[/BAND]]\", ...]}: read together, "
              "in one window; {\"answers\": [{\"status\", \"body\"}, ...]}, each as GET "
              "of its address answers it",
              [this](const ExchangePtr& e, const Params& params) { readMany(e, params); });
    for (const auto& p : parts) {
        table.add("GET", base + p.tail,
                  std::string(p.part) +
                      "'s value as a tuning document holds it: "
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
                                               const VekSettingAccess::Result& result, bool read) {
    const bool ng = result.reply.outcome == vekmaster::VekMasterReply::Outcome::Ng;
    VekHttpExchange::Json body = {{"setting", target.label()}, {"status", ng ? "NG" : "OK"}};
    if (read) {
        body["value"] = result.value;
    }
    return body;
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
                    exchange->answer(200, answer(target, result, true));
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
    vekmaster::VekChangeSet touched(table_);
    touched.add(*target.setting, target.key);
    api_.submit(
        exchange, *line,
        [this, exchange, target, value, touched, device = line->path()](
            vekmaster::VekMasterSession&, vekmaster::VekSessionAccess& access) {
            VekSettingAccess::Result result;
            vekmaster::VekError error;
            // One step of the device's history; the journal reads it before and after.
            const std::string unrecorded =
                api_.recorder().around(access, touched, exchange, device, "setting", [&] {
                    error = VekSettingAccess(access, table_, profile_.get()).write(target, value, result);
                });
            if (VekChangeRecorder::refuseUnrecorded(exchange, unrecorded)) {
                return;
            }
            if (error) {
                VekApiRoutes::answerError(exchange, error);
                return;
            }
            exchange->answer(200, answer(target, result, false));
        });
}

void VekSettingRoutes::readMany(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* line = api_.line(exchange, params[0]);
    if (line == nullptr) {
        return;
    }
    std::vector<Params> addresses;
    const std::string problem = VekRequestBody::settingList(exchange->request().body, addresses);
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    // A refused address keeps its place, answered as GET would, and is not read.
    using Json = VekHttpExchange::Json;
    auto answers = std::make_shared<std::vector<Json>>(addresses.size());
    std::vector<VekSettingAccess::Target> targets;
    std::vector<size_t> places;
    for (size_t i = 0; i < addresses.size(); ++i) {
        VekSettingAccess::Target target;
        const vekmaster::VekError refused = VekSettingAccess::locate(table_, addresses[i], target);
        if (refused) {
            (*answers)[i] = {{"status", vekhttp::VekExitHttp::status(refused.kind)},
                             {"body", VekApiRoutes::refusal(refused)}};
            continue;
        }
        targets.push_back(target);
        places.push_back(i);
    }
    api_.submit(exchange, *line,
                [this, exchange, answers, targets, places](vekmaster::VekMasterSession&,
                                                           vekmaster::VekSessionAccess& access) {
                    std::vector<VekSettingAccess::Result> results;
                    const vekmaster::VekError error =
                        VekSettingAccess(access, table_, profile_.get()).read(targets, results);
                    if (error) {
                        VekApiRoutes::answerError(exchange, error);
                        return;
                    }
                    for (size_t t = 0; t < targets.size(); ++t) {
                        (*answers)[places[t]] = {{"status", 200},
                                                 {"body", answer(targets[t], results[t], true)}};
                    }
                    exchange->answer(200, Json{{"answers", std::move(*answers)}});
                });
}

}  // namespace vekserve
