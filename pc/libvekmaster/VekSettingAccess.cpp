#include "VekSettingAccess.h"

#include <algorithm>
#include <cstdlib>

#include "VekNames.h"

namespace vekmaster {

namespace {

using Json = VekSettingAccess::Json;
using Key = VekSettingAccess::Key;
using Range = VekSetting::Range;
using Outcome = VekMasterReply::Outcome;
using Kind = VekError::Kind;

bool perChannel(const VekSetting& setting) {
    return setting.range == Range::PerChannel || setting.range == Range::PerBand;
}

// A value of every field, for checking the fields a partial value gives.
Json placeholder(const VekSetting& setting) {
    Json item = Json::object();
    for (const auto& slot : setting.value) {
        const Json one = slot.base == "float"    ? Json(0.0)
                         : slot.base == "bool"   ? Json(false)
                         : slot.base == "string" ? Json("x")
                                                 : Json(0);
        item[slot.name] = slot.count == 1 ? one : Json(std::vector<Json>(slot.count, one));
    }
    return item;
}

// "" or what is wrong with a value of a ChannelArray, as an object by channel.
std::string checkChannels(const VekSetting& setting, Json& value) {
    const std::vector<std::string>& channels = VekSettingsTable::channels();
    if (value.is_array() && value.size() == channels.size()) {
        Json byChannel = Json::object();
        for (size_t i = 0; i < channels.size(); ++i) {
            byChannel[channels[i]] = value[i];
        }
        value = std::move(byChannel);
    }
    if (!value.is_object()) {
        return "is not a mapping by channel (" + VekNames::join(channels) + ") or a sequence of " +
               std::to_string(channels.size()) + " values";
    }
    VekSettingItem::Texts texts;
    for (const auto& member : value.items()) {
        if (!VekNames::contains(channels, member.key())) {
            return "unknown channel " + member.key() + " (channels: " + VekNames::join(channels) +
                   ")";
        }
        const std::string problem = VekSettingItem::texts(setting, member.value(), texts);
        if (!problem.empty()) {
            return member.key() + ' ' + problem;
        }
    }
    return "";
}

// The set message's value texts: a ChannelArray's six channels as one field.
std::string textsOf(const VekSetting& setting, const Json& value, VekSettingItem::Texts& out) {
    if (setting.range != Range::ChannelArray) {
        return VekSettingItem::texts(setting, value, out);
    }
    out.assign(1, {});
    for (const std::string& channel : VekSettingsTable::channels()) {
        VekSettingItem::Texts one;
        const std::string problem =
            VekSettingItem::texts(setting, value.value(channel, Json()), one);
        if (!problem.empty()) {
            return channel + ' ' + problem;
        }
        out[0].push_back(one[0][0]);
    }
    return "";
}

VekError noSuchBand(const VekSetting& setting, const std::string& band) {
    return {Kind::Usage, setting.path() + ": band " + band + " is not 0 to " +
                             std::to_string(VekSettingsTable::kMaxBands - 1)};
}

}  // namespace

VekError VekSettingAccess::locate(const VekSettingsTable& table,
                                  const std::vector<std::string>& path, Target& target) {
    const std::string none;
    const std::string& channel = path.size() > 2 ? path[2] : none;
    VekError error = locate(table, path.at(0), path.at(1), channel, -1, true, target);
    if (error || path.size() < 4) {
        return error;
    }
    const std::string& text = path[3];
    if (target.setting->range != Range::PerBand) {
        return {Kind::Usage, target.setting->path() + " has no bands"};
    }
    // Two digits at most: what strtol would make of the rest is not what was given.
    if (text.empty() || text.size() > 2 ||
        text.find_first_not_of("0123456789") != std::string::npos) {
        return noSuchBand(*target.setting, text);
    }
    const int band = static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
    return locate(table, path[0], path[1], channel, band, true, target);
}

VekError VekSettingAccess::locate(const VekSettingsTable& table, const std::string& feature,
                                  const std::string& name, const std::string& channel, int band,
                                  bool whole, Target& target) {
    target = Target();
    const VekSetting* setting = table.find(feature, name);
    if (setting == nullptr) {
        return {Kind::NotFound, "no setting " + feature + '.' + name};
    }
    const std::vector<std::string>& channels = VekSettingsTable::channels();
    const bool byChannel = perChannel(*setting) || setting->range == Range::ChannelArray;
    const bool anyChannel = whole && channel.empty();
    if (!byChannel && !channel.empty()) {
        return {Kind::Usage, setting->path() + " has no channels"};
    }
    if (byChannel && !anyChannel && (perChannel(*setting) || !channel.empty()) &&
        !VekNames::contains(channels, channel)) {
        return {Kind::Usage, setting->path() + ": channel '" + channel + "' is not one of " +
                                 VekNames::join(channels)};
    }
    if (setting->range != Range::PerBand) {
        if (band >= 0) {
            return {Kind::Usage, setting->path() + " has no bands"};
        }
    } else if ((band != -1 || !whole) && (band < 0 || band >= VekSettingsTable::kMaxBands)) {
        return noSuchBand(*setting, std::to_string(band));
    } else if (band >= 0 && channel.empty()) {
        return {Kind::Usage, setting->path() + ": a band is named with its channel"};
    }
    target.setting = setting;
    target.key = {channel, setting->range == Range::PerBand ? band : -1};
    return {};
}

VekError VekSettingAccess::prepare(const Target& target, Json& value, bool& partial) {
    const VekSetting& setting = *target.setting;
    const std::string label = target.label();
    partial = false;
    if (setting.set == nullptr) {
        return {Kind::Usage, label + " can only be read"};
    }
    if ((setting.range == Range::PerChannel && target.key.channel.empty()) ||
        (setting.range == Range::PerBand && target.key.band < 0)) {
        return {Kind::Usage, label + ": a value is written for one " +
                                 (setting.range == Range::PerBand ? "band" : "channel")};
    }
    std::string problem;
    if (setting.range == Range::ChannelArray) {
        if (!target.key.channel.empty()) {
            value = Json{{target.key.channel, std::move(value)}};
        }
        problem = checkChannels(setting, value);
        partial = value.is_object() && value.size() < VekSettingsTable::channels().size();
    } else {
        VekSettingItem::Texts texts;
        if (setting.value.size() > 1 && value.is_object()) {
            Json filled = placeholder(setting);
            for (const auto& member : value.items()) {
                filled[member.key()] = member.value();
            }
            partial = value.size() < setting.value.size();
            problem = VekSettingItem::texts(setting, filled, texts);
        } else {
            problem = VekSettingItem::texts(setting, value, texts);
        }
    }
    return problem.empty() ? VekError() : VekError(Kind::Usage, label + ": " + problem);
}

VekError VekSettingAccess::checked(const VekMasterMessage& message,
                                   const vekprotocol::VekFields& args,
                                   VekCheckedRequest& request) const {
    const VekError refused = VekMessageCatalog::shared().check(message, args, limits_, request);
    if (!refused && sending_) {
        sending_(request);
    }
    return refused;
}

std::vector<Key> VekSettingAccess::keysOf(const Target& target, const Json* counts) {
    std::vector<Key> keys;
    switch (target.setting->range) {
        case Range::One:
        case Range::ChannelArray:
            keys.push_back({});
            break;
        case Range::PerChannel:
            for (const std::string& channel : VekSettingsTable::channels()) {
                if (target.key.channel.empty() || channel == target.key.channel) {
                    keys.push_back({channel, -1});
                }
            }
            break;
        case Range::PerBand:
            if (target.key.band >= 0) {
                keys.push_back(target.key);
                break;
            }
            for (const std::string& channel : VekSettingsTable::channels()) {
                if (!target.key.channel.empty() && channel != target.key.channel) {
                    continue;
                }
                const Json* count = VekValueJson::member(counts, channel);
                const int64_t n =
                    count != nullptr && count->is_number_integer() ? count->get<int64_t>() : 0;
                for (int band = 0; band < std::min<int64_t>(n, VekSettingsTable::kMaxBands);
                     ++band) {
                    keys.push_back({channel, band});
                }
            }
            break;
    }
    return keys;
}

void VekSettingAccess::assemble(const Target& target,
                                const std::vector<const VekMasterExchange*>& answers,
                                const std::vector<Key>& keys, Result& result) {
    const VekSetting& setting = *target.setting;
    // The answers placed as a document's settings hold them, then the part asked for.
    Json settings = Json::object();
    VekSettingItem::place(settings, setting, target.key, Json::object());
    const VekMasterExchange* decided = nullptr;
    for (size_t i = 0; i < answers.size(); ++i) {
        const VekMasterExchange& e = *answers[i];
        const bool ng = e.reply.outcome == Outcome::Ng;
        if (decided == nullptr || (ng && decided->reply.outcome != Outcome::Ng)) {
            decided = &e;
        }
        if (setting.range != Range::ChannelArray || ng) {
            VekSettingItem::place(settings, setting, keys[i],
                                  ng ? VekSettingItem::missing("NG")
                                     : VekSettingItem::fromReply(setting, e.reply, -1));
            continue;
        }
        const std::vector<std::string>& channels = VekSettingsTable::channels();
        for (size_t c = 0; c < channels.size(); ++c) {
            VekSettingItem::place(settings, setting, {channels[c], -1},
                                  VekSettingItem::fromReply(setting, e.reply, static_cast<int>(c)));
        }
    }
    if (decided != nullptr) {
        result.message = decided->message;
        result.reply = decided->reply;
    }
    const bool one =
        answers.size() == 1 && (setting.range != Range::PerBand || target.key.band >= 0);
    if (one && result.reply.outcome == Outcome::Ng) {
        return;
    }
    const Json* value = VekSettingItem::at(settings, setting, target.key);
    result.value = value != nullptr ? *value : Json::object();
}

const VekSetting* VekSettingAccess::countOf(const Target& target) const {
    const bool everyBand = target.setting->range == Range::PerBand && target.key.band < 0;
    return everyBand ? table_.bandCountOf(*target.setting) : nullptr;
}

VekError VekSettingAccess::read(const Target& target, Result& result) {
    std::vector<Result> results;
    const VekError error = read(std::vector<Target>{target}, results);
    result = std::move(results.front());
    return error;
}

VekError VekSettingAccess::read(const std::vector<Target>& targets, std::vector<Result>& results) {
    results.assign(targets.size(), Result());
    // The band counts that the reads of every band of a channel need, read first.
    std::vector<Target> countTargets;
    for (const Target& target : targets) {
        const VekSetting* count = countOf(target);
        const auto same = [&](const Target& t) { return t.setting == count; };
        if (count != nullptr && std::none_of(countTargets.begin(), countTargets.end(), same)) {
            countTargets.push_back({count, {}});
        }
    }
    std::vector<Result> counts;
    if (!countTargets.empty()) {
        const VekError failed = read(countTargets, counts);
        if (failed) {
            for (size_t i = 0; i < targets.size(); ++i) {
                if (countOf(targets[i]) != nullptr) {
                    results[i] = counts.front();
                }
            }
            return failed;
        }
    }
    std::vector<std::vector<Key>> keys(targets.size());
    std::vector<VekCheckedRequest> requests;
    std::vector<size_t> owners;  // the target of each request
    for (size_t i = 0; i < targets.size(); ++i) {
        const Json* count = nullptr;
        for (size_t c = 0; c < countTargets.size(); ++c) {
            if (countTargets[c].setting == countOf(targets[i])) {
                count = &counts[c].value;
                if (counts[c].reply.outcome == Outcome::Ng) {
                    results[i] = counts[c];  // no count, no bands: the count's NG says why
                }
            }
        }
        if (results[i].message != nullptr) {
            continue;
        }
        keys[i] = keysOf(targets[i], count);
        for (const Key& key : keys[i]) {
            requests.emplace_back();
            const VekError refused =
                checked(*targets[i].setting->get, VekSettingItem::keyArgs(*targets[i].setting, key),
                        requests.back());
            if (refused) {
                return refused;
            }
            owners.push_back(i);
        }
    }
    VekMasterExchange::Batch batch;
    for (const VekCheckedRequest& request : requests) {
        batch.emplace_back(request);
    }
    if (batch.size() == 1) {
        // One request goes as one: through a server, the line may window it with
        // other clients' requests.
        batch.front().reply = access_.send(requests.front(), nullptr);
        batch.front().sent = batch.front().reply.outcome != Outcome::Refused;
    } else if (!batch.empty()) {
        access_.exchange(batch);
    }
    std::vector<std::vector<const VekMasterExchange*>> answers(targets.size());
    for (size_t r = 0; r < batch.size(); ++r) {
        if (!batch[r].reply.answered()) {
            results[owners[r]].message = batch[r].message;
            results[owners[r]].reply = batch[r].reply;
            return batch[r].reply.error();
        }
        answers[owners[r]].push_back(&batch[r]);
    }
    for (size_t i = 0; i < targets.size(); ++i) {
        if (results[i].message == nullptr) {
            assemble(targets[i], answers[i], keys[i], results[i]);
        }
    }
    return {};
}

VekError VekSettingAccess::write(const Target& target, const Json& given, Result& result) {
    const VekSetting& setting = *target.setting;
    result = Result();
    Json value = given;
    bool partial = false;
    const VekError bad = prepare(target, value, partial);
    if (bad) {
        return bad;
    }
    if (partial) {
        // A ChannelArray is read whole: its one set message carries every channel.
        const Key whole = setting.range == Range::ChannelArray ? Key{} : target.key;
        const VekError failed = read({&setting, whole}, result);
        if (failed || result.reply.outcome == Outcome::Ng) {
            return failed;
        }
        Json merged = std::move(result.value);
        merged.update(value);
        value = std::move(merged);
    }
    VekSettingItem::Texts texts;
    const std::string problem = textsOf(setting, value, texts);
    if (!problem.empty()) {
        return {Kind::BadAnswer, target.label() + ": the device's value " + problem};
    }
    VekCheckedRequest request;
    const VekError refused =
        checked(*setting.set, VekSettingItem::args(setting, target.key, texts), request);
    if (refused) {
        return refused;
    }
    result = Result();
    result.message = setting.set;
    result.reply = access_.send(request, nullptr);
    return result.reply.error();
}

}  // namespace vekmaster
