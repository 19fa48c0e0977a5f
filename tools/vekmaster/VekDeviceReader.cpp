#include "VekDeviceReader.h"

#include <algorithm>

#include "VekNames.h"

namespace vekmaster {

namespace {

using Json = VekDeviceReader::Json;
using Range = VekSetting::Range;
using Outcome = VekMasterReply::Outcome;

}  // namespace

bool VekDeviceReader::identify(std::string& version, std::vector<std::string>& features) {
    const VekMasterReply* reply = &session_.request("Common", "Version", {"vek_master"});
    if (!reply->answered()) {
        stopped_ = reply;
        return false;
    }
    const VekFieldPrinter::Field* text = reply->field("version");
    version = text != nullptr && !text->parts.empty() ? text->parts[0].text : "";
    reply = &session_.request("Common", "Feature", {});
    if (!reply->answered()) {
        stopped_ = reply;
        return false;
    }
    features.clear();
    if (const VekFieldPrinter::Field* list = reply->field("features")) {
        for (const VekFieldPrinter::Part& part : list->parts) {
            features.push_back(part.text);
        }
    }
    return true;
}

bool VekDeviceReader::ask(const VekSetting& setting, const vekprotocol::VekFields& args,
                          const VekMasterReply*& reply) {
    reply = &session_.request(*setting.get, args);
    if (!reply->answered()) {
        stopped_ = reply;
        return false;
    }
    return true;
}

bool VekDeviceReader::read(const std::vector<std::string>& served, const Json* only, Json& settings,
                           int& missing) {
    settings = Json::object();
    missing_ = 0;
    for (const VekSetting& setting : table_.settings()) {
        // A value that changes the device when asked for is never read, whoever wants it.
        const bool wanted = !setting.disturbs &&
                            (only == nullptr || VekSettingItem::at(*only, setting, {}) != nullptr);
        if (!wanted || !VekNames::contains(served, setting.feature)) {
            continue;
        }
        Json value;
        if (!readSetting(setting, only, settings, value)) {
            missing = missing_;
            return false;
        }
        settings[setting.feature][setting.name] = std::move(value);
    }
    missing = missing_;
    return true;
}

bool VekDeviceReader::readSetting(const VekSetting& setting, const Json* only, const Json& settings,
                                  Json& value) {
    const Json* given = only != nullptr ? VekSettingItem::at(*only, setting, {}) : nullptr;
    const VekMasterReply* reply = nullptr;
    const auto item = [&](int channel) {
        if (reply->outcome == Outcome::Ng) {
            ++missing_;
            return VekSettingItem::missing("NG");
        }
        return VekSettingItem::fromReply(setting, *reply, channel);
    };
    const auto listed = [&](const std::string& channel) {
        return given == nullptr || VekValueJson::member(given, channel) != nullptr;
    };
    switch (setting.range) {
        case Range::One:
            if (!ask(setting, {}, reply)) {
                return false;
            }
            value = item(-1);
            return true;
        case Range::ChannelArray: {
            if (!ask(setting, {}, reply)) {
                return false;
            }
            if (reply->outcome == Outcome::Ng) {
                value = item(-1);
                return true;
            }
            value = Json::object();
            const std::vector<std::string>& channels = VekSettingsTable::channels();
            for (size_t i = 0; i < channels.size(); ++i) {
                if (listed(channels[i])) {
                    value[channels[i]] = item(static_cast<int>(i));
                }
            }
            return true;
        }
        case Range::PerChannel:
            value = Json::object();
            for (const std::string& channel : VekSettingsTable::channels()) {
                if (!listed(channel)) {
                    continue;
                }
                if (!ask(setting, {channel}, reply)) {
                    return false;
                }
                value[channel] = item(-1);
            }
            return true;
        case Range::PerBand:
            break;
    }
    const VekSetting* bandCount = table_.bandCountOf(setting);
    const Json* counts =
        bandCount != nullptr ? VekSettingItem::at(settings, *bandCount, {}) : nullptr;
    if (given == nullptr && (counts == nullptr || VekSettingItem::isMissing(*counts))) {
        ++missing_;
        value = VekSettingItem::missing("no band count");
        return true;
    }
    value = Json::object();
    for (const std::string& channel : VekSettingsTable::channels()) {
        if (!listed(channel)) {
            continue;
        }
        Json list = Json::array();
        for (const int band :
             bands(VekValueJson::member(given, channel), VekValueJson::member(counts, channel))) {
            if (!ask(setting, {channel, std::to_string(band)}, reply)) {
                return false;
            }
            while (list.size() < static_cast<size_t>(band)) {
                list.push_back(nullptr);
            }
            list.push_back(item(-1));
        }
        value[channel] = std::move(list);
    }
    return true;
}

std::vector<int> VekDeviceReader::bands(const Json* given, const Json* count) {
    std::vector<int> list;
    if (given != nullptr) {
        for (size_t band = 0; given->is_array() && band < given->size(); ++band) {
            if (!(*given)[band].is_null()) {
                list.push_back(static_cast<int>(band));
            }
        }
        return list;
    }
    const int64_t n = count != nullptr && count->is_number_integer() ? count->get<int64_t>() : 0;
    for (int band = 0; band < std::min<int64_t>(n, VekSettingsTable::kMaxBands); ++band) {
        list.push_back(band);
    }
    return list;
}

}  // namespace vekmaster
