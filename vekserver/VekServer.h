#pragma once

#include <cstdint>
#include <memory>

#include "AudioThread.h"
#include "VekCommonSlave.h"
#include "VekCommonSlaveCallbackImpl.h"
#include "VekEffectProbes.h"
#include "VekEqSlave.h"
#include "VekEqSlaveCallbackImpl.h"
#include "VekEqV2Slave.h"
#include "VekEqV2SlaveCallbackImpl.h"
#include "VekFeature.h"
#include "VekFrameHub.h"
#include "VekGainSlave.h"
#include "VekGainSlaveCallbackImpl.h"
#include "VekHfeSlave.h"
#include "VekHfeSlaveCallbackImpl.h"
#include "VekLogCallbackImpl.h"
#include "VekReverbSlave.h"
#include "VekReverbSlaveCallbackImpl.h"
#include "VekServerConfig.h"
#include "VekSpeakerSlave.h"
#include "VekSpeakerSlaveCallbackImpl.h"
#include "VekTransport.h"
#include "VekVbSlave.h"
#include "VekVbSlaveCallbackImpl.h"

namespace vekserver {

// The running link end: opens the line, greets the master, builds the features and
// feeds received bytes to the frame hub on its own thread.
class VekServer : public AudioThread {
public:
    static constexpr uint32_t kReadSize = 1024;

    VekServer(const VekServerConfig& config, vektransport::VekTransport* transport);
    ~VekServer() override;

    void init();
    void stop();
    void deinit();
    // Hands received bytes to the frame hub; nothing is served before init() greeted.
    void serve(const char* data, uint32_t size);
    // Null until init() has greeted the master.
    const vekprotocol::VekFrameHub* frameHub() const { return hub_.get(); }

protected:
    void run() override;

private:
    // One row of the feature table: announce, build, wire and register.
    template <class Slave, class Impl>
    void addFeature(VekFeature<Slave, Impl>& feature, const char* name, bool condition);

    int32_t eqMode_;
    bool enReverb_;
    vektransport::VekTransport* transport_;  // not owned
    char buffer_[kReadSize] = {};
    VekEffectProbes probes_;
    std::unique_ptr<vekprotocol::VekFrameHub> hub_;
    std::unique_ptr<VekLogCallbackImpl> log_;
    VekFeature<vekprotocol::VekCommonSlave, VekCommonSlaveCallbackImpl> common_;
    VekFeature<vekprotocol::VekSpeakerSlave, VekSpeakerSlaveCallbackImpl> speaker_;
    VekFeature<vekprotocol::VekGainSlave, VekGainSlaveCallbackImpl> gain_;
    VekFeature<vekprotocol::VekEqSlave, VekEqSlaveCallbackImpl> eq_;
    VekFeature<vekprotocol::VekEqV2Slave, VekEqV2SlaveCallbackImpl> eqV2_;
    VekFeature<vekprotocol::VekHfeSlave, VekHfeSlaveCallbackImpl> hfe_;
    VekFeature<vekprotocol::VekVbSlave, VekVbSlaveCallbackImpl> vb_;
    VekFeature<vekprotocol::VekReverbSlave, VekReverbSlaveCallbackImpl> reverb_;
};

}  // namespace vekserver
