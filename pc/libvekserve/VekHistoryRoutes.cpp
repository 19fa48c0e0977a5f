#include "VekHistoryRoutes.h"

#include <cerrno>
#include <cstdlib>

#include "VekExitHttp.h"
#include "VekRequestBody.h"
#include "VekTuningDocument.h"
#include "VekVirtualDevice.h"

namespace vekserve {

using namespace vekmaster;

namespace {

using Json = VekHistoryRoutes::Json;

// A page's offset or size from the query: a whole number in [low, high], or fallback
// when not given; -1 when given but not such a number.
int64_t number(const std::string& text, int64_t low, int64_t high, int64_t fallback) {
    if (text.empty()) {
        return fallback;
    }
    char* end = nullptr;
    errno = 0;
    const long long n = std::strtoll(text.c_str(), &end, 10);
    return end == text.c_str() || *end != '\0' || errno != 0 || n < low || n > high ? -1 : n;
}

// A document holding the step's values from one side (before for an undo).
Json documentOf(const VekJournal::Step& step, bool before) {
    const VekSettingsTable& table = VekSettingsTable::shared();
    Json settings = Json::object();
    for (const VekSettingChange& change : step.changes) {
        const size_t dot = change.setting.find('.');
        const VekSetting* setting =
            table.find(change.setting.substr(0, dot), change.setting.substr(dot + 1));
        const Json& value = before ? change.before : change.after;
        if (setting != nullptr && !value.is_null()) {
            VekSettingItem::place(settings, *setting, {change.channel, change.band}, value);
        }
    }
    return Json{{"format", VekTuningDocument::kFormat}, {"settings", std::move(settings)}};
}

// A checkpoint's name: what a path segment carries as it is.
bool goodName(const std::string& name) {
    if (name.empty() || name.size() > 64) {
        return false;
    }
    for (const char c : name) {
        const bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                        c == '-' || c == '_' || c == '.';
        if (!ok) {
            return false;
        }
    }
    return true;
}

// The body's text member, or "" when it has none; false when it is there but not text.
bool textMember(const Json& body, const char* name, std::string& text) {
    const Json* value = VekValueJson::member(&body, name);
    if (value == nullptr) {
        text.clear();
        return true;
    }
    if (!value->is_string()) {
        return false;
    }
    text = value->get<std::string>();
    return true;
}

// The body's text member ("" when absent); "" or what is wrong with the body.
std::string bodyText(const std::string& body, const char* name, std::string& text) {
    Json json;
    std::string problem = VekRequestBody::object(body, json);
    if (problem.empty() && !textMember(json, name, text)) {
        problem = std::string("\"") + name + "\" must be text";
    }
    return problem;
}

// The device's whole tuning as a document; false after answering why it could not be read.
bool readDocument(const VekHistoryRoutes::ExchangePtr& exchange, VekSessionAccess& access,
                  const std::string& device, Json& document) {
    VekDeviceReading reading;
    if (!access.read(nullptr, reading)) {
        VekApiRoutes::answerFailure(exchange, access.failure());
        return false;
    }
    document = VekTuningDocument::make(VekSettingsTable::shared(), device, reading.version,
                                       reading.features, std::move(reading.settings));
    return true;
}

}  // namespace

VekHistoryRoutes::VekHistoryRoutes(VekApiRoutes::Lines& lines, VekRouteTable& table,
                                   const VekChangeRecorder& recorder)
    : lines_(lines), recorder_(recorder) {
    const auto bind = [this](void (VekHistoryRoutes::*handler)(const ExchangePtr&, const Params&)) {
        return [this, handler](const ExchangePtr& e, const Params& p) { (this->*handler)(e, p); };
    };
    table.add("GET", "/api/devices/{}/history",
              "the changes made through this server, newest first; ?offset=N, ?limit=N (1 to "
              "1000, default 50)",
              bind(&VekHistoryRoutes::history));
    table.add("POST", "/api/devices/{}/undo", "put back the values of the newest step done",
              [this](const ExchangePtr& e, const Params& p) { step(e, p, true); });
    table.add("POST", "/api/devices/{}/redo", "take the newest step undone again",
              [this](const ExchangePtr& e, const Params& p) { step(e, p, false); });
    table.add("POST", "/api/devices/{}/checkpoints",
              "{\"name\"}: keep the device's whole tuning under that name",
              bind(&VekHistoryRoutes::keep));
    table.add("GET", "/api/devices/{}/checkpoints", "the device's checkpoints: name and time",
              bind(&VekHistoryRoutes::list));
    table.add("POST", "/api/devices/{}/checkpoints/{}/apply",
              "bring the device to a checkpoint, sending only what differs",
              bind(&VekHistoryRoutes::restore));
    table.add("POST", "/api/devices/{}/save",
              "write the device's tuning to its document (FILE.bak keeps the old one), or "
              "{\"path\"}",
              bind(&VekHistoryRoutes::save));
}

VekLineWorker* VekHistoryRoutes::line(const ExchangePtr& exchange, const std::string& index,
                                      bool journal) {
    const int n = VekRequestBody::index(index, lines_.size());
    if (n < 0) {
        exchange->answer(404, VekHttpExchange::error("no device " + index));
        return nullptr;
    }
    if (journal && recorder_.journal() == nullptr) {
        exchange->answer(503, VekHttpExchange::error("this server keeps no journal"));
        return nullptr;
    }
    return lines_[static_cast<size_t>(n)].get();
}

void VekHistoryRoutes::history(const ExchangePtr& exchange, const Params& params) {
    const VekLineWorker* target = line(exchange, params[0], true);
    if (target == nullptr) {
        return;
    }
    const int64_t offset = number(exchange->request().param("offset"), 0, INT64_MAX / 2, 0);
    const int64_t limit = number(exchange->request().param("limit"), 1, kMaxPage, kPageSize);
    if (offset < 0 || limit < 0) {
        exchange->answer(400, VekHttpExchange::error(
                                  "offset is a whole number from 0, limit one from 1 to " +
                                  std::to_string(kMaxPage)));
        return;
    }
    std::vector<VekJournal::Step> steps;
    int64_t total = 0;
    VekJournal& journal = *recorder_.journal();
    if (!journal.history(target->path(), offset, limit, steps, total)) {
        exchange->answer(500, VekHttpExchange::error(journal.error()));
        return;
    }
    Json list = Json::array();
    for (const VekJournal::Step& s : steps) {
        list.push_back(VekJournal::json(s));
    }
    exchange->answer(200, Json{{"device", target->path()}, {"total", total}, {"offset", offset},
                               {"steps", std::move(list)}});
}

bool VekHistoryRoutes::applyStep(const ExchangePtr& exchange, VekSessionAccess& access,
                                 const std::string& device, const Json& document,
                                 const VekTuningApply::Options& options, const std::string& kind,
                                 int64_t target, Json extra) const {
    const VekTuningApply::Result result = access.apply(document, options);
    // Only a complete undo moves the step; what part of one took is history all the same.
    const bool whole = result.status == VekExitStatus::kOk;
    const std::string unrecorded = recorder_.record(exchange, device, kind,
                                                    VekChangeRecorder::changesOf(result),
                                                    whole ? target : 0);
    if (VekChangeRecorder::refuseUnrecorded(exchange, unrecorded)) {
        return false;
    }
    extra["apply"] = VekTuningApply::json(result);
    exchange->answer(vekhttp::VekExitHttp::status(result.status), extra);
    return whole;
}

void VekHistoryRoutes::step(const ExchangePtr& exchange, const Params& params, bool back) {
    VekLineWorker* target = line(exchange, params[0], true);
    if (target == nullptr) {
        return;
    }
    // Looked up on the line's thread: the steps of one device are taken in order.
    VekApiRoutes::submit(exchange, *target, [this, exchange, back, device = target->path()](
                                                VekMasterSession&, VekSessionAccess& access) {
        VekJournal& journal = *recorder_.journal();
        VekJournal::Step step;
        if (!(back ? journal.toUndo(device, step) : journal.toRedo(device, step))) {
            const std::string& error = journal.error();
            exchange->answer(error.empty() ? 409 : 500,
                             VekHttpExchange::error(!error.empty() ? error
                                                    : back     ? "nothing to undo"
                                                               : "nothing to redo"));
            return;
        }
        applyStep(exchange, access, device, documentOf(step, back), {}, back ? "undo" : "redo",
                  step.id, Json{{back ? "undone" : "redone", VekJournal::json(step)}});
    });
}

void VekHistoryRoutes::keep(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = line(exchange, params[0], true);
    if (target == nullptr) {
        return;
    }
    std::string name;
    std::string problem = bodyText(exchange->request().body, "name", name);
    if (problem.empty() && !goodName(name)) {
        problem = "expected {\"name\": NAME}, 1 to 64 of A-Z a-z 0-9 . _ -";
    }
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    VekApiRoutes::submit(exchange, *target, [this, exchange, name, target](
                                                VekMasterSession&, VekSessionAccess& access) {
        const std::string& device = target->path();
        VekJournal::Checkpoint checkpoint;
        checkpoint.name = name;
        if (!readDocument(exchange, access, device, checkpoint.document)) {
            return;
        }
        target->remember(checkpoint.document["settings"]);
        VekJournal& journal = *recorder_.journal();
        if (!journal.saveCheckpoint(device, checkpoint)) {
            exchange->answer(500, VekHttpExchange::error(journal.error()));
            return;
        }
        exchange->answer(201, Json{{"name", name}, {"timeMs", checkpoint.timeMs}});
    });
}

void VekHistoryRoutes::list(const ExchangePtr& exchange, const Params& params) {
    const VekLineWorker* target = line(exchange, params[0], true);
    if (target == nullptr) {
        return;
    }
    std::vector<VekJournal::Checkpoint> checkpoints;
    VekJournal& journal = *recorder_.journal();
    if (!journal.checkpoints(target->path(), checkpoints)) {
        exchange->answer(500, VekHttpExchange::error(journal.error()));
        return;
    }
    Json out = Json::array();
    for (const VekJournal::Checkpoint& c : checkpoints) {
        out.push_back({{"name", c.name}, {"timeMs", c.timeMs}});
    }
    exchange->answer(200, Json{{"checkpoints", std::move(out)}});
}

void VekHistoryRoutes::restore(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = line(exchange, params[0], true);
    if (target == nullptr) {
        return;
    }
    VekJournal::Checkpoint checkpoint;
    VekJournal& journal = *recorder_.journal();
    if (!journal.checkpoint(target->path(), params[1], checkpoint)) {
        const std::string& error = journal.error();
        exchange->answer(error.empty() ? 404 : 500,
                         VekHttpExchange::error(error.empty() ? "no checkpoint " + params[1]
                                                              : error));
        return;
    }
    VekApiRoutes::submit(exchange, *target, [this, exchange, checkpoint, target](
                                                VekMasterSession&, VekSessionAccess& access) {
        // Flipping between checkpoints, the device is known to hold the last one: only
        // what differs is sent and read back, nothing else is read.
        VekTuningApply::Options options;
        options.current = target->known();
        if (applyStep(exchange, access, target->path(), checkpoint.document, options,
                      "checkpoint", 0, Json{{"checkpoint", checkpoint.name}})) {
            target->remember(checkpoint.document["settings"]);
        }
    });
}

void VekHistoryRoutes::save(const ExchangePtr& exchange, const Params& params) {
    VekLineWorker* target = line(exchange, params[0], false);
    if (target == nullptr) {
        return;
    }
    std::string path;
    std::string problem = bodyText(exchange->request().body, "path", path);
    if (problem.empty() && path.empty() && !target->isVirtual()) {
        problem = "a real line has no document of its own: give {\"path\": FILE}";
    }
    if (!problem.empty()) {
        exchange->answer(400, VekHttpExchange::error(problem));
        return;
    }
    if (path.empty()) {
        path = target->path();
    }
    VekApiRoutes::submit(exchange, *target, [exchange, path, device = target->path()](
                                                VekMasterSession&, VekSessionAccess& access) {
        Json document;
        if (!readDocument(exchange, access, device, document)) {
            return;
        }
        std::string backup;
        const std::string unwritten = VekVirtualDevice::save(path, document, backup);
        if (!unwritten.empty()) {
            exchange->answer(500, VekHttpExchange::error(unwritten));
            return;
        }
        Json out{{"path", path}};
        out["backup"] = backup.empty() ? Json() : Json(backup);
        exchange->answer(200, out);
    });
}

}  // namespace vekserve
