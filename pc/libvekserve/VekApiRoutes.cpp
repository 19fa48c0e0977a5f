#include "VekApiRoutes.h"

#include <cctype>

#include "VekChannelBands.h"
#include "VekExitHttp.h"
#include "VekHttpDispatch.h"
#include "VekRequestBody.h"
#include "VekSchemaJson.h"
#include "VekStreamSink.h"
#include "VekTuningDiff.h"
#include "VekTuningDocument.h"
#include "VekWireReply.h"

namespace vekserve {

using namespace vekmaster;

namespace {

using Json = VekHttpExchange::Json;

// Raw data a client did not ask for: counted by the reply, kept nowhere.
class Discard : public VekRawSink {
public:
    bool begin(int64_t) override { return true; }
    bool write(const char*, size_t) override { return true; }
    bool end() override { return true; }
    void abandon() override {}
};

const Json* settingsOf(const Json& document) {
    static const Json kNone = Json::object();
    const Json* settings = VekValueJson::member(&document, "settings");
    return settings != nullptr ? settings : &kNone;
}

}  // namespace

VekApiRoutes::VekApiRoutes(Lines& lines, VekRouteTable& table,
                           std::shared_ptr<const VekDeviceProfile> limits,
                           const VekChangeRecorder& recorder)
    : lines_(lines),
      profile_(std::move(limits)),
      catalog_(VekMessageCatalog::shared()),
      table_(VekSettingsTable::shared()),
      recorder_(recorder) {
    const auto bind = [this](void (VekApiRoutes::*handler)(const ExchangePtr&, const Params&)) {
        return [this, handler](const ExchangePtr& e, const Params& p) { (this->*handler)(e, p); };
    };
    table.add("GET", "/api", "this list", [&table](const ExchangePtr& e, const Params&) {
        e->answer(200, Json{{"routes", table.list()}});
    });
    table.add("GET", "/api/devices", "every line: path, state, version, features",
              [this](const ExchangePtr& e, const Params&) { devices(e); });
    table.add("POST", "/api/devices/{}/request",
              "one message, {\"feature\", \"message\", \"args\"}; ?raw=1: its raw data as the body",
              bind(&VekApiRoutes::message));
    table.add("POST", "/api/devices/{}/batch",
              "{\"messages\": [{\"feature\", \"message\", \"args\"}, ...]}: on the line together; "
              "{\"answers\": [{\"status\", \"body\"}, ...]}, each as /request answers it",
              bind(&VekApiRoutes::batch));
    table.add("GET", "/api/devices/{}/snapshot", "every setting, as a tuning document",
              bind(&VekApiRoutes::snapshot));
    table.add("POST", "/api/devices/{}/snapshot", "the settings a tuning document holds, read anew",
              bind(&VekApiRoutes::snapshot));
    table.add("POST", "/api/devices/{}/apply",
              "bring the device to a tuning document; ?dry_run=1, ?bypass=1",
              bind(&VekApiRoutes::apply));
    table.add("POST", "/api/diff", "{\"a\", \"b\", \"device\"}: where two tunings differ",
              [this](const ExchangePtr& e, const Params&) { diff(e); });
    table.add("GET", "/api/devices/{}/files/{}", "a feature's setting files",
              bind(&VekApiRoutes::files));
    table.add("GET", "/api/devices/{}/files/{}/{}", "the content of a feature's file N, any size",
              bind(&VekApiRoutes::file));
    table.add("GET", "/api/devices/{}/trace",
              "the line's latest traffic (16 MiB at most), every frame each way, as pcapng",
              bind(&VekApiRoutes::trace));
    table.add("GET", "/api/profile",
              "the device profile in use: band values' meaning, every value's range",
              [this](const ExchangePtr& e, const Params&) { profile(e); });
    table.add("GET", "/api/schema",
              "every message and setting: fields, channels, bands, ranges and units",
              [this](const ExchangePtr& e, const Params&) {
                  e->answer(200, VekSchemaJson::of(catalog_, table_, *profile_));
              });
    table.add("GET", "/api/devices/{}/eq/{}/curve",
              "a channel's equaliser response as the device holds it; ?points=N (16 to 2048)",
              bind(&VekApiRoutes::deviceCurve));
    table.add("POST", "/api/curve", "{\"bands\": [[six values], ...], \"points\": N}: their response",
              [this](const ExchangePtr& e, const Params&) { curve(e); });
    // Reached without an upgrade: the upgrade itself never comes to a route.
    table.add("GET", VekHttpDispatch::kEventsPath,
              "WebSocket: every request and answer on every line, and line states",
              [](const ExchangePtr& e, const Params&) {
                  e->answer(426,
                            VekHttpExchange::error(std::string(VekHttpDispatch::kEventsPath) +
                                                   " is a WebSocket"),
                            {{"Upgrade", "websocket"}});
              });
}

void VekApiRoutes::answerFailure(const ExchangePtr& exchange, const VekMasterReply& reply) {
    answerError(exchange, reply.error());
}

void VekApiRoutes::answerError(const ExchangePtr& exchange, const VekError& error) {
    exchange->answer(vekhttp::VekExitHttp::status(error.kind), refusal(error));
}

void VekApiRoutes::answerReply(const ExchangePtr& exchange, const VekMasterReply& reply) {
    if (reply.answered()) {
        exchange->answer(200, VekWireReply::of(reply));
    } else {
        answerFailure(exchange, reply);
    }
}

VekLineWorker* VekApiRoutes::line(const ExchangePtr& exchange, const std::string& index) {
    const int n = VekRequestBody::index(index, lines_.size());
    if (n < 0) {
        exchange->answer(404, VekHttpExchange::error("no device " + index + " (devices 0 to " +
                                                     std::to_string(lines_.size() - 1) + ")"));
        return nullptr;
    }
    return lines_[static_cast<size_t>(n)].get();
}

void VekApiRoutes::submit(const ExchangePtr& exchange, VekLineWorker& line, Run run) {
    VekLineJob job;
    job.run = std::move(run);
    submit(exchange, line, std::move(job));
}

void VekApiRoutes::submit(const ExchangePtr& exchange, VekLineWorker& line, VekLineJob job) {
    job.client = exchange->request().client;
    job.requestId = exchange->request().id;
    job.refuse = [exchange](const std::string& why) {
        exchange->answer(503, VekHttpExchange::error(why));
    };
    const std::string refused = line.submit(std::move(job));
    if (!refused.empty()) {
        exchange->answer(503, VekHttpExchange::error(refused));
    }
}

void VekApiRoutes::devices(const ExchangePtr& exchange) {
    Json list = Json::array();
    for (const auto& line : lines_) {
        list.push_back(line->describe());
    }
    exchange->answer(200, Json{{"devices", std::move(list)}});
}

void VekApiRoutes::message(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = line(exchange, params[0]);
    if (target == nullptr) {
        return;
    }
    VekCheckedRequest checked;
    const VekError problem =
        VekRequestBody::message(catalog_, profile_.get(), exchange->request().body, checked);
    if (problem) {
        answerError(exchange, problem);
        return;
    }
    const bool raw = exchange->request().flag("raw");
    VekChangeSet touched(table_);
    if (!raw && recorder_.journal() != nullptr &&
        touched.add(checked.message(), checked.args())) {
        // A change: what it set is read before and after, for the journal.
        submit(exchange, *target,
               [this, exchange, checked, touched, device = target->path()](
                   VekMasterSession&, VekSessionAccess& access) {
                   VekMasterReply reply;
                   const std::string unrecorded =
                       recorder_.around(access, touched, exchange, device, "request",
                                        [&] { reply = access.send(checked, nullptr); });
                   if (!VekChangeRecorder::refuseUnrecorded(exchange, unrecorded)) {
                       answerReply(exchange, reply);
                   }
               });
        return;
    }
    if (!raw) {
        // Nothing to stream: the line may send it in one window with other clients'.
        VekLineJob job;
        job.request = checked;
        job.answer = [exchange](const VekMasterReply& reply) { answerReply(exchange, reply); };
        submit(exchange, *target, std::move(job));
        return;
    }
    submit(exchange, *target,
           [exchange, raw, checked](VekMasterSession& session, VekSessionAccess& access) {
               Discard discard;
               VekStreamSink stream(exchange, session);
               VekRawSink* sink = raw ? static_cast<VekRawSink*>(&stream) : &discard;
               const VekMasterReply& reply = access.send(checked, sink);
               if (stream.started()) {
                   return;
               }
               if (raw && reply.answered()) {
                   exchange->answerBytes(200, "application/octet-stream", "",
                                         {{"Vek-Reply", VekStreamSink::header(reply)}});
               } else {
                   answerReply(exchange, reply);
               }
           });
}

void VekApiRoutes::snapshot(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = line(exchange, params[0]);
    if (target == nullptr) {
        return;
    }
    Json only;
    if (exchange->request().method == "POST") {
        const std::string problem =
            VekRequestBody::document(table_, exchange->request().body, only);
        if (!problem.empty()) {
            exchange->answer(400, VekHttpExchange::error(problem));
            return;
        }
    }
    submit(exchange, *target,
           [this, exchange, only](VekMasterSession&, VekSessionAccess& access) {
               VekDeviceReading reading;
               if (!access.read(only.is_null() ? nullptr : settingsOf(only), reading)) {
                   answerFailure(exchange, access.failure());
                   return;
               }
               exchange->answer(200, VekTuningDocument::make(table_, reading.path, reading.version,
                                                             reading.features,
                                                             std::move(reading.settings)));
           });
}

void VekApiRoutes::apply(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = line(exchange, params[0]);
    if (target == nullptr) {
        return;
    }
    Json document;
    const std::string problem =
        VekRequestBody::document(table_, exchange->request().body, document);
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    const VekError breach =
        VekTuningDocument::outOfRange(table_, document, *profile_);
    if (breach) {
        answerError(exchange, breach);
        return;
    }
    VekTuningApply::Options options;
    options.dryRun = exchange->request().flag("dry_run");
    options.bypass = exchange->request().flag("bypass");
    submit(exchange, *target, [this, exchange, document, options, device = target->path()](
                                  VekMasterSession&, VekSessionAccess& access) {
        const VekTuningApply::Result result = access.apply(document, options);
        const std::string unrecorded =
            options.dryRun ? ""
                           : recorder_.record(exchange, device, "apply",
                                              VekChangeRecorder::changesOf(result));
        if (!VekChangeRecorder::refuseUnrecorded(exchange, unrecorded)) {
            exchange->answer(vekhttp::VekExitHttp::status(result.status), VekTuningApply::json(result));
        }
    });
}

void VekApiRoutes::diff(const ExchangePtr& exchange) {
    VekRequestBody::Diff sides;
    const std::string problem = VekRequestBody::diff(table_, exchange->request().body, sides);
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    if (!sides.device[0] && !sides.device[1]) {
        exchange->answer(200, VekTuningDiff::json(VekTuningDiff::compare(
                                  table_, *settingsOf(sides.documents[0]),
                                  *settingsOf(sides.documents[1]))));
        return;
    }
    VekLineWorker* target = line(exchange, std::to_string(sides.index));
    if (target == nullptr) {
        return;
    }
    submit(exchange, *target, [this, exchange, sides](VekMasterSession&, VekSessionAccess& access) {
        const int device = sides.device[0] ? 0 : 1;
        const Json& other = *settingsOf(sides.documents[1 - device]);
        VekDeviceReading reading;
        if (!access.read(&other, reading)) {
            answerFailure(exchange, access.failure());
            return;
        }
        const Json& a = device == 0 ? reading.settings : other;
        const Json& b = device == 0 ? other : reading.settings;
        exchange->answer(200, VekTuningDiff::json(VekTuningDiff::compare(table_, a, b)));
    });
}

void VekApiRoutes::files(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = line(exchange, params[0]);
    if (target == nullptr) {
        return;
    }
    submit(exchange, *target,
           [exchange, feature = params[1]](VekMasterSession&, VekSessionAccess& access) {
               answerReply(exchange, access.request("Common", "FileList", {feature}, nullptr));
           });
}

void VekApiRoutes::file(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = line(exchange, params[0]);
    if (target == nullptr) {
        return;
    }
    submit(exchange, *target,
           [exchange, feature = params[1], index = params[2]](VekMasterSession& session,
                                                             VekSessionAccess& access) {
               const VekMasterReply& list = access.request("Common", "FileList", {feature}, nullptr);
               if (!list.answered()) {
                   answerFailure(exchange, list);
                   return;
               }
               const VekFieldPrinter::Field* files = list.field("files");
               const size_t count = files != nullptr && !list.fail ? files->parts.size() : 0;
               const int n = VekRequestBody::index(index, count);
               if (n < 0) {
                   exchange->answer(404, VekHttpExchange::error(
                                             feature + " has " + std::to_string(count) +
                                             (count == 1 ? " file" : " files") + ", no file " +
                                             index));
                   return;
               }
               const std::string path = files->parts[static_cast<size_t>(n)].text;
               // A name a header can carry whatever the device calls its file.
               std::string name = path.substr(path.rfind('/') + 1);
               for (char& c : name) {
                   c = std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '-' ? c : '_';
               }
               VekStreamSink stream(
                   exchange, session,
                   {{"Content-Disposition", "attachment; filename=\"" + name + "\""}});
               const VekMasterReply& content =
                   access.request("Common", "FileContent", {path}, &stream);
               if (stream.started()) {
                   return;
               }
               if (!content.answered()) {
                   answerFailure(exchange, content);
               } else {
                   exchange->answer(404, VekHttpExchange::error("the device answered NG for " +
                                                                path));
               }
           });
}

void VekApiRoutes::batch(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = line(exchange, params[0]);
    if (target == nullptr) {
        return;
    }
    std::vector<Json> list;
    const std::string problem = VekRequestBody::messages(exchange->request().body, list);
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    // Each message's answer is what /request would have answered, status and body; a
    // refused one keeps its place and is not sent.
    const auto answer = [](int status, Json body) {
        return Json{{"status", status}, {"body", std::move(body)}};
    };
    auto answers = std::make_shared<std::vector<Json>>(list.size());
    auto batch = std::make_shared<VekMasterSession::Batch>();
    auto touched = std::make_shared<VekChangeSet>(table_);
    for (size_t i = 0; i < list.size(); ++i) {
        VekCheckedRequest checked;
        const VekError why = VekRequestBody::message(catalog_, profile_.get(), list[i], checked);
        if (why) {
            (*answers)[i] = answer(vekhttp::VekExitHttp::status(why.kind), refusal(why));
            continue;
        }
        batch->emplace_back(checked);
        batch->back().tag = i;
        touched->add(checked.message(), checked.args());
    }
    submit(exchange, *target, [this, exchange, answers, batch, answer, touched,
                               device = target->path()](VekMasterSession& session,
                                                        VekSessionAccess& access) {
        const std::string unrecorded = recorder_.around(access, *touched, exchange, device, "batch",
                                                        [&] { session.exchange(*batch); });
        if (VekChangeRecorder::refuseUnrecorded(exchange, unrecorded)) {
            return;
        }
        for (const VekMasterExchange& sent : *batch) {
            (*answers)[sent.tag] =
                sent.reply.answered()
                    ? answer(200, VekWireReply::of(sent.reply))
                    : answer(vekhttp::VekExitHttp::status(sent.reply.error().kind), refusal(sent.reply.error()));
        }
        exchange->answer(200, Json{{"answers", std::move(*answers)}});
    });
}

VekApiRoutes::Json VekApiRoutes::refusal(const VekError& error) {
    Json body = VekHttpExchange::error(error.text);
    if (error.kind == VekError::Kind::Range) {
        body["field"] = error.field;
        body["min"] = VekValueJson::number(error.min, 6);
        body["max"] = VekValueJson::number(error.max, 6);
    }
    return body;
}

void VekApiRoutes::profile(const ExchangePtr& exchange) {
    exchange->answer(200, profile_->json());
}

void VekApiRoutes::trace(const ExchangePtr& exchange, const Params& params) {
    const VekLineWorker* target = line(exchange, params[0]);
    if (target == nullptr) {
        return;
    }
    // The ring takes its own lock: the line's thread goes on recording meanwhile.
    exchange->answerBytes(
        200, "application/x-pcapng", target->trace().pcapng(),
        {{"Content-Disposition", "attachment; filename=\"vek-device" +
                                    std::to_string(VekRequestBody::index(params[0], lines_.size())) +
                                    ".pcapng\""}});
}

void VekApiRoutes::deviceCurve(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = line(exchange, params[0]);
    if (target == nullptr) {
        return;
    }
    size_t points = 0;
    std::string problem = VekRequestBody::points(exchange->request().param("points"), points);
    if (problem.empty()) {
        problem = VekChannelBands::checkChannel(params[1]);
    }
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    const int device = VekRequestBody::index(params[0], lines_.size());
    submit(exchange, *target,
           [this, exchange, device, channel = params[1], points](VekMasterSession&,
                                                           VekSessionAccess& access) {
               VekChannelBands bands;
               const VekMasterReply* failed = nullptr;
               std::string why;
               if (!bands.read(access, channel, failed, why)) {
                   if (failed != nullptr && failed->answered()) {
                       exchange->answer(502, VekHttpExchange::error(
                                                 failed->feature + ' ' + failed->message +
                                                 " answered NG: the bands cannot be read"));
                   } else if (failed != nullptr) {
                       answerFailure(exchange, *failed);
                   } else {
                       exchange->answer(404, VekHttpExchange::error(why));
                   }
                   return;
               }
               exchange->answer(200, bands.curve(*profile_, points, device));
           });
}

void VekApiRoutes::curve(const ExchangePtr& exchange) {
    std::vector<VekResponseCurve::Band> bands;
    size_t points = 0;
    const std::string problem = VekRequestBody::curve(exchange->request().body, bands, points);
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    exchange->answer(200, VekResponseCurve(*profile_, points).json(bands));
}

}  // namespace vekserve
