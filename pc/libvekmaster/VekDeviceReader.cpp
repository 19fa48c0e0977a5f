#include "VekDeviceReader.h"

#include <algorithm>

#include "VekNames.h"

namespace vekmaster {

namespace {

using Json = VekDeviceReader::Json;
using Range = VekSetting::Range;
using Outcome = VekMasterReply::Outcome;

}  // namespace

bool VekDeviceReader::run(Batch& batch, const VekMasterSession::Answered& answered) {
    session_.exchange(batch, answered);
    Batch again;
    for (const VekMasterExchange& e : batch) {
        if (e.reply.answered() || e.reply.outcome == Outcome::Refused) {
            continue;
        }
        if (!e.reply.lost) {
            stopped_ = e.reply;  // the first that went unanswered says why
            return false;
        }
        VekMasterExchange retry;
        retry.message = e.message;
        retry.args = e.args;
        retry.tag = e.tag;
        again.push_back(std::move(retry));
    }
    if (again.empty()) {
        return true;
    }
    session_.exchange(again, answered);
    for (const VekMasterExchange& e : again) {
        if (!e.reply.answered() && e.reply.outcome != Outcome::Refused) {
            stopped_ = e.reply;
            return false;
        }
    }
    return true;
}

bool VekDeviceReader::identify(std::string& version, std::vector<std::string>& features) {
    Batch batch(2);
    batch[0].message = session_.catalog().find("Common", "Version");
    batch[0].args = {"vek_master"};
    batch[1].message = session_.catalog().find("Common", "Feature");
    batch[1].tag = 1;
    version.clear();
    features.clear();
    return run(batch, [&](Batch& b, size_t index) {
        const VekMasterReply& reply = b[index].reply;
        if (!reply.answered()) {
            return false;
        }
        if (b[index].tag == 0) {
            const VekFieldPrinter::Field* text = reply.field("version");
            version = text != nullptr && !text->parts.empty() ? text->parts[0].text : "";
        } else if (const VekFieldPrinter::Field* list = reply.field("features")) {
            for (const VekFieldPrinter::Part& part : list->parts) {
                features.push_back(part.text);
            }
        }
        return false;
    });
}

bool VekDeviceReader::listed(const VekSetting& setting, const std::string& channel) const {
    const Json* given = only_ != nullptr ? VekSettingItem::at(*only_, setting, {}) : nullptr;
    return given == nullptr || VekValueJson::member(given, channel) != nullptr;
}

void VekDeviceReader::add(Batch& batch, const VekSetting& setting, const std::string& channel,
                          int band) {
    VekMasterExchange e;
    e.message = setting.get;
    e.args = VekSettingItem::keyArgs(setting, {channel, band});
    e.tag = slots_.size();
    slots_.push_back({&setting, channel, band});
    batch.push_back(std::move(e));
}

bool VekDeviceReader::read(const std::vector<std::string>& served, const Json* only, Json& settings,
                           int& missing) {
    settings = Json::object();
    missing_ = 0;
    slots_.clear();
    only_ = only;
    settings_ = &settings;
    Batch batch;
    std::vector<const VekSetting*> banded;  // PerBand settings waiting for their counts
    for (const VekSetting& setting : table_.settings()) {
        // A value that changes the device when asked for is never read, whoever wants it.
        const bool wanted = !setting.disturbs &&
                            (only == nullptr || VekSettingItem::at(*only, setting, {}) != nullptr);
        if (!wanted || !VekNames::contains(served, setting.feature)) {
            continue;
        }
        // In table order, whenever the answers come.
        settings[setting.feature][setting.name] = nullptr;
        switch (setting.range) {
            case Range::One:
            case Range::ChannelArray:
                add(batch, setting, "", -1);
                break;
            case Range::PerChannel:
                settings[setting.feature][setting.name] = Json::object();
                for (const std::string& channel : VekSettingsTable::channels()) {
                    if (listed(setting, channel)) {
                        add(batch, setting, channel, -1);
                    }
                }
                break;
            case Range::PerBand:
                if (only != nullptr && VekSettingItem::at(*only, setting, {}) != nullptr) {
                    addBands(batch, setting);  // the document lists the bands
                } else {
                    banded.push_back(&setting);
                }
                break;
        }
    }
    const auto answered = [&](Batch& b, size_t index) {
        const VekMasterReply& reply = b[index].reply;
        if (!reply.answered()) {
            return false;
        }
        const Slot slot = slots_[b[index].tag];
        take(slot, reply);
        // The bands of a feature follow its band count as soon as it is in.
        for (const VekSetting*& bands : banded) {
            if (bands != nullptr && table_.bandCountOf(*bands) == slot.setting) {
                addBands(b, *bands);
                bands = nullptr;
            }
        }
        return false;
    };
    const bool ok = run(batch, answered);
    for (const VekSetting* bands : banded) {
        if (ok && bands != nullptr) {
            ++missing_;
            settings[bands->feature][bands->name] = VekSettingItem::missing("no band count");
        }
    }
    missing = missing_;
    settings_ = nullptr;
    return ok;
}

void VekDeviceReader::addBands(Batch& batch, const VekSetting& setting) {
    const Json* given = only_ != nullptr ? VekSettingItem::at(*only_, setting, {}) : nullptr;
    const VekSetting* bandCount = table_.bandCountOf(setting);
    const Json* found =
        bandCount != nullptr ? VekSettingItem::at(*settings_, *bandCount, {}) : nullptr;
    // A copy: the settings object grows while the bands are added.
    const Json countsCopy = found != nullptr ? *found : Json();
    const Json* counts = found != nullptr && !found->is_null() ? &countsCopy : nullptr;
    Json& value = (*settings_)[setting.feature][setting.name];
    if (given == nullptr && (counts == nullptr || VekSettingItem::isMissing(*counts))) {
        ++missing_;
        value = VekSettingItem::missing("no band count");
        return;
    }
    value = Json::object();
    for (const std::string& channel : VekSettingsTable::channels()) {
        if (!listed(setting, channel)) {
            continue;
        }
        value[channel] = Json::array();
        for (const int band :
             bands(VekValueJson::member(given, channel), VekValueJson::member(counts, channel))) {
            add(batch, setting, channel, band);
        }
    }
}

void VekDeviceReader::take(const Slot& slot, const VekMasterReply& reply) {
    const VekSetting& setting = *slot.setting;
    Json& value = (*settings_)[setting.feature][setting.name];
    const auto item = [&](int channel) {
        if (reply.outcome == Outcome::Ng) {
            ++missing_;
            return VekSettingItem::missing("NG");
        }
        return VekSettingItem::fromReply(setting, reply, channel);
    };
    switch (setting.range) {
        case Range::One:
            value = item(-1);
            return;
        case Range::ChannelArray: {
            if (reply.outcome == Outcome::Ng) {
                value = item(-1);
                return;
            }
            value = Json::object();
            const std::vector<std::string>& channels = VekSettingsTable::channels();
            for (size_t i = 0; i < channels.size(); ++i) {
                if (listed(setting, channels[i])) {
                    value[channels[i]] = item(static_cast<int>(i));
                }
            }
            return;
        }
        case Range::PerChannel:
            value[slot.channel] = item(-1);
            return;
        case Range::PerBand: {
            Json& list = value[slot.channel];
            while (list.size() <= static_cast<size_t>(slot.band)) {
                list.push_back(nullptr);
            }
            list[static_cast<size_t>(slot.band)] = item(-1);
            return;
        }
    }
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
