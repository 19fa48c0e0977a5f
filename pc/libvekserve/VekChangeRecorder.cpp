#include "VekChangeRecorder.h"

namespace vekserve {

using namespace vekmaster;

std::string VekChangeRecorder::record(const ExchangePtr& exchange, const std::string& device,
                                      const std::string& kind,
                                      std::vector<VekSettingChange> changes, int64_t target) const {
    if (journal_ == nullptr || (changes.empty() && target == 0)) {
        return "";
    }
    VekJournal::Step step;
    step.device = device;
    step.kind = kind;
    step.client = exchange->request().client;
    step.requestId = exchange->request().id;
    step.target = target;
    step.changes = std::move(changes);
    return journal_->record(step) ? "" : "the journal could not record the change: " +
                                             journal_->error();
}

std::vector<VekSettingChange> VekChangeRecorder::changesOf(const VekTuningApply::Result& result) {
    std::vector<VekSettingChange> out;
    for (const VekTuningApply::Change& change : result.changes) {
        if (!change.item.setting.empty()) {
            out.push_back(change.item);
        }
    }
    return out;
}

std::string VekChangeRecorder::around(VekSessionAccess& access, const VekChangeSet& set,
                                      const ExchangePtr& exchange, const std::string& device,
                                      const std::string& kind,
                                      const std::function<void()>& send) const {
    if (journal_ == nullptr || set.empty()) {
        send();
        return "";
    }
    VekDeviceReading before;
    const bool known = access.read(&set.items(), before);
    send();
    VekDeviceReading after;
    // A device that stopped answering changed nothing we could see.
    if (!known || !access.read(&set.items(), after)) {
        return "";
    }
    return record(exchange, device, kind, set.changes(before.settings, after.settings));
}

bool VekChangeRecorder::refuseUnrecorded(const ExchangePtr& exchange, const std::string& problem) {
    if (problem.empty()) {
        return false;
    }
    exchange->answer(500, VekHttpExchange::error(problem));
    return true;
}

}  // namespace vekserve
