#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "VekCommonMaster.h"
#include "VekEqMaster.h"
#include "VekEqV2Master.h"
#include "VekGainMaster.h"
#include "VekHfeMaster.h"
#include "VekMasterMessage.h"
#include "VekMasterReply.h"
#include "VekResponseSink.h"
#include "VekReverbMaster.h"
#include "VekSpeakerMaster.h"
#include "VekVbMaster.h"

namespace vekmaster {

// Every request of every feature, derived from the master endpoints' encoders and the
// request records' field lists; owns the master endpoints and their callbacks, which
// put the awaited answer into the reply given at construction. One per line: the
// endpoints' callbacks write to that line's reply.
class VekMessageCatalog {
public:
    explicit VekMessageCatalog(VekMasterReply& reply);
    VekMessageCatalog(const VekMessageCatalog&) = delete;
    VekMessageCatalog& operator=(const VekMessageCatalog&) = delete;

    // The master endpoint of a feature, or null.
    vekprotocol::VekSerDes* endpoint(const std::string& feature) const;
    // Every message, feature by feature in the order the endpoints define them.
    const std::vector<VekMasterMessage>& messages() const { return messages_; }
    // The message "Gain" "SetMaster", or null.
    const VekMasterMessage* find(const std::string& feature, const std::string& name) const;
    // Checks FEATURE MESSAGE ARG... and gives the message and its ARGs; "" or why it
    // cannot be sent.
    std::string prepare(const std::vector<std::string>& words, const VekMasterMessage*& message,
                        vekprotocol::VekFields& args) const;
    // Checks the ARGs of a message, and their ranges against the device profile in use
    // unless limits are off; "" or why they cannot be sent.
    std::string check(const VekMasterMessage& message, const vekprotocol::VekFields& args) const;
    // Off: values outside the profile's ranges are sent (vek_master --force).
    void setLimited(bool limited) { limited_ = limited; }
    // One line per message: "  Gain SetChannel channelGain:float[6]".
    std::string help() const;

private:
    template <class Master, class... Requests>
    void addFeature(Master& master,
                    void (Master::*... encoders)(std::stringstream&, const Requests&));
    template <class Master, class Request>
    void addMessage(Master& master, void (Master::*encoder)(std::stringstream&, const Request&));
    std::string names(const std::string& feature) const;

    VekMasterReply& reply_;
    vekprotocol::VekCommonMaster common_;
    vekprotocol::VekGainMaster gain_;
    vekprotocol::VekReverbMaster reverb_;
    vekprotocol::VekEqMaster eq_;
    vekprotocol::VekEqV2Master eqV2_;
    vekprotocol::VekHfeMaster hfe_;
    vekprotocol::VekVbMaster vb_;
    vekprotocol::VekSpeakerMaster speaker_;
    std::vector<std::unique_ptr<VekResponseSink>> sinks_;
    std::vector<std::pair<std::string, vekprotocol::VekSerDes*>> features_;
    std::vector<VekMasterMessage> messages_;
    bool limited_ = true;
};

}  // namespace vekmaster
