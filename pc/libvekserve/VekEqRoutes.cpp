#include "VekEqRoutes.h"

#include "VekChannelBands.h"
#include "VekExitHttp.h"
#include "VekFilterImport.h"
#include "VekFilterWriter.h"
#include "VekRequestBody.h"
#include "VekTuningDocument.h"

namespace vekserve {

using namespace vekmaster;

namespace {

using Json = VekEqRoutes::Json;

// "" or why the body is not an import request.
std::string readImport(const std::string& body, VekFilterImport::Request& request) {
    Json json;
    std::string problem = VekTuningDocument::parse(body, json);
    if (!problem.empty() || !json.is_object()) {
        return problem.empty() ? "expected a JSON object" : problem;
    }
    const Json* text = VekValueJson::member(&json, "text");
    if (text == nullptr || !text->is_string()) {
        return "text: expected the filters as a string";
    }
    request.text = text->get<std::string>();
    request.source = "text";
    const Json* channels = VekValueJson::member(&json, "channels");
    std::string list;
    if (channels != nullptr && channels->is_string()) {
        list = channels->get<std::string>();
    } else if (channels != nullptr && channels->is_array()) {
        for (const Json& name : *channels) {
            list += (list.empty() ? "" : ",") + (name.is_string() ? name.get<std::string>() : "?");
        }
    } else {
        return "channels: expected \"LF,CF\" or [\"LF\", \"CF\"]";
    }
    problem = VekFilterImport::channels(list, request.channels);
    if (!problem.empty()) {
        return "channels: " + problem;
    }
    const Json* fit = VekValueJson::member(&json, "fit");
    if (fit != nullptr && !fit->is_boolean()) {
        return "fit: expected true or false";
    }
    request.options.fit = fit != nullptr && fit->get<bool>();
    const Json* preamp = VekValueJson::member(&json, "preamp");
    if (preamp != nullptr) {
        problem = preamp->is_string() ? VekFilterImport::preamp(preamp->get<std::string>(),
                                                                request.options.preamp)
                                      : "preamp: expected channel, master or ignore";
        if (!problem.empty()) {
            return problem;
        }
    }
    const Json* points = VekValueJson::member(&json, "points");
    if (points != nullptr) {
        return VekRequestBody::points(points->is_number_integer() ? points->dump() : "x",
                                      request.points);
    }
    return "";
}

}  // namespace

VekEqRoutes::VekEqRoutes(VekApiRoutes& api, VekRouteTable& table) : api_(api) {
    table.add("POST", "/api/devices/{}/eq/plan",
              "{\"text\", \"channels\", \"fit\", \"preamp\"}: filter text fitted to the "
              "channels, with the curves before and after; nothing sent",
              [this](const ExchangePtr& e, const Params& p) { import(e, p, true); });
    table.add("POST", "/api/devices/{}/eq/import",
              "{\"text\", \"channels\", \"fit\", \"preamp\"}: filter text fitted and applied",
              [this](const ExchangePtr& e, const Params& p) { import(e, p, false); });
    table.add("GET", "/api/devices/{}/eq/{}/export",
              "?format=apo|rew: a channel's bands as filter text",
              [this](const ExchangePtr& e, const Params& p) { exportBands(e, p); });
}

void VekEqRoutes::import(const ExchangePtr& exchange, const Params& params, bool dryRun) {
    VekLineWorker* target = api_.line(exchange, params[0]);
    if (target == nullptr) {
        return;
    }
    VekFilterImport::Request request;
    const std::string problem = readImport(exchange->request().body, request);
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    request.dryRun = dryRun;
    const VekChangeRecorder& recorder = api_.recorder();
    api_.submit(exchange, *target, [exchange, request, &recorder, device = target->path()](
                                       VekMasterSession&, VekSessionAccess& access) {
        const VekFilterImport::Outcome outcome = VekFilterImport::toDevice(access, request);
        // An import is one step of the device's history, however many values it set.
        const std::string unrecorded =
            request.dryRun ? ""
                           : recorder.record(exchange, device, "import",
                                             VekChangeRecorder::changesOf(outcome.applied));
        if (VekChangeRecorder::refuseUnrecorded(exchange, unrecorded)) {
            return;
        }
        const int status = outcome.status == VekExitStatus::kData
                               ? 422
                               : vekhttp::VekExitHttp::status(outcome.status);
        exchange->answer(status, VekFilterImport::json(outcome, request.points));
    });
}

void VekEqRoutes::exportBands(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = api_.line(exchange, params[0]);
    if (target == nullptr) {
        return;
    }
    const std::string format = exchange->request().param("format");
    std::string problem = VekChannelBands::checkChannel(params[1]);
    if (problem.empty() && !format.empty() && format != "apo" && format != "rew") {
        problem = "format=" + format + " is not apo or rew";
    }
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    api_.submit(exchange, *target, [exchange, channel = params[1], format](
                                       VekMasterSession&, VekSessionAccess& access) {
        VekChannelBands bands;
        const VekMasterReply* failed = nullptr;
        std::string why;
        if (!bands.read(access, channel, failed, why)) {
            if (failed != nullptr && !failed->answered()) {
                VekApiRoutes::answerFailure(exchange, *failed);
            } else {
                exchange->answer(failed != nullptr ? 502 : 404,
                                 VekHttpExchange::error(failed != nullptr
                                                            ? "the bands of " + channel +
                                                                  " cannot be read"
                                                            : why));
            }
            return;
        }
        const std::shared_ptr<const VekDeviceProfile> profile = VekDeviceProfile::inUse();
        const VekFilterList::Form form =
            format == "rew" ? VekFilterList::Form::Rew : VekFilterList::Form::Apo;
        const std::string notes = bands.feature + ' ' + channel + ", " +
                                  std::to_string(bands.bands.size()) + " bands (profile " +
                                  profile->name() + ')';
        exchange->answer(200, Json{{"feature", bands.feature},
                                   {"channel", channel},
                                   {"format", form == VekFilterList::Form::Rew ? "rew" : "apo"},
                                   {"text", VekFilterWriter::write(bands.bands, *profile, form, notes)}});
    });
}

}  // namespace vekserve
