#pragma once

#include <string>
#include <vector>

#include "VekMessageCatalog.h"
#include "VekSetting.h"

namespace vekmaster {

// Every setting of every feature, in the order a tuning is applied: switches and counts
// before what depends on them, each feature's enable before its values. Snapshot walks
// it with the get messages, apply with the set messages and read-back, diff compares two
// documents with it. The messages come from the catalogue and the value fields from the
// records' field lists, so a new setting is one row.
class VekSettingsTable {
public:
    // The channel order of every six-element array on the wire.
    static const std::vector<std::string>& channels();
    // The band records have room for this many bands of a channel.
    static constexpr int kMaxBands = 40;
    // The fixed-band equaliser's band count.
    static constexpr int kFixedBands = 20;

    // The process's table, over the shared catalogue: read-only, so every thread uses it.
    static const VekSettingsTable& shared();

    explicit VekSettingsTable(const VekMessageCatalog& catalog);

    const std::vector<VekSetting>& settings() const { return settings_; }
    // The row, or null.
    const VekSetting* find(const std::string& feature, const std::string& name) const;
    // The band count row of the feature of a PerBand row, or null.
    const VekSetting* bandCountOf(const VekSetting& bands) const;
    // The features that have rows, in table order.
    std::vector<std::string> features() const;

private:
    std::vector<VekSetting> settings_;
};

}  // namespace vekmaster
