#include "VekTuningDocument.h"

#include <algorithm>
#include <ctime>

#include "VekNames.h"
#include "VekSettingItem.h"

namespace vekmaster {

namespace {

using Json = VekTuningDocument::Json;
using Range = VekSetting::Range;

std::string utcNow() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[32];
    std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

std::string checkItem(const VekSetting& setting, const Json& item, const std::string& where) {
    if (VekSettingItem::isMissing(item)) {
        return "";
    }
    VekSettingItem::Texts texts;
    const std::string problem = VekSettingItem::texts(setting, item, texts);
    return problem.empty() ? "" : where + ": " + problem;
}

// An object whose members are channel names; "" or the first that is not.
std::string checkChannels(const Json& value, const std::string& where) {
    if (!value.is_object()) {
        return where + ": is not an object by channel (" +
               VekNames::join(VekSettingsTable::channels()) + ")";
    }
    for (const auto& member : value.items()) {
        if (!VekNames::contains(VekSettingsTable::channels(), member.key())) {
            return where + ": unknown channel " + member.key() +
                   " (channels: " + VekNames::join(VekSettingsTable::channels()) + ")";
        }
    }
    return "";
}

std::string checkSetting(const VekSetting& setting, const Json& value, const std::string& where) {
    if (setting.range == Range::One || VekSettingItem::isMissing(value)) {
        return checkItem(setting, value, where);
    }
    std::string problem = checkChannels(value, where);
    for (auto it = value.begin(); problem.empty() && it != value.end(); ++it) {
        const std::string at = where + '.' + it.key();
        if (setting.range != Range::PerBand) {
            problem = checkItem(setting, it.value(), at);
            continue;
        }
        if (!it->is_array() || it->size() > VekSettingsTable::kMaxBands) {
            return at + ": is not an array of at most " +
                   std::to_string(VekSettingsTable::kMaxBands) + " bands";
        }
        for (size_t band = 0; problem.empty() && band < it->size(); ++band) {
            const Json& item = (*it)[band];
            if (!item.is_null()) {
                problem = checkItem(setting, item, at + '[' + std::to_string(band) + ']');
            }
        }
    }
    return problem;
}

}  // namespace

Json VekTuningDocument::make(const VekSettingsTable& table, const std::string& path,
                             const std::string& version, const std::vector<std::string>& features,
                             Json settings) {
    Json device = Json::object();
    device["path"] = path;
    device["version"] = version;
    device["features"] = features;
    // What the daemon's options can be seen from: which equaliser it serves, and Reverb.
    device["eqMode"] = VekNames::contains(features, "EqV2") ? "flexible"
                       : VekNames::contains(features, "Eq") ? "fixed"
                                                            : "none";
    device["reverb"] = VekNames::contains(features, "Reverb");
    std::vector<std::string> lastSet;
    std::vector<std::string> unread;
    for (const VekSetting& setting : table.settings()) {
        if (VekNames::contains(features, setting.feature) && setting.lastSet) {
            lastSet.push_back(setting.path());
        }
        if (VekNames::contains(features, setting.feature) && setting.disturbs) {
            unread.push_back(setting.path());
        }
    }
    std::string notes;
    if (!lastSet.empty()) {
        notes = VekNames::join(lastSet) +
                ": what was last set through the daemon since it started (the "
                "platform cannot report it).";
    }
    if (!unread.empty()) {
        notes += (notes.empty() ? "" : " ") + VekNames::join(unread) +
                 ": not read, since asking for it changes the device.";
    }
    Json document = Json::object();
    document["format"] = kFormat;
    document["device"] = std::move(device);
    document["time"] = utcNow();
    document["notes"] = notes;
    document["settings"] = std::move(settings);
    return document;
}

std::string VekTuningDocument::parse(const std::string& text, Json& document) {
    try {
        document = Json::parse(text);
    } catch (const Json::exception& e) {
        // A syntax error, or a number no double holds (1e400): without the library's
        // "[json.exception.parse_error.101] " in front.
        const std::string what = e.what();
        const size_t tag = what.find("] ");
        return tag != std::string::npos ? what.substr(tag + 2) : what;
    }
    return "";
}

void VekTuningDocument::count(const VekSettingsTable& table, const Json& settings, int& values,
                              int& missing) {
    values = 0;
    missing = 0;
    for (const VekSetting& setting : table.settings()) {
        const Json* value = VekSettingItem::at(settings, setting, {});
        if (value == nullptr) {
            continue;
        }
        VekSettingItem::forEach(setting, *value, [&](const VekSettingItem::Key&, const Json& item) {
            ++values;
            missing += VekSettingItem::isMissing(item) ? 1 : 0;
        });
    }
}

std::string VekTuningDocument::check(const VekSettingsTable& table, const Json& document) {
    if (!document.is_object()) {
        return "the document is not a JSON object";
    }
    const auto format = document.find("format");
    if (format == document.end() || !format->is_string() || format->get<std::string>() != kFormat) {
        return std::string("format: expected \"") + kFormat + "\", found " +
               (format == document.end() ? "none" : VekValueJson::dump(*format));
    }
    const auto settings = document.find("settings");
    if (settings == document.end() || !settings->is_object()) {
        return "settings: expected an object by feature";
    }
    const std::vector<std::string> features = table.features();
    for (const auto& feature : settings->items()) {
        const std::string where = "settings." + feature.key();
        if (!VekNames::contains(features, feature.key())) {
            return where + ": unknown feature (features: " + VekNames::join(features) + ")";
        }
        if (!feature.value().is_object()) {
            return where + ": expected an object by setting";
        }
        for (const auto& entry : feature.value().items()) {
            const VekSetting* setting = table.find(feature.key(), entry.key());
            if (setting == nullptr) {
                std::vector<std::string> names;
                for (const VekSetting& s : table.settings()) {
                    if (s.feature == feature.key()) {
                        names.push_back(s.name);
                    }
                }
                return where + '.' + entry.key() +
                       ": unknown setting (settings: " + VekNames::join(names) + ")";
            }
            const std::string problem =
                checkSetting(*setting, entry.value(), where + '.' + entry.key());
            if (!problem.empty()) {
                return problem;
            }
        }
    }
    return "";
}

VekError VekTuningDocument::outOfRange(const VekSettingsTable& table,
                                                      const Json& document,
                                                      const VekDeviceProfile& profile) {
    const Json* settings = VekValueJson::member(&document, "settings");
    VekError breach;
    for (const VekSetting& setting : table.settings()) {
        const Json* value = settings != nullptr ? VekSettingItem::at(*settings, setting, {}) : nullptr;
        if (value == nullptr || setting.set == nullptr) {
            continue;
        }
        VekSettingItem::forEach(setting, *value, [&](const VekSettingItem::Key& key, const Json& item) {
            VekSettingItem::Texts texts;
            if (breach || VekSettingItem::isMissing(item) ||
                !VekSettingItem::texts(setting, item, texts).empty()) {
                return;
            }
            const auto& channels = VekSettingsTable::channels();
            const int channel =
                setting.range == Range::ChannelArray
                    ? static_cast<int>(std::find(channels.begin(), channels.end(), key.channel) -
                                       channels.begin())
                    : -1;
            breach = profile.check(setting.feature, setting.set->name, setting.value, texts, channel);
            if (breach) {
                breach.text = VekSettingItem::label(setting, key) + ": " + breach.text;
            }
        });
        if (breach) {
            break;
        }
    }
    return breach;
}

}  // namespace vekmaster
