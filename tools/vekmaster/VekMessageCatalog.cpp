#include "VekMessageCatalog.h"

#include <type_traits>

#include "VekDeviceProfile.h"
#include "VekFieldReader.h"

namespace vekmaster {

using namespace vekprotocol;

namespace {

// "SetChannelRequest" -> "SetChannel"
std::string operationOf(const std::string& request) {
    static const std::string kSuffix = "Request";
    const size_t stem = request.size() - kSuffix.size();
    return request.size() > kSuffix.size() && request.compare(stem, kSuffix.size(), kSuffix) == 0
               ? request.substr(0, stem)
               : request;
}

// More payload fields than any answer has (a Vb configuration has 21).
constexpr size_t kProbeFields = 64;

std::string arguments(size_t count) {
    return std::to_string(count) + (count == 1 ? " argument" : " arguments");
}

}  // namespace

template <class Master, class Request>
void VekMessageCatalog::addMessage(Master& master,
                                   void (Master::*encoder)(std::stringstream&, const Request&)) {
    VekMasterMessage message;
    message.feature = Master::kFeature;
    message.name = operationOf(Request::kMessage);
    message.response = message.name + "Response";
    message.rawAnswer = std::is_same_v<Request, VekParamCommonFileContentRequest>;
    Request probe;
    fields(message.signature, probe);
    message.encode = [&master, encoder](const VekFields& args, uint32_t self,
                                        std::stringstream& out) {
        Request request;
        request.self = self;
        VekFieldReader reader(args);
        fields(reader, request);
        if (!reader.ok()) {
            return false;
        }
        (master.*encoder)(out, request);
        return true;
    };
    messages_.push_back(std::move(message));
}

template <class Master, class... Requests>
void VekMessageCatalog::addFeature(Master& master, void (Master::*... encoders)(std::stringstream&,
                                                                                const Requests&)) {
    sinks_.push_back(std::make_unique<VekResponseSink>(Master::kFeature, reply_));
    VekResponseSink& sink = *sinks_.back();
    master.setCallback(&sink);
    features_.emplace_back(Master::kFeature, &master);
    const size_t first = messages_.size();
    (addMessage(master, encoders), ...);
    // Each answer's field list, as the endpoint decodes it: a probe frame whose payload
    // is enough zeros for any record (a list takes them all).
    const VekFields header{"0", "0", Master::kFeature, "", "0", "OK"};
    const VekFields zeros(kProbeFields, "0");
    std::stringstream frame;
    for (size_t i = first; i < messages_.size(); ++i) {
        VekFields probe = header;
        probe[3] = messages_[i].response;
        sink.probe(&messages_[i].answer);
        master.decode(probe, zeros, frame, 0);
    }
    sink.probe(nullptr);
}

VekMessageCatalog::VekMessageCatalog(VekMasterReply& reply) : reply_(reply) {
    using Common = VekCommonMaster;
    addFeature(common_, &Common::encodeVersionRequest, &Common::encodeFeatureRequest,
               &Common::encodeFileListRequest, &Common::encodeFileContentRequest,
               &Common::encodeGetBypassRequest, &Common::encodeSetBypassRequest);
    using Gain = VekGainMaster;
    addFeature(gain_, &Gain::encodeGetMasterRequest, &Gain::encodeSetMasterRequest,
               &Gain::encodeGetChannelRequest, &Gain::encodeSetChannelRequest,
               &Gain::encodeGetFadeBalanceRequest, &Gain::encodeSetFadeBalanceRequest);
    using Reverb = VekReverbMaster;
    addFeature(reverb_, &Reverb::encodeGetEnableRequest, &Reverb::encodeGetModeRequest,
               &Reverb::encodeSetModeRequest);
    using Eq = VekEqMaster;
    addFeature(eq_, &Eq::encodeGetEnableRequest, &Eq::encodeSetEnableRequest,
               &Eq::encodeGetBandCountRequest, &Eq::encodeGetBandConfigRequest,
               &Eq::encodeSetBandConfigRequest);
    using EqV2 = VekEqV2Master;
    addFeature(eqV2_, &EqV2::encodeGetEnableRequest, &EqV2::encodeSetEnableRequest,
               &EqV2::encodeGetBandCountRequest, &EqV2::encodeSetBandCountRequest,
               &EqV2::encodeGetBandConfigRequest, &EqV2::encodeSetBandConfigRequest);
    using Hfe = VekHfeMaster;
    addFeature(hfe_, &Hfe::encodeGetEnableRequest, &Hfe::encodeSetEnableRequest,
               &Hfe::encodeGetChannelConfigRequest, &Hfe::encodeSetChannelConfigRequest);
    using Vb = VekVbMaster;
    addFeature(vb_, &Vb::encodeGetEnableRequest, &Vb::encodeSetEnableRequest,
               &Vb::encodeGetChannelConfigRequest, &Vb::encodeSetChannelConfigRequest);
    using Speaker = VekSpeakerMaster;
    addFeature(speaker_, &Speaker::encodeGetEnableRequest, &Speaker::encodeSetEnableRequest,
               &Speaker::encodeGetDelayRequest, &Speaker::encodeSetDelayRequest,
               &Speaker::encodeSetStylePatternRequest, &Speaker::encodeSetSinePatternRequest);
}

VekSerDes* VekMessageCatalog::endpoint(const std::string& feature) const {
    for (const auto& entry : features_) {
        if (entry.first == feature) {
            return entry.second;
        }
    }
    return nullptr;
}

const VekMasterMessage* VekMessageCatalog::find(const std::string& feature,
                                                const std::string& name) const {
    for (const VekMasterMessage& message : messages_) {
        if (message.feature == feature && message.name == name) {
            return &message;
        }
    }
    return nullptr;
}

std::string VekMessageCatalog::names(const std::string& feature) const {
    std::string list;
    for (const VekMasterMessage& message : messages_) {
        if (message.feature == feature) {
            list += (list.empty() ? "" : " ") + message.name;
        }
    }
    return list;
}

std::string VekMessageCatalog::prepare(const std::vector<std::string>& words,
                                       const VekMasterMessage*& message, VekFields& args) const {
    std::string features;
    bool known = false;
    for (const auto& feature : features_) {
        features += (features.empty() ? "" : " ") + feature.first;
        known = known || (!words.empty() && words[0] == feature.first);
    }
    if (words.empty()) {
        return "expected FEATURE MESSAGE [ARG...] (features: " + features + ")";
    }
    const std::string& feature = words[0];
    if (!known) {
        return "unknown feature '" + feature + "' (features: " + features + ")";
    }
    if (words.size() < 2) {
        return feature + " needs a MESSAGE (messages: " + names(feature) + ")";
    }
    message = find(feature, words[1]);
    if (message == nullptr) {
        return feature + " has no message '" + words[1] + "' (messages: " + names(feature) + ")";
    }
    args.assign(words.begin() + 2, words.end());
    return check(*message, args);
}

std::string VekMessageCatalog::check(const VekMasterMessage& message, const VekFields& args) const {
    const std::string head = message.feature + ' ' + message.name;
    for (const std::string& arg : args) {
        // Nothing on the wire escapes a separator, and an empty last field is lost.
        if (arg.empty() || arg.find_first_of(":\n") != std::string::npos) {
            return head + ": argument '" + arg +
                   "' cannot be sent (it is empty or holds ':' or a line feed)";
        }
    }
    const VekFieldSignature& wanted = message.signature;
    const size_t given = args.size();
    if (given < wanted.count() || (!wanted.open() && given > wanted.count())) {
        const std::string expected =
            wanted.slots().empty() ? "no arguments"
                                   : arguments(wanted.count()) + (wanted.open() ? " or more" : "") +
                                         " (" + wanted.synopsis() + ")";
        return head + " takes " + expected + ", got " + std::to_string(given);
    }
    std::stringstream scratch;
    if (!message.encode(args, 0, scratch)) {
        return head + ": the arguments do not read as " + wanted.synopsis();
    }
    return limited_ ? VekDeviceProfile::inUse()->check(message, args).problem : "";
}

std::string VekMessageCatalog::help() const {
    std::string text;
    for (const VekMasterMessage& message : messages_) {
        const std::string synopsis = message.signature.synopsis();
        text += "  " + message.feature + ' ' + message.name +
                (synopsis.empty() ? "" : ' ' + synopsis) + '\n';
    }
    return text;
}

}  // namespace vekmaster
