#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "VekCommonMaster.h"
#include "VekEqMaster.h"
#include "VekEqV2Master.h"
#include "VekGainMaster.h"
#include "VekHfeMaster.h"
#include "VekMasterReply.h"
#include "VekResponseSink.h"
#include "VekReverbMaster.h"
#include "VekSpeakerMaster.h"
#include "VekVbMaster.h"

namespace vekmaster {

// The master endpoint of every feature, each with a callback that puts the awaited
// answer into one reply: what a session decodes its line's answers with. One per
// session; the catalogue of messages is shared and knows nothing of replies.
class VekReplyDecoder {
public:
    explicit VekReplyDecoder(VekMasterReply& reply);
    VekReplyDecoder(const VekReplyDecoder&) = delete;
    VekReplyDecoder& operator=(const VekReplyDecoder&) = delete;

    // The master endpoint of a feature, or null.
    vekprotocol::VekSerDes* endpoint(const std::string& feature) const;
    // While set, the feature's answers only note their field lists into signature.
    void probe(const std::string& feature, VekFieldSignature* signature);

private:
    template <class Master>
    void add(Master& master);

    VekMasterReply& reply_;
    vekprotocol::VekCommonMaster common_;
    vekprotocol::VekGainMaster gain_;
    vekprotocol::VekReverbMaster reverb_;
    vekprotocol::VekEqMaster eq_;
    vekprotocol::VekEqV2Master eqV2_;
    vekprotocol::VekHfeMaster hfe_;
    vekprotocol::VekVbMaster vb_;
    vekprotocol::VekSpeakerMaster speaker_;
    struct Feature {
        std::string name;
        vekprotocol::VekSerDes* endpoint;
        std::unique_ptr<VekResponseSink> sink;
    };
    std::vector<Feature> features_;
};

}  // namespace vekmaster
