#include "VekSettingsTable.h"

#include <algorithm>

namespace vekmaster {

namespace {

using Range = VekSetting::Range;

struct Row {
    const char* feature;
    const char* name;
    const char* get;
    const char* set;  // "" when it can only be read
    Range range;
    bool lastSet;
    bool disturbs;
};

// Reverb's enable is asked by setting reverb mode 0 on the platform, so a snapshot
// does not ask it. Fade/balance and reverb mode are answered from what was last set.
const Row kRows[] = {
    {"Common", "bypass", "GetBypass", "SetBypass", Range::One, false, false},
    {"Gain", "master", "GetMaster", "SetMaster", Range::One, false, false},
    {"Gain", "channel", "GetChannel", "SetChannel", Range::ChannelArray, false, false},
    {"Gain", "fadeBalance", "GetFadeBalance", "SetFadeBalance", Range::One, true, false},
    {"Eq", "enable", "GetEnable", "SetEnable", Range::One, false, false},
    {"Eq", "bandCount", "GetBandCount", "", Range::ChannelArray, false, false},
    {"Eq", "band", "GetBandConfig", "SetBandConfig", Range::PerBand, false, false},
    {"EqV2", "enable", "GetEnable", "SetEnable", Range::One, false, false},
    {"EqV2", "bandCount", "GetBandCount", "SetBandCount", Range::ChannelArray, false, false},
    {"EqV2", "band", "GetBandConfig", "SetBandConfig", Range::PerBand, false, false},
    {"Hfe", "enable", "GetEnable", "SetEnable", Range::One, false, false},
    {"Hfe", "channel", "GetChannelConfig", "SetChannelConfig", Range::PerChannel, false, false},
    {"Vb", "enable", "GetEnable", "SetEnable", Range::One, false, false},
    {"Vb", "channel", "GetChannelConfig", "SetChannelConfig", Range::PerChannel, false, false},
    {"Speaker", "enable", "GetEnable", "SetEnable", Range::ChannelArray, false, false},
    {"Speaker", "delay", "GetDelay", "SetDelay", Range::ChannelArray, false, false},
    {"Reverb", "enable", "GetEnable", "", Range::One, false, true},
    {"Reverb", "mode", "GetMode", "SetMode", Range::One, true, false},
};

bool isKey(const std::string& name) {
    return name == "channel" || name == "band";
}

}  // namespace

const std::vector<std::string>& VekSettingsTable::channels() {
    static const std::vector<std::string> names{"LF", "RF", "LS", "RS", "CF", "L1"};
    return names;
}

const VekSettingsTable& VekSettingsTable::shared() {
    static const VekSettingsTable table(VekMessageCatalog::shared());
    return table;
}

VekSettingsTable::VekSettingsTable(const VekMessageCatalog& catalog) {
    for (const Row& row : kRows) {
        VekSetting setting;
        setting.feature = row.feature;
        setting.name = row.name;
        setting.get = catalog.find(row.feature, row.get);
        setting.set = *row.set != '\0' ? catalog.find(row.feature, row.set) : nullptr;
        setting.range = row.range;
        setting.lastSet = row.lastSet;
        setting.disturbs = row.disturbs;
        if (setting.get == nullptr) {
            continue;  // cannot happen while the rows name catalogue messages
        }
        const VekFieldSignature& fields =
            setting.set != nullptr ? setting.set->signature : setting.get->answer;
        for (const VekFieldSignature::Slot& slot : fields.slots()) {
            if (!isKey(slot.name)) {
                setting.value.push_back(slot);
            }
        }
        settings_.push_back(std::move(setting));
    }
}

const VekSetting* VekSettingsTable::find(const std::string& feature,
                                         const std::string& name) const {
    for (const VekSetting& setting : settings_) {
        if (setting.feature == feature && setting.name == name) {
            return &setting;
        }
    }
    return nullptr;
}

const VekSetting* VekSettingsTable::bandCountOf(const VekSetting& bands) const {
    return find(bands.feature, "bandCount");
}

std::vector<std::string> VekSettingsTable::features() const {
    std::vector<std::string> names;
    for (const VekSetting& setting : settings_) {
        if (std::find(names.begin(), names.end(), setting.feature) == names.end()) {
            names.push_back(setting.feature);
        }
    }
    return names;
}

}  // namespace vekmaster
