#include "VekServer.h"

#include "VekLog.h"

namespace vekserver {

using namespace vekprotocol;

VekServer::VekServer(const VekServerConfig& config, vektransport::VekTransport* transport)
    : AudioThread("VekServer", -1),
      eqMode_(config.eqMode),
      enReverb_(config.enReverb),
      transport_(transport) {}

VekServer::~VekServer() = default;

template <class Slave, class Impl>
void VekServer::addFeature(VekFeature<Slave, Impl>& feature, const char* name, bool condition) {
    if (!condition) {
        return;
    }
    VekLog::info("Support feature(%s).\n", name);
    feature.endpoint = std::make_unique<Slave>();
    feature.callback = std::make_unique<Impl>(feature.endpoint.get(), hub_.get(), transport_);
    feature.endpoint->setCallback(feature.callback.get());
    hub_->registerEndpoint(name, feature.endpoint.get());
}

void VekServer::init() {
    transport_->open();
    static const char kGreeting[] = "HELLO!\n";
    if (transport_->write(kGreeting, sizeof(kGreeting) - 1) <= 0) {
        return;
    }
    log_ = std::make_unique<VekLogCallbackImpl>(4);
    common_.endpoint = std::make_unique<VekCommonSlave>();
    hub_ = std::make_unique<VekFrameHub>(common_.endpoint.get(), log_.get());
    common_.callback = std::make_unique<VekCommonSlaveCallbackImpl>(common_.endpoint.get(),
                                                                    hub_.get(), transport_);
    common_.endpoint->setCallback(common_.callback.get());

    // The feature table. Conditions are evaluated row by row, so each probe runs
    // once, in the order equaliser, Hfe, Vb, whatever the equaliser mode.
    addFeature(speaker_, "Speaker", true);
    addFeature(gain_, "Gain", true);
    addFeature(eqV2_, "EqV2", probes_.isEqSupported() && eqMode_ == 0);
    addFeature(eq_, "Eq", probes_.isEqSupported() && eqMode_ != 0);
    addFeature(hfe_, "Hfe", probes_.isHfeSupported());
    addFeature(vb_, "Vb", probes_.isVbSupported());
    addFeature(reverb_, "Reverb", enReverb_);
}

void VekServer::run() {
    while (isRunning()) {
        if (transport_->isDisconnected()) {
            VekLog::error("Device is disconnected.\n");
            return;
        }
        const int32_t n = transport_->read(buffer_, kReadSize);
        if (n == 0) {
            AudioSleepMs(5);
            continue;
        }
        if (n < 0) {
            return;
        }
        serve(buffer_, static_cast<uint32_t>(n));
    }
}

void VekServer::serve(const char* data, uint32_t size) {
    // Without a hub (the greeting failed) nothing may be served.
    if (hub_ != nullptr) {
        hub_->feed(data, size);
    }
}

void VekServer::stop() {
    prepareStop();
    transport_->close();
    AudioThread::stop();
}

void VekServer::deinit() {
    transport_->close();
    hub_.reset();
    log_.reset();
    common_.reset();
    speaker_.reset();
    gain_.reset();
    eq_.reset();
    eqV2_.reset();
    hfe_.reset();
    vb_.reset();
    reverb_.reset();
}

}  // namespace vekserver
