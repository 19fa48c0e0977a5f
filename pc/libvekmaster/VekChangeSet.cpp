#include "VekChangeSet.h"

#include <cerrno>
#include <cstdlib>

#include "VekTuningDiff.h"

namespace vekmaster {

namespace {

using Range = VekSetting::Range;

}  // namespace

bool VekChangeSet::add(const VekMasterMessage& message, const vekprotocol::VekFields& args) {
    const VekSetting* setting = nullptr;
    for (const VekSetting& s : table_.settings()) {
        if (s.set == &message) {
            setting = &s;
        }
    }
    if (setting == nullptr) {
        return false;
    }
    // The key fields lead the message (channel, then band), each one ARG.
    VekSettingItem::Key key;
    size_t at = 0;
    for (const VekFieldSignature::Slot& slot : message.signature.slots()) {
        if (at >= args.size()) {
            break;
        }
        if (slot.name == "channel") {
            key.channel = args[at];
        } else if (slot.name == "band") {
            char* end = nullptr;
            errno = 0;
            const long band = std::strtol(args[at].c_str(), &end, 10);
            if (end == args[at].c_str() || *end != '\0' || errno != 0 || band < 0 ||
                band >= VekSettingsTable::kMaxBands) {
                return false;
            }
            key.band = static_cast<int>(band);
        }
        at += slot.count == 0 ? args.size() - at : slot.count;
    }
    add(*setting, key);
    return true;
}

void VekChangeSet::add(const VekSetting& setting, const VekSettingItem::Key& key) {
    // A placeholder marks what to read: the reader asks for what the object names. One
    // message sets every channel of a channel array, so each may change.
    if (setting.range == Range::ChannelArray) {
        for (const std::string& channel : VekSettingsTable::channels()) {
            keys_.push_back({&setting, {channel, -1}});
            VekSettingItem::place(items_, setting, {channel, -1}, 0);
        }
        return;
    }
    keys_.push_back({&setting, key});
    VekSettingItem::place(items_, setting, key, 0);
}

std::vector<VekSettingChange> VekChangeSet::changes(const Json& before, const Json& after) const {
    std::vector<VekSettingChange> out;
    for (size_t i = 0; i < keys_.size(); ++i) {
        const Touched& t = keys_[i];
        bool again = false;
        for (size_t j = 0; j < i; ++j) {
            again = again || (keys_[j].setting == t.setting && keys_[j].key.channel == t.key.channel &&
                              keys_[j].key.band == t.key.band);
        }
        const Json* was = VekSettingItem::at(before, *t.setting, t.key);
        const Json* now = VekSettingItem::at(after, *t.setting, t.key);
        if (again || VekTuningDiff::same(*t.setting, was, now)) {
            continue;
        }
        out.push_back({t.setting->path(), t.key.channel, t.key.band,
                       was != nullptr ? *was : Json(), now != nullptr ? *now : Json()});
    }
    return out;
}

}  // namespace vekmaster
