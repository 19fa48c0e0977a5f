#include "VekServer.h"

#include <cstdio>
#include <utility>

#include "VekEffectProbe.h"

namespace vekserver {

using namespace vekprotocol;

VekServer::VekServer(VekServerConfig config, vektransport::VekTransport* transport)
    : AudioThread("VekServer", -1),
      baudRate(config.baudRate),
      eqMode(config.eqMode),
      enReverb(config.enReverb),
      progressName(std::move(config.progressName)),
      device(std::move(config.device)),
      transport(transport) {}

VekServer::~VekServer() = default;

template <class Slave, class Impl>
void VekServer::addFeature(VekFeature<Slave, Impl>& feature, const char* name, bool condition) {
    if (!condition) {
        return;
    }
    std::printf("[AST][INF]Support feature(%s).\n", name);
    feature.endpoint = std::make_unique<Slave>();
    feature.callback = std::make_unique<Impl>(feature.endpoint.get(), hub.get(), transport);
    feature.endpoint->setCallback(feature.callback.get());
    hub->registerEndpoint(name, feature.endpoint.get());
}

void VekServer::init() {
    transport->open();
    static const char kGreeting[] = "HELLO!\n";
    if (transport->write(kGreeting, sizeof(kGreeting) - 1) <= 0) {
        return;
    }
    log = std::make_unique<VekLogCallbackImpl>(4);
    common.endpoint = std::make_unique<VekCommonSlave>();
    hub = std::make_unique<VekFrameHub>(common.endpoint.get(), log.get());
    common.callback =
        std::make_unique<VekCommonSlaveCallbackImpl>(common.endpoint.get(), hub.get(), transport);
    common.endpoint->setCallback(common.callback.get());

    // The feature table. Conditions are evaluated row by row, so each probe runs
    // once, in the order equaliser, Hfe, Vb, whatever the equaliser mode.
    addFeature(speaker, "Speaker", true);
    addFeature(gain, "Gain", true);
    addFeature(eqV2, "EqV2", isEqSupported() && eqMode == 0);
    addFeature(eq, "Eq", isEqSupported() && eqMode != 0);
    addFeature(hfe, "Hfe", isHfeSupported());
    addFeature(vb, "Vb", isVbSupported());
    addFeature(reverb, "Reverb", enReverb);
}

void VekServer::run() {
    while (isRunning()) {
        if (transport->isDisconnected()) {
            std::printf("[AST][ERR]Device is disconnected.\n");
            return;
        }
        const int32_t n = transport->read(buffer, kReadSize);
        if (n == 0) {
            AudioSleepMs(5);
            continue;
        }
        if (n < 0) {
            return;
        }
        serve(buffer, static_cast<uint32_t>(n));
    }
}

void VekServer::serve(const char* data, uint32_t size) {
    // Without a hub (the greeting failed) nothing may be served.
    if (hub != nullptr) {
        hub->feed(data, size);
    }
}

void VekServer::stop() {
    prepareStop();
    transport->close();
    AudioThread::stop();
}

void VekServer::deinit() {
    transport->close();
    hub.reset();
    log.reset();
    common.reset();
    speaker.reset();
    gain.reset();
    eq.reset();
    eqV2.reset();
    hfe.reset();
    vb.reset();
    reverb.reset();
}

}  // namespace vekserver
