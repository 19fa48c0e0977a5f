#pragma once

#include <string>
#include <vector>

#include "VekDeviceReader.h"
#include "VekExitStatus.h"
#include "VekMasterSession.h"
#include "VekSettingChange.h"
#include "VekSettingItem.h"
#include "VekSettingsTable.h"

namespace vekmaster {

// Brings a device to a tuning document: reads what the document holds, sends only what
// differs, in table order (band counts before bands), then reads back every value it set.
// A bypass the document switches on is set first and one it switches off last; with
// the bypass option the bypass is held on throughout and restored at the end (to the
// document's value if it has one), so a listener never hears a half-applied tuning.
class VekTuningApply {
public:
    using Json = VekValueJson::Json;

    struct Options {
        bool dryRun = false;  // read, plan and list the requests; set nothing
        bool bypass = false;
        // The device's whole "settings" as known for certain (its only master set them
        // last): nothing is read before the sets, only the values set are read back.
        const Json* current = nullptr;
    };
    struct Change {
        std::string label;  // "Gain.master"
        std::string from;   // the device's value before, as a diff shows it
        std::string to;
        VekSettingChange item;  // the same as items, for a journal
    };
    struct Failure {
        std::string label;
        std::string reason;  // "the device answered NG", "did not take: the device has -6"
    };
    // A set request that went on the line, and how the device answered it: "OK", "NG",
    // "lost" (the device may have acted on it), "no answer" or "line failed".
    struct Sent {
        std::string request;
        std::string answer;
    };
    struct Result {
        int status = VekExitStatus::kOk;
        std::string problem;                // why it stopped before the end
        std::vector<std::string> requests;  // the set requests, as script lines
        std::vector<Change> changes;        // the values set (to be set, in a dry run)
        std::vector<Failure> failures;      // the values that did not take
        std::vector<Sent> sent;             // in the order sent; requests not listed were not
        size_t values = 0;                  // the values it tried to set
    };

    VekTuningApply(VekMasterSession& session, const VekSettingsTable& table)
        : session_(session), table_(table), reader_(session, table) {}

    // document has passed VekTuningDocument::check.
    Result run(const Json& document, const Options& options);
    // A result as one object: status ("OK" or "NG"), requests, sent ({request, answer}),
    // changes ({setting, from, to}), failures ({setting, reason}), values, and error when
    // it stopped early.
    static Json json(const Result& result);
    // The result that json gave; status 0 or 1 from "status" (how it stopped otherwise is
    // for the caller to say). False when json is not such an object.
    static bool fromJson(const Json& json, Result& result);

private:
    struct Wanted {
        const VekSetting* setting;
        VekSettingItem::Key key;
        Json item;
        Change change;
    };
    struct Step {
        enum class Role { Value, HoldBypass, ReleaseBypass };
        Role role;
        const VekSetting* setting;
        vekprotocol::VekFields args;
        std::vector<Wanted> wanted;  // what it sets, for the read-back
    };

    // The steps that bring current to the document's settings; false with the result's
    // problem when a value cannot be put into a request.
    void plan(const Json& settings, const Json& current, std::vector<Step>& steps,
              Result& result) const;
    void planChannelArray(const VekSetting& setting, const Json& value, const Json& current,
                          std::vector<Step>& steps, Result& result) const;
    // Moves the bypass step where it belongs; false when --bypass cannot be honoured.
    bool placeBypass(const Json& settings, const Json& current, const Options& options,
                     std::vector<Step>& steps, Result& result) const;
    Step bypassStep(Step::Role role) const;
    // Sends the steps; false when it had to stop. sent gets what was set.
    bool send(const std::vector<Step>& steps, std::vector<const Wanted*>& sent, Result& result);
    void readBack(const std::vector<std::string>& served, const std::vector<const Wanted*>& sent,
                  Result& result);
    void stop(const VekMasterReply& reply, Result& result) const;

    VekMasterSession& session_;
    const VekSettingsTable& table_;
    VekDeviceReader reader_;
};

}  // namespace vekmaster
