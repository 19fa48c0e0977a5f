#pragma once

#include <string>
#include <vector>

#include "VekSettingItem.h"
#include "VekSettingsTable.h"

namespace vekmaster {

// Compares two tunings item by item through the settings table. Values compare by their
// wire text, so a float that round-trips is equal; a value one side does not hold is
// "(absent)", a value the device could not report is "missing (NG)".
class VekTuningDiff {
public:
    using Json = VekValueJson::Json;

    struct Difference {
        std::string label;  // "EqV2.band[CF/7]"
        std::string a;      // the values as text: "-3.5", "value3=-3.5", "(absent)"
        std::string b;
        Json aValue;  // the items themselves; null when absent
        Json bValue;
    };

    // a and b are documents' "settings" objects.
    static std::vector<Difference> compare(const VekSettingsTable& table, const Json& a,
                                           const Json& b);
    // "EqV2.band[CF/7]: value3=-3.5 -> value3=-2"
    static std::string line(const Difference& d) { return d.label + ": " + d.a + " -> " + d.b; }
    // {"equal": ..., "differences": [{"setting", "a", "b"}, ...]}
    static Json json(const std::vector<Difference>& differences);
    // How an item reads: all its fields, or, with other given, those that differ from it.
    static std::string show(const VekSetting& setting, const Json* item, const Json* other);
    // The items hold the same values (both absent, or both missing for the same reason).
    static bool same(const VekSetting& setting, const Json* a, const Json* b);
};

}  // namespace vekmaster
