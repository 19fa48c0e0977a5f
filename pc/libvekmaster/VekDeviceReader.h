#pragma once

#include <string>
#include <vector>

#include "VekMasterSession.h"
#include "VekSettingItem.h"
#include "VekSettingsTable.h"

namespace vekmaster {

// Reads settings from a device with the table's get messages, into a document's
// "settings" object, as one batch on the session's window: the bands of a channel are
// asked for as soon as its band count is in. A value the device answers NG for is kept
// as a missing marker; a request whose answer was lost on the line is asked once more;
// a device that does not answer at all (or a failed line) stops the read.
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
    const VekMasterReply& stopped() const { return stopped_; }

private:
    // What a request of the batch is for.
    struct Slot {
        const VekSetting* setting;
        std::string channel;  // "" for all of them
        int band;             // -1 for none
    };
    using Batch = VekMasterSession::Batch;

    // Runs the batch, once more for what was lost; false with stopped_ when something
    // stayed unanswered.
    bool run(Batch& batch, const VekMasterSession::Answered& answered);
    void add(Batch& batch, const VekSetting& setting, const std::string& channel, int band);
    // Puts an answer into settings_.
    void take(const Slot& slot, const VekMasterReply& reply);
    // The bands of a PerBand setting, once its counts are known.
    void addBands(Batch& batch, const VekSetting& setting);
    // The bands of a channel to read: those a document lists for it (given), or 0 up
    // to its band count.
    static std::vector<int> bands(const Json* given, const Json* count);
    bool listed(const VekSetting& setting, const std::string& channel) const;

    VekMasterSession& session_;
    const VekSettingsTable& table_;
    VekMasterReply stopped_;
    std::vector<Slot> slots_;
    const Json* only_ = nullptr;
    Json* settings_ = nullptr;
    int missing_ = 0;
};

}  // namespace vekmaster
