#include "VekSchemaJson.h"

namespace vekmaster {

namespace {

using Json = VekSchemaJson::Json;
using Range = VekSetting::Range;

const char* rangeName(Range range) {
    switch (range) {
        case Range::ChannelArray:
            return "channelArray";
        case Range::PerChannel:
            return "perChannel";
        case Range::PerBand:
            return "perBand";
        case Range::One:
            break;
    }
    return "one";
}

Json fields(const std::vector<VekFieldSignature::Slot>& slots) {
    Json list = Json::array();
    for (const VekFieldSignature::Slot& slot : slots) {
        list.push_back({{"name", slot.name}, {"type", slot.type}, {"base", slot.base},
                        {"count", slot.count}});
    }
    return list;
}

// The value fields of a setting, each with the ranges the profile gives its set message
// ("element" for a range of one element only).
Json values(const VekSetting& setting, const VekDeviceProfile& profile) {
    Json list = fields(setting.value);
    for (Json& field : list) {
        Json limits = Json::array();
        for (const VekDeviceProfile::Limit& limit : profile.limits()) {
            if (setting.set == nullptr || limit.feature != setting.feature ||
                limit.message != setting.set->name || limit.field != field["name"]) {
                continue;
            }
            Json range = {{"min", VekValueJson::number(limit.min, 6)},
                          {"max", VekValueJson::number(limit.max, 6)},
                          {"unit", limit.unit}};
            if (limit.element >= 0) {
                range["element"] = limit.element;
            }
            limits.push_back(std::move(range));
        }
        field["limits"] = std::move(limits);
    }
    return list;
}

// How many bands a channel can hold: the records' room, or fewer where the profile
// bounds the band index (the fixed-band equaliser's 20).
long bandsOf(const VekSetting& setting, const VekDeviceProfile& profile) {
    long bands = VekSettingsTable::kMaxBands;
    for (const VekDeviceProfile::Limit& limit : profile.limits()) {
        if (setting.set != nullptr && limit.feature == setting.feature &&
            limit.message == setting.set->name && limit.field == "band" && limit.max >= 0 &&
            limit.max + 1 < bands) {
            bands = static_cast<long>(limit.max) + 1;
        }
    }
    return bands;
}

}  // namespace

Json VekSchemaJson::of(const VekMessageCatalog& catalog, const VekSettingsTable& table,
                       const VekDeviceProfile& profile) {
    Json messages = Json::array();
    for (const VekMasterMessage& message : catalog.messages()) {
        messages.push_back({{"feature", message.feature},
                            {"name", message.name},
                            {"response", message.response},
                            {"fields", fields(message.signature.slots())},
                            {"answer", fields(message.answer.slots())}});
    }
    Json settings = Json::array();
    for (const VekSetting& setting : table.settings()) {
        Json entry = {{"feature", setting.feature},
                      {"name", setting.name},
                      {"path", setting.path()},
                      {"range", rangeName(setting.range)},
                      {"get", setting.get->name},
                      {"set", setting.set != nullptr ? Json(setting.set->name) : Json()},
                      {"lastSet", setting.lastSet},
                      {"disturbs", setting.disturbs},
                      // Common is every device's; any other feature must be in its list.
                      {"needs", setting.feature == "Common" ? Json::array()
                                                            : Json::array({setting.feature})},
                      {"fields", values(setting, profile)}};
        if (setting.range != Range::One) {
            entry["channels"] = VekSettingsTable::channels();
        }
        if (setting.range == Range::PerBand) {
            const VekSetting* count = table.bandCountOf(setting);
            entry["bands"] = {{"max", bandsOf(setting, profile)},
                              {"count", count != nullptr ? Json(count->path()) : Json()}};
        }
        settings.push_back(std::move(entry));
    }
    return Json{{"channels", VekSettingsTable::channels()},
                {"maxBands", VekSettingsTable::kMaxBands},
                {"features", catalog.features()},
                {"profile", {{"name", profile.name()}, {"source", profile.source()}}},
                {"messages", std::move(messages)},
                {"settings", std::move(settings)}};
}

}  // namespace vekmaster
