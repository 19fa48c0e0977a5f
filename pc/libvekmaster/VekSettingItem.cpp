#include "VekSettingItem.h"

#include <algorithm>

#include "VekSettingsTable.h"

namespace vekmaster {

namespace {

using Json = VekSettingItem::Json;
using Range = VekSetting::Range;

// A ChannelArray's item is one element of its one field.
bool oneElement(const VekSetting& setting, const VekFieldSignature::Slot& slot) {
    return setting.range == Range::ChannelArray || slot.count == 1;
}

// The JSON the item holds for one field: the item itself when the setting has one
// field, else the member of that name.
const Json* fieldOf(const VekSetting& setting, const Json& item, const std::string& name) {
    if (setting.value.size() == 1) {
        return &item;
    }
    if (!item.is_object()) {
        return nullptr;
    }
    const auto found = item.find(name);
    return found != item.end() ? &*found : nullptr;
}

}  // namespace

Json VekSettingItem::missing(const std::string& reason) {
    Json marker = Json::object();
    marker["missing"] = reason;
    return marker;
}

bool VekSettingItem::isMissing(const Json& item) {
    return item.is_object() && item.contains("missing");
}

Json VekSettingItem::fromReply(const VekSetting& setting, const VekMasterReply& reply,
                               int channel) {
    Json item = Json::object();
    for (const VekFieldSignature::Slot& slot : setting.value) {
        const VekFieldPrinter::Field* field = reply.field(slot.name);
        if (field == nullptr || field->parts.empty()) {
            return missing("no " + slot.name + " in the answer");
        }
        Json value;
        if (channel >= 0) {
            if (static_cast<size_t>(channel) >= field->parts.size()) {
                return missing("no " + slot.name + " in the answer");
            }
            value = VekValueJson::fromPart(field->parts[static_cast<size_t>(channel)]);
        } else if (slot.count == 1) {
            value = VekValueJson::fromPart(field->parts[0]);
        } else {
            value = Json::array();
            for (const VekFieldPrinter::Part& part : field->parts) {
                value.push_back(VekValueJson::fromPart(part));
            }
        }
        if (setting.value.size() == 1) {
            return value;
        }
        item[slot.name] = std::move(value);
    }
    return item;
}

std::string VekSettingItem::texts(const VekSetting& setting, const Json& item, Texts& out) {
    out.clear();
    if (setting.value.size() > 1 && !item.is_object()) {
        return "is not an object of " + std::to_string(setting.value.size()) + " fields";
    }
    for (const VekFieldSignature::Slot& slot : setting.value) {
        const std::string where = setting.value.size() > 1 ? slot.name + ' ' : "";
        const Json* field = fieldOf(setting, item, slot.name);
        if (field == nullptr) {
            return "has no " + slot.name;
        }
        std::vector<std::string> elements;
        std::string text;
        if (oneElement(setting, slot)) {
            const std::string problem = VekValueJson::toWire(slot.base, *field, text);
            if (!problem.empty()) {
                return where + problem;
            }
            elements.push_back(text);
        } else {
            if (!field->is_array() || field->size() != slot.count) {
                return where + "is not an array of " + std::to_string(slot.count) + ' ' +
                       slot.base + " values";
            }
            for (size_t i = 0; i < field->size(); ++i) {
                const std::string problem = VekValueJson::toWire(slot.base, (*field)[i], text);
                if (!problem.empty()) {
                    return slot.name + '[' + std::to_string(i) + "] " + problem;
                }
                elements.push_back(text);
            }
        }
        out.push_back(std::move(elements));
    }
    if (setting.value.size() > 1) {
        for (const auto& member : item.items()) {
            const auto named = [&](const VekFieldSignature::Slot& s) {
                return s.name == member.key();
            };
            if (std::none_of(setting.value.begin(), setting.value.end(), named)) {
                return "has an unknown field " + member.key();
            }
        }
    }
    return "";
}

vekprotocol::VekFields VekSettingItem::args(const VekSetting& setting, const Key& key,
                                            const Texts& values) {
    vekprotocol::VekFields out;
    size_t next = 0;
    for (const VekFieldSignature::Slot& slot : setting.set->signature.slots()) {
        if (slot.name == "channel") {
            out.push_back(key.channel);
        } else if (slot.name == "band") {
            out.push_back(std::to_string(key.band));
        } else if (next < values.size()) {
            out.insert(out.end(), values[next].begin(), values[next].end());
            ++next;
        }
    }
    return out;
}

vekprotocol::VekFields VekSettingItem::keyArgs(const VekSetting& setting, const Key& key) {
    vekprotocol::VekFields args;
    for (const VekFieldSignature::Slot& slot : setting.get->signature.slots()) {
        if (slot.name == "channel") {
            args.push_back(key.channel);
        } else if (slot.name == "band") {
            args.push_back(std::to_string(key.band));
        }
    }
    return args;
}

std::string VekSettingItem::label(const VekSetting& setting, const Key& key) {
    std::string text = setting.path();
    if (!key.channel.empty()) {
        text += '[' + key.channel;
        if (key.band >= 0) {
            text += '/' + std::to_string(key.band);
        }
        text += ']';
    }
    return text;
}

void VekSettingItem::forEach(const VekSetting& setting, const Json& value,
                             const std::function<void(const Key&, const Json&)>& visit) {
    if (setting.range == Range::One || isMissing(value) || !value.is_object()) {
        visit(Key{}, value);
        return;
    }
    for (const std::string& channel : VekSettingsTable::channels()) {
        const auto found = value.find(channel);
        if (found == value.end()) {
            continue;
        }
        if (setting.range != Range::PerBand) {
            visit(Key{channel, -1}, *found);
        } else if (found->is_array()) {
            for (size_t band = 0; band < found->size(); ++band) {
                if (!(*found)[band].is_null()) {
                    visit(Key{channel, static_cast<int>(band)}, (*found)[band]);
                }
            }
        }
    }
}

const Json* VekSettingItem::at(const Json& settings, const VekSetting& setting, const Key& key) {
    const Json* value = &settings;
    for (const std::string& name : {setting.feature, setting.name, key.channel}) {
        if (name.empty()) {
            break;
        }
        if (!value->is_object() || !value->contains(name)) {
            return nullptr;
        }
        value = &(*value)[name];
    }
    if (key.band < 0) {
        return value;
    }
    const size_t band = static_cast<size_t>(key.band);
    return value->is_array() && band < value->size() && !(*value)[band].is_null() ? &(*value)[band]
                                                                                  : nullptr;
}

void VekSettingItem::place(Json& settings, const VekSetting& setting, const Key& key, Json item) {
    Json& value = settings[setting.feature][setting.name];
    if (key.channel.empty()) {
        value = std::move(item);
        return;
    }
    Json& slot = value[key.channel];
    if (key.band < 0) {
        slot = std::move(item);
        return;
    }
    if (!slot.is_array()) {
        slot = Json::array();
    }
    while (slot.size() <= static_cast<size_t>(key.band)) {
        slot.push_back(nullptr);
    }
    slot[static_cast<size_t>(key.band)] = std::move(item);
}

}  // namespace vekmaster
