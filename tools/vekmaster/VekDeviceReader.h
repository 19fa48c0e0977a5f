#pragma once

#include <string>
#include <vector>

#include "VekMasterSession.h"
#include "VekSettingItem.h"
#include "VekSettingsTable.h"

namespace vekmaster {

// Reads settings from a device with the table's get messages, into a document's
// "settings" object. A value the device answers NG for is kept as a missing marker; a
// device that does not answer at all (or a failed line) stops the read.
class VekDeviceReader {
public:
    using Json = VekValueJson::Json;

    VekDeviceReader(VekMasterSession& session, const VekSettingsTable& table)
        : session_(session), table_(table) {}

    // The version string and the features the device serves; false when it did not say.
    bool identify(std::string& version, std::vector<std::string>& features);
    // Every setting of the served features (only null), or just the items that only (a
    // document's "settings") holds; never one that asking for would change. False when the device
    // stopped answering; missing counts the values it answered NG for.
    bool read(const std::vector<std::string>& served, const Json* only, Json& settings,
              int& missing);
    // The answer that stopped identify or read.
    const VekMasterReply& stopped() const { return *stopped_; }

private:
    // Asks; false when the device did not answer. reply is then the failure.
    bool ask(const VekSetting& setting, const vekprotocol::VekFields& args,
             const VekMasterReply*& reply);
    bool readSetting(const VekSetting& setting, const Json* only, const Json& settings,
                     Json& value);
    // The bands of a channel to read: those a document lists for it (given), or 0 up
    // to its band count.
    static std::vector<int> bands(const Json* given, const Json* count);

    VekMasterSession& session_;
    const VekSettingsTable& table_;
    const VekMasterReply* stopped_ = nullptr;
    int missing_ = 0;
};

}  // namespace vekmaster
