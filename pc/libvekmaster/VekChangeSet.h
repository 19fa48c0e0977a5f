#pragma once

#include <vector>

#include "VekSettingChange.h"
#include "VekSettingItem.h"
#include "VekSettingsTable.h"

namespace vekmaster {

// What some set messages touch, as the items of a document's "settings" to read before
// and after sending them; the items that then differ are the changes they made.
class VekChangeSet {
public:
    using Json = VekValueJson::Json;

    explicit VekChangeSet(const VekSettingsTable& table) : table_(table) {}

    // Adds the items a message sets; false when it sets none of the table's settings.
    bool add(const VekMasterMessage& message, const vekprotocol::VekFields& args);
    // Adds a setting's item (for a channel array, every channel's).
    void add(const VekSetting& setting, const VekSettingItem::Key& key);
    bool empty() const { return keys_.empty(); }
    // The "settings" object to read.
    const Json& items() const { return items_; }
    // The items whose values differ between two reads of items(), in the order added.
    std::vector<VekSettingChange> changes(const Json& before, const Json& after) const;

private:
    struct Touched {
        const VekSetting* setting;
        VekSettingItem::Key key;
    };

    const VekSettingsTable& table_;
    std::vector<Touched> keys_;
    Json items_ = Json::object();
};

}  // namespace vekmaster
