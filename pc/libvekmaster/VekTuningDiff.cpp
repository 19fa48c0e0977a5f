#include "VekTuningDiff.h"

#include <algorithm>

#include "VekNames.h"

namespace vekmaster {

namespace {

using Json = VekTuningDiff::Json;

// The item's texts; false for an item a document holds in a form the table does not.
bool texts(const VekSetting& setting, const Json* item, VekSettingItem::Texts& out) {
    return item != nullptr && !VekSettingItem::isMissing(*item) &&
           VekSettingItem::texts(setting, *item, out).empty();
}

}  // namespace

bool VekTuningDiff::same(const VekSetting& setting, const Json* a, const Json* b) {
    if (a == nullptr || b == nullptr) {
        return a == b;
    }
    VekSettingItem::Texts ta;
    VekSettingItem::Texts tb;
    if (texts(setting, a, ta) && texts(setting, b, tb)) {
        return ta == tb;
    }
    return *a == *b;
}

std::string VekTuningDiff::show(const VekSetting& setting, const Json* item, const Json* other) {
    if (item == nullptr) {
        return "(absent)";
    }
    if (VekSettingItem::isMissing(*item)) {
        const auto reason = item->find("missing");
        return "missing (" +
               (reason->is_string() ? reason->get<std::string>() : VekValueJson::dump(*reason)) +
               ")";
    }
    VekSettingItem::Texts mine;
    if (!texts(setting, item, mine)) {
        return VekValueJson::dump(*item);
    }
    if (setting.value.size() == 1 || setting.range == VekSetting::Range::ChannelArray) {
        return VekNames::join(mine.front(), ":");
    }
    VekSettingItem::Texts theirs;
    const bool compare = texts(setting, other, theirs);
    std::string text;
    for (size_t i = 0; i < mine.size(); ++i) {
        if (!compare || mine[i] != theirs[i]) {
            text += (text.empty() ? "" : " ") + setting.value[i].name + '=' +
                    VekNames::join(mine[i], ":");
        }
    }
    return text;
}

std::vector<VekTuningDiff::Difference> VekTuningDiff::compare(const VekSettingsTable& table,
                                                              const Json& a, const Json& b) {
    std::vector<Difference> differences;
    for (const VekSetting& setting : table.settings()) {
        const Json* va = VekSettingItem::at(a, setting, {});
        const Json* vb = VekSettingItem::at(b, setting, {});
        if (va == nullptr && vb == nullptr) {
            continue;
        }
        // Items in a's order, then those only b has.
        struct Pair {
            std::string label;
            const Json* item[2];
        };
        std::vector<Pair> items;
        const auto collect = [&](const Json* value, int side) {
            if (value == nullptr) {
                return;
            }
            VekSettingItem::forEach(
                setting, *value, [&](const VekSettingItem::Key& key, const Json& item) {
                    const std::string label = VekSettingItem::label(setting, key);
                    const auto known = std::find_if(items.begin(), items.end(), [&](const Pair& p) {
                        return p.label == label;
                    });
                    if (known != items.end()) {
                        known->item[side] = &item;
                    } else {
                        items.push_back({label, {nullptr, nullptr}});
                        items.back().item[side] = &item;
                    }
                });
        };
        collect(va, 0);
        collect(vb, 1);
        for (const Pair& entry : items) {
            const Json* ia = entry.item[0];
            const Json* ib = entry.item[1];
            if (!same(setting, ia, ib)) {
                differences.push_back({entry.label, show(setting, ia, ib), show(setting, ib, ia),
                                       ia != nullptr ? *ia : Json(), ib != nullptr ? *ib : Json()});
            }
        }
    }
    return differences;
}

Json VekTuningDiff::json(const std::vector<Difference>& differences) {
    Json list = Json::array();
    for (const Difference& d : differences) {
        Json entry = Json::object();
        entry["setting"] = d.label;
        entry["a"] = d.aValue;
        entry["b"] = d.bValue;
        list.push_back(std::move(entry));
    }
    Json out = Json::object();
    out["equal"] = differences.empty();
    out["differences"] = std::move(list);
    return out;
}

}  // namespace vekmaster
