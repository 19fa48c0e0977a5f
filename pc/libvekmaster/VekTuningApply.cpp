#include "VekTuningApply.h"

#include <algorithm>

#include "VekNames.h"
#include "VekTuningDiff.h"

namespace vekmaster {

namespace {

using Json = VekTuningApply::Json;
using Range = VekSetting::Range;
using Outcome = VekMasterReply::Outcome;

// The item, unless it is absent or a missing marker.
const Json* known(const Json* item) {
    return item != nullptr && !VekSettingItem::isMissing(*item) ? item : nullptr;
}

VekSettingChange changeOf(const VekSetting& setting, const VekSettingItem::Key& key,
                          const Json* before, const Json& after) {
    return {setting.path(), key.channel, key.band, before != nullptr ? *before : Json(), after};
}

}  // namespace

VekTuningApply::Result VekTuningApply::run(const Json& document, const Options& options) {
    Result result;
    const Json empty = Json::object();
    const auto found = document.find("settings");
    const Json& settings = found != document.end() ? *found : empty;
    std::string version;
    std::vector<std::string> served;
    if (!reader_.identify(version, served)) {
        stop(reader_.stopped(), result);
        return result;
    }
    for (const auto& feature : settings.items()) {
        if (!VekNames::contains(served, feature.key())) {
            result.status = VekExitStatus::kNg;
            result.problem = "the device does not serve " + feature.key() + " (it serves " +
                             VekNames::join(served) + "); nothing was set";
            return result;
        }
    }
    // What to read first: what the document holds, every channel of what one message
    // sets for all channels (the others are sent as they are), and the bypass when it is
    // to be held.
    Json wanted = settings;
    for (const VekSetting& setting : table_.settings()) {
        if (setting.range == Range::ChannelArray && VekSettingItem::at(settings, setting, {})) {
            for (const std::string& channel : VekSettingsTable::channels()) {
                wanted[setting.feature][setting.name][channel] = nullptr;
            }
        }
    }
    if (options.bypass) {
        wanted["Common"]["bypass"] = true;
    }
    Json current = options.current != nullptr ? *options.current : Json();
    int missing = 0;
    if (options.current == nullptr && !reader_.read(served, &wanted, current, missing)) {
        stop(reader_.stopped(), result);
        return result;
    }
    std::vector<Step> steps;
    plan(settings, current, steps, result);
    if (!placeBypass(settings, current, options, steps, result)) {
        return result;
    }
    // Every request is checked before the first is sent: a request also carries the
    // device's own values of the channels the document leaves alone.
    for (const Step& step : steps) {
        const VekError refused = session_.check(*step.setting->set, step.args);
        if (refused) {
            result.status = VekExitStatus::kUsage;
            result.problem = refused.text + "; nothing was set";
            return result;
        }
    }
    for (const Step& step : steps) {
        result.requests.push_back(step.setting->set->text(step.args));
        result.values += step.wanted.size();
    }
    if (options.dryRun) {
        for (const Step& step : steps) {
            for (const Wanted& w : step.wanted) {
                result.changes.push_back(w.change);
            }
        }
    } else {
        std::vector<const Wanted*> sent;
        if (!send(steps, sent, result)) {
            return result;
        }
        readBack(served, sent, result);
    }
    if (result.status == VekExitStatus::kOk && !result.failures.empty()) {
        result.status = VekExitStatus::kNg;
    }
    return result;
}

void VekTuningApply::plan(const Json& settings, const Json& current, std::vector<Step>& steps,
                          Result& result) const {
    for (const VekSetting& setting : table_.settings()) {
        const Json* value = VekSettingItem::at(settings, setting, {});
        if (setting.set == nullptr || value == nullptr) {
            continue;  // read-only values describe the device; there is nothing to set
        }
        if (setting.range == Range::ChannelArray) {
            planChannelArray(setting, *value, current, steps, result);
            continue;
        }
        VekSettingItem::forEach(
            setting, *value, [&](const VekSettingItem::Key& key, const Json& item) {
                const Json* now = VekSettingItem::at(current, setting, key);
                if (VekSettingItem::isMissing(item) || VekTuningDiff::same(setting, now, &item)) {
                    return;
                }
                VekSettingItem::Texts texts;
                VekSettingItem::texts(setting, item, texts);
                const Change change{VekSettingItem::label(setting, key),
                                    VekTuningDiff::show(setting, now, &item),
                                    VekTuningDiff::show(setting, &item, now),
                                    changeOf(setting, key, now, item)};
                steps.push_back({Step::Role::Value,
                                 &setting,
                                 VekSettingItem::args(setting, key, texts),
                                 {Wanted{&setting, key, item, change}}});
            });
    }
}

// One message sets all six channels: the document's where it has them, the device's
// own values for the others.
void VekTuningApply::planChannelArray(const VekSetting& setting, const Json& value,
                                      const Json& current, std::vector<Step>& steps,
                                      Result& result) const {
    VekSettingItem::Texts six(1);
    std::vector<Wanted> wanted;
    bool complete = true;
    for (const std::string& channel : VekSettingsTable::channels()) {
        const VekSettingItem::Key key{channel, -1};
        const auto given = value.is_object() ? value.find(channel) : value.end();
        const Json* want = known(given != value.end() ? &*given : nullptr);
        const Json* have = known(VekSettingItem::at(current, setting, key));
        VekSettingItem::Texts texts;
        if ((want == nullptr && have == nullptr) ||
            !VekSettingItem::texts(setting, want != nullptr ? *want : *have, texts).empty()) {
            complete = false;
            continue;
        }
        six[0].push_back(texts[0][0]);
        if (want != nullptr && !VekTuningDiff::same(setting, have, want)) {
            const Change change{VekSettingItem::label(setting, key),
                                VekTuningDiff::show(setting, have, want),
                                VekTuningDiff::show(setting, want, have),
                                changeOf(setting, key, have, *want)};
            wanted.push_back({&setting, key, *want, change});
        }
    }
    if (wanted.empty()) {
        return;
    }
    if (!complete) {
        result.values += wanted.size();
        for (const Wanted& w : wanted) {
            result.failures.push_back(
                {w.change.label, "cannot be set: one message sets every channel of " +
                                     setting.path() +
                                     ", and neither the document nor the device has them all"});
        }
        return;
    }
    steps.push_back({Step::Role::Value, &setting, VekSettingItem::args(setting, {}, six), wanted});
}

VekTuningApply::Step VekTuningApply::bypassStep(Step::Role role) const {
    const VekSetting& bypass = *table_.find("Common", "bypass");
    VekSettingItem::Texts texts;
    VekSettingItem::texts(bypass, Json(role == Step::Role::HoldBypass), texts);
    return {role, &bypass, VekSettingItem::args(bypass, {}, texts), {}};
}

bool VekTuningApply::placeBypass(const Json& settings, const Json& current, const Options& options,
                                 std::vector<Step>& steps, Result& result) const {
    const VekSetting& bypass = *table_.find("Common", "bypass");
    const auto planned = std::find_if(steps.begin(), steps.end(),
                                      [&](const Step& step) { return step.setting == &bypass; });
    std::vector<Step> fromDocument;
    if (planned != steps.end()) {
        fromDocument.push_back(std::move(*planned));
        steps.erase(planned);
    }
    // With nothing else to set there is nothing to hide: holding the bypass would only
    // drop the audio for a moment.
    if (!options.bypass || steps.empty()) {
        // Switched on before everything else, switched off after it.
        for (Step& step : fromDocument) {
            const bool on = step.wanted.front().item == Json(true);
            steps.insert(on ? steps.begin() : steps.end(), std::move(step));
        }
        return true;
    }
    const Json* before = known(VekSettingItem::at(current, bypass, {}));
    if (before == nullptr || !before->is_boolean()) {
        result.status = VekExitStatus::kNg;
        result.problem =
            "the bypass cannot be held on: the device did not report it; nothing was set";
        return false;
    }
    const Json* document = known(VekSettingItem::at(settings, bypass, {}));
    const bool after = document != nullptr ? document->get<bool>() : before->get<bool>();
    const std::vector<Wanted> wanted =
        fromDocument.empty() ? std::vector<Wanted>{} : fromDocument.front().wanted;
    if (!before->get<bool>()) {
        Step hold = bypassStep(Step::Role::HoldBypass);
        if (after) {
            hold.wanted = wanted;
        }
        steps.insert(steps.begin(), std::move(hold));
    }
    if (!after) {
        Step release = bypassStep(Step::Role::ReleaseBypass);
        release.wanted = wanted;
        steps.push_back(std::move(release));
    }
    return true;
}

bool VekTuningApply::send(const std::vector<Step>& steps, std::vector<const Wanted*>& sent,
                          Result& result) {
    // One batch on the session's window. The device acts on the requests in the order
    // sent; at the first NG or unanswered request nothing more is sent, and what is
    // already on the line is awaited and reported.
    VekMasterSession::Batch batch;
    for (size_t i = 0; i < steps.size(); ++i) {
        VekMasterExchange e;
        e.message = steps[i].setting->set;
        e.args = steps[i].args;
        e.tag = i;
        batch.push_back(std::move(e));
    }
    const VekMasterReply* stoppedBy = nullptr;
    bool holdFailed = false;
    session_.exchange(batch, [&](VekMasterSession::Batch& b, size_t index) {
        const Step& step = steps[b[index].tag];
        const VekMasterReply& reply = b[index].reply;
        if (reply.outcome == Outcome::Ok) {
            for (const Wanted& w : step.wanted) {
                result.changes.push_back(w.change);
                sent.push_back(&w);
            }
            return false;
        }
        const std::string reason =
            reply.outcome == Outcome::Ng ? "the device answered NG"
            : reply.lost                 ? "sent, but its answer was lost: it may have taken"
                                         : "not answered: " + reply.problem;
        for (const Wanted& w : step.wanted) {
            result.failures.push_back({w.change.label, reason});
        }
        if (step.wanted.empty()) {
            result.failures.push_back({step.setting->path(), reason});
        }
        holdFailed = holdFailed || step.role == Step::Role::HoldBypass;
        if (stoppedBy == nullptr) {
            stoppedBy = &reply;
        }
        return true;
    });
    size_t sentCount = 0;
    for (const VekMasterExchange& e : batch) {
        if (!e.sent) {
            continue;
        }
        ++sentCount;
        const VekMasterReply& r = e.reply;
        result.sent.push_back({e.message->text(e.args),
                               r.outcome == Outcome::Ok   ? "OK"
                               : r.outcome == Outcome::Ng ? "NG"
                               : r.lost                   ? "lost"
                               : r.outcome == Outcome::LineFailed ? "line failed"
                                                                  : "no answer"});
    }
    if (stoppedBy == nullptr) {
        return true;
    }
    const std::string what = stoppedBy->outcome == Outcome::Ng ? "an NG" : "a request unanswered";
    const std::string tally = std::to_string(sentCount) + " of " + std::to_string(steps.size()) +
                              " requests were sent";
    if (holdFailed) {
        result.status = VekExitStatus::kNg;
        result.problem = "the bypass could not be switched on; nothing else was set";
        return false;
    }
    if (stoppedBy->outcome == Outcome::Ng) {
        result.status = VekExitStatus::kNg;
        if (sentCount < steps.size()) {
            result.problem = "stopped at " + what + ": " + tally;
        }
    } else {
        stop(*stoppedBy, result);
        result.problem += "; stopped: " + tally;
    }
    // Left on, the bypass would silence the device: one attempt to release it.
    if (steps.back().role == Step::Role::ReleaseBypass && !batch.back().sent &&
        stoppedBy->outcome != Outcome::LineFailed) {
        session_.request(*steps.back().setting->set, steps.back().args);
    }
    // What took is still read back: the device acted on every request it answered OK.
    return stoppedBy->outcome == Outcome::Ng;
}

void VekTuningApply::readBack(const std::vector<std::string>& served,
                              const std::vector<const Wanted*>& sent, Result& result) {
    Json wanted = Json::object();
    for (const Wanted* w : sent) {
        VekSettingItem::place(wanted, *w->setting, w->key, w->item);
    }
    if (sent.empty()) {
        return;
    }
    Json got;
    int missing = 0;
    if (!reader_.read(served, &wanted, got, missing)) {
        stop(reader_.stopped(), result);
        return;
    }
    for (const Wanted* w : sent) {
        const Json* now = VekSettingItem::at(got, *w->setting, w->key);
        if (!VekTuningDiff::same(*w->setting, now, &w->item)) {
            result.failures.push_back(
                {w->change.label, "did not take: the device has " +
                                      VekTuningDiff::show(*w->setting, now, &w->item)});
        }
    }
}

void VekTuningApply::stop(const VekMasterReply& reply, Result& result) const {
    result.status = VekExitStatus::of(reply);
    result.problem = reply.problem;
}

namespace {

// The text member of an object, or "" when it has none.
std::string textOf(const VekValueJson::Json& object, const char* name) {
    const VekValueJson::Json* value = VekValueJson::member(&object, name);
    return value != nullptr && value->is_string() ? value->get<std::string>() : "";
}

}  // namespace

VekTuningApply::Json VekTuningApply::json(const Result& result) {
    Json changes = Json::array();
    for (const Change& change : result.changes) {
        changes.push_back({{"setting", change.label}, {"from", change.from}, {"to", change.to}});
    }
    Json failures = Json::array();
    for (const Failure& failure : result.failures) {
        failures.push_back({{"setting", failure.label}, {"reason", failure.reason}});
    }
    Json out = Json::object();
    out["status"] = result.status == VekExitStatus::kOk ? "OK" : "NG";
    out["requests"] = result.requests;
    Json sent = Json::array();
    for (const Sent& s : result.sent) {
        sent.push_back({{"request", s.request}, {"answer", s.answer}});
    }
    out["sent"] = std::move(sent);
    out["changes"] = std::move(changes);
    out["failures"] = std::move(failures);
    out["values"] = result.values;
    if (!result.problem.empty()) {
        out["error"] = result.problem;
    }
    return out;
}

bool VekTuningApply::fromJson(const Json& json, Result& result) {
    result = Result();
    const Json* requests = VekValueJson::member(&json, "requests");
    const Json* changes = VekValueJson::member(&json, "changes");
    const Json* failures = VekValueJson::member(&json, "failures");
    const Json* values = VekValueJson::member(&json, "values");
    if (requests == nullptr || !requests->is_array() || changes == nullptr ||
        !changes->is_array() || failures == nullptr || !failures->is_array() ||
        values == nullptr || !values->is_number_unsigned()) {
        return false;
    }
    result.status = textOf(json, "status") == "OK" ? VekExitStatus::kOk : VekExitStatus::kNg;
    result.problem = textOf(json, "error");
    result.values = values->get<size_t>();
    for (const Json& request : *requests) {
        result.requests.push_back(request.is_string() ? request.get<std::string>() : "");
    }
    for (const Json& change : *changes) {
        result.changes.push_back(
            {textOf(change, "setting"), textOf(change, "from"), textOf(change, "to"), {}});
    }
    for (const Json& failure : *failures) {
        result.failures.push_back({textOf(failure, "setting"), textOf(failure, "reason")});
    }
    if (const Json* sent = VekValueJson::member(&json, "sent"); sent != nullptr && sent->is_array()) {
        for (const Json& s : *sent) {
            result.sent.push_back({textOf(s, "request"), textOf(s, "answer")});
        }
    }
    return true;
}

}  // namespace vekmaster
