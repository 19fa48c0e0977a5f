#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VekChangeSet.h"
#include "VekHttpExchange.h"
#include "VekJournal.h"
#include "VekSessionAccess.h"
#include "VekTuningApply.h"

namespace vekserve {

// Puts what a client's request changed on a device into the journal, before the answer
// goes out. Without a journal it records nothing and every call succeeds.
class VekChangeRecorder {
public:
    using ExchangePtr = std::shared_ptr<VekHttpExchange>;

    explicit VekChangeRecorder(vekmaster::VekJournal* journal) : journal_(journal) {}

    vekmaster::VekJournal* journal() const { return journal_; }
    // Records one step of the exchange's client on device (nothing when there are no
    // changes); "" or why it could not be committed.
    std::string record(const ExchangePtr& exchange, const std::string& device, const std::string& kind,
                       std::vector<vekmaster::VekSettingChange> changes, int64_t target = 0) const;
    // The changes an apply made, from its result.
    static std::vector<vekmaster::VekSettingChange> changesOf(
        const vekmaster::VekTuningApply::Result& result);
    // Reads what set touches, runs send, reads it again and records what changed. The
    // reads are skipped when there is no journal or set is empty. "" or why the
    // change could not be recorded (send has run).
    std::string around(vekmaster::VekSessionAccess& access, const vekmaster::VekChangeSet& set,
                       const ExchangePtr& exchange, const std::string& device, const std::string& kind,
                       const std::function<void()>& send) const;
    // Answers 500 after a change that took but could not be recorded; true when it did.
    static bool refuseUnrecorded(const ExchangePtr& exchange, const std::string& problem);

private:
    vekmaster::VekJournal* journal_;
};

}  // namespace vekserve
