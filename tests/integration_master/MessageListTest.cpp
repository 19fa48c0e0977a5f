// The places that name every message must agree, so that a new message cannot be
// forgotten in one of them: the sample list (soak test, benchmarks, fuzz corpus), the
// protocol's slave callback interfaces, vek_master's catalogue as its --help prints
// it, and the fuzz dictionary.

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "MasterRun.h"
#include "SampleRequests.h"
#include "VekCommonSlave.h"
#include "VekEqSlave.h"
#include "VekEqV2Slave.h"
#include "VekFrameHub.h"
#include "VekGainSlave.h"
#include "VekHfeSlave.h"
#include "VekReverbSlave.h"
#include "VekSpeakerSlave.h"
#include "VekVbSlave.h"

using namespace vekprotocol;

namespace {

using Names = std::set<std::string>;

// Declares one request operation: it records the message that reached it, and its
// name joins `declared` when the recorder is built. The interfaces' operations are pure
// virtual, so the recorder does not compile until every one of them is declared here.
#define VEK_REQUEST(Feature, Operation)                                            \
    void on##Operation##Request(VekParam##Feature##Operation##Request&) override { \
        reached.insert(#Feature " " #Operation);                                   \
    }                                                                              \
    Declare declare##Feature##Operation {                                          \
        declared, #Feature " " #Operation                                          \
    }

struct Declare {
    Declare(Names& names, const char* name) { names.insert(name); }
};

class Recorder : public VekCommonSlaveCallbackItf,
                 public VekGainSlaveCallbackItf,
                 public VekReverbSlaveCallbackItf,
                 public VekEqSlaveCallbackItf,
                 public VekEqV2SlaveCallbackItf,
                 public VekHfeSlaveCallbackItf,
                 public VekVbSlaveCallbackItf,
                 public VekSpeakerSlaveCallbackItf {
public:
    Names declared;
    Names reached;

    VEK_REQUEST(Common, Version);
    VEK_REQUEST(Common, Feature);
    VEK_REQUEST(Common, FileList);
    VEK_REQUEST(Common, FileContent);
    VEK_REQUEST(Common, GetBypass);
    VEK_REQUEST(Common, SetBypass);
    VEK_REQUEST(Gain, GetMaster);
    VEK_REQUEST(Gain, SetMaster);
    VEK_REQUEST(Gain, GetChannel);
    VEK_REQUEST(Gain, SetChannel);
    VEK_REQUEST(Gain, GetFadeBalance);
    VEK_REQUEST(Gain, SetFadeBalance);
    VEK_REQUEST(Reverb, GetEnable);
    VEK_REQUEST(Reverb, GetMode);
    VEK_REQUEST(Reverb, SetMode);
    VEK_REQUEST(Eq, GetEnable);
    VEK_REQUEST(Eq, SetEnable);
    VEK_REQUEST(Eq, GetBandCount);
    VEK_REQUEST(Eq, GetBandConfig);
    VEK_REQUEST(Eq, SetBandConfig);
    VEK_REQUEST(EqV2, GetEnable);
    VEK_REQUEST(EqV2, SetEnable);
    VEK_REQUEST(EqV2, GetBandCount);
    VEK_REQUEST(EqV2, SetBandCount);
    VEK_REQUEST(EqV2, GetBandConfig);
    VEK_REQUEST(EqV2, SetBandConfig);
    VEK_REQUEST(Hfe, GetEnable);
    VEK_REQUEST(Hfe, SetEnable);
    VEK_REQUEST(Hfe, GetChannelConfig);
    VEK_REQUEST(Hfe, SetChannelConfig);
    VEK_REQUEST(Vb, GetEnable);
    VEK_REQUEST(Vb, SetEnable);
    VEK_REQUEST(Vb, GetChannelConfig);
    VEK_REQUEST(Vb, SetChannelConfig);
    VEK_REQUEST(Speaker, GetEnable);
    VEK_REQUEST(Speaker, SetEnable);
    VEK_REQUEST(Speaker, GetDelay);
    VEK_REQUEST(Speaker, SetDelay);
    VEK_REQUEST(Speaker, SetStylePattern);
    VEK_REQUEST(Speaker, SetSinePattern);
};

