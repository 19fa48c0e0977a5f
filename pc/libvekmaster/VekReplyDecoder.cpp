#include "VekReplyDecoder.h"

namespace vekmaster {

template <class Master>
void VekReplyDecoder::add(Master& master) {
    auto sink = std::make_unique<VekResponseSink>(Master::kFeature, reply_);
    master.setCallback(sink.get());
    features_.push_back({Master::kFeature, &master, std::move(sink)});
}

VekReplyDecoder::VekReplyDecoder(VekMasterReply& reply) : reply_(reply) {
    add(common_);
    add(gain_);
    add(reverb_);
    add(eq_);
    add(eqV2_);
    add(hfe_);
    add(vb_);
    add(speaker_);
}

vekprotocol::VekSerDes* VekReplyDecoder::endpoint(const std::string& feature) const {
    for (const Feature& entry : features_) {
        if (entry.name == feature) {
            return entry.endpoint;
        }
    }
    return nullptr;
}

void VekReplyDecoder::probe(const std::string& feature, VekFieldSignature* signature) {
    for (Feature& entry : features_) {
        if (entry.name == feature) {
            entry.sink->probe(signature);
        }
    }
}

}  // namespace vekmaster
