#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "VekCheckedRequest.h"
#include "VekError.h"
#include "VekMasterMessage.h"

namespace vekmaster {

class VekDeviceProfile;

// Every request of every feature, derived from the master endpoints' encoders and the
// request records' field lists. Immutable once built and holding no reply, so one
// catalogue serves every line, thread and check of the process (shared()); replies are
// decoded by each session's own VekReplyDecoder.
class VekMessageCatalog {
public:
    // The process's catalogue, built at first use.
    static const VekMessageCatalog& shared();

    VekMessageCatalog();
    VekMessageCatalog(const VekMessageCatalog&) = delete;
    VekMessageCatalog& operator=(const VekMessageCatalog&) = delete;

    // Every message, feature by feature in the order the endpoints define them.
    const std::vector<VekMasterMessage>& messages() const { return messages_; }
    // The features, in the same order.
    const std::vector<std::string>& features() const { return features_; }
    // The message "Gain" "SetMaster", or null.
    const VekMasterMessage* find(const std::string& feature, const std::string& name) const;
    // Finds FEATURE MESSAGE (the first two words); a Usage error names what there is.
    VekError lookup(const std::vector<std::string>& words, const VekMasterMessage*& message) const;
    // Checks FEATURE MESSAGE ARG... and gives the checked request.
    VekError prepare(const std::vector<std::string>& words, const VekDeviceProfile* limits,
                     VekCheckedRequest& checked) const;
    // Checks the ARGs of a message, and their ranges against limits unless it is null
    // (vek_master --force); Usage or Range when they cannot be sent.
    VekError check(const VekMasterMessage& message, const vekprotocol::VekFields& args,
                   const VekDeviceProfile* limits) const;
    // The same, giving the checked request.
    VekError check(const VekMasterMessage& message, const vekprotocol::VekFields& args,
                   const VekDeviceProfile* limits, VekCheckedRequest& checked) const;
    // One line per message: "  Gain SetChannel channelGain:float[6]".
    std::string help() const;

private:
    template <class Master, class... Requests>
    void addFeature(void (Master::*... encoders)(std::stringstream&, const Requests&));
    template <class Master, class Request>
    void addMessage(void (Master::*encoder)(std::stringstream&, const Request&));
    std::string names(const std::string& feature) const;

    std::vector<std::string> features_;
    std::vector<VekMasterMessage> messages_;
};

}  // namespace vekmaster