// Every slave endpoint behind one hub, all calling the recorder.
struct Slaves {
    explicit Slaves(Recorder& r) {
        common.setCallback(&r);
        gain.setCallback(&r);
        reverb.setCallback(&r);
        eq.setCallback(&r);
        eqV2.setCallback(&r);
        hfe.setCallback(&r);
        vb.setCallback(&r);
        speaker.setCallback(&r);
        hub.registerEndpoint(VekGainSlave::kFeature, &gain);
        hub.registerEndpoint(VekReverbSlave::kFeature, &reverb);
        hub.registerEndpoint(VekEqSlave::kFeature, &eq);
        hub.registerEndpoint(VekEqV2Slave::kFeature, &eqV2);
        hub.registerEndpoint(VekHfeSlave::kFeature, &hfe);
        hub.registerEndpoint(VekVbSlave::kFeature, &vb);
        hub.registerEndpoint(VekSpeakerSlave::kFeature, &speaker);
    }
    VekCommonSlave common;
    VekGainSlave gain;
    VekReverbSlave reverb;
    VekEqSlave eq;
    VekEqV2Slave eqV2;
    VekHfeSlave hfe;
    VekVbSlave vb;
    VekSpeakerSlave speaker;
    VekFrameHub hub{&common, nullptr};
};

Names sampleNames() {
    Names names;
    for (const SampleRequests::Request& r : SampleRequests::all()) {
        EXPECT_TRUE(names.insert(r.feature + ' ' + r.message).second)
            << r.feature << ' ' << r.message << " is listed twice";
    }
    return names;
}

// "FEATURE MESSAGE" of each line of vek_master's message list.
Names catalogueNames(const std::string& help) {
    Names names;
    std::istringstream in(help.substr(help.find("Messages and their ARGs")));
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line) && !line.empty()) {
        std::istringstream words(line);
        std::string feature;
        std::string message;
        words >> feature >> message;
        names.insert(feature + ' ' + message);
    }
    return names;
}

TEST(MessageListTest, SampleListNamesEveryRequestOfTheProtocolAndEachReachesItsOperation) {
    const Names samples = sampleNames();
    ASSERT_FALSE(samples.empty()) << "cannot read " << SampleRequests::path();
    Recorder recorder;
    EXPECT_EQ(samples, recorder.declared);

    Slaves slaves(recorder);
    for (const SampleRequests::Request& r : SampleRequests::all()) {
        recorder.reached.clear();
        const std::string frame = r.frame(1, "/tmp/sample");
        slaves.hub.feed(frame.data(), static_cast<uint32_t>(frame.size()));
        EXPECT_EQ(recorder.reached, Names{r.feature + ' ' + r.message}) << frame;
    }
}

TEST(MessageListTest, VekMasterCataloguesTheSameMessages) {
    const MasterRun::Result help = MasterRun::run({"--help"});
    ASSERT_EQ(help.status, 0);
    ASSERT_NE(help.out.find("Messages and their ARGs"), std::string::npos) << help.out;
    EXPECT_EQ(catalogueNames(help.out), sampleNames());
}

TEST(MessageListTest, FuzzDictionaryHoldsEveryFeatureAndMessageName) {
    std::ifstream in(VEK_FUZZ_DICT_PATH);
    Names words;
    for (std::string line; std::getline(in, line);) {
        if (line.size() > 2 && line.front() == '"' && line.back() == '"') {
            words.insert(line.substr(1, line.size() - 2));
        }
    }
    ASSERT_FALSE(words.empty()) << "cannot read " << VEK_FUZZ_DICT_PATH;
    for (const SampleRequests::Request& r : SampleRequests::all()) {
        EXPECT_EQ(words.count(r.feature), 1u) << r.feature;
        EXPECT_EQ(words.count(r.message + "Request"), 1u) << r.message;
        EXPECT_EQ(words.count(r.message + "Response"), 1u) << r.message;
    }
}

}  // namespace
