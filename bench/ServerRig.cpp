#include "ServerRig.h"

namespace vekbench {

namespace {

vekserver::VekServerConfig rigConfig(int32_t eqMode) {
    vekserver::VekServerConfig config;
    config.eqMode = eqMode;
    config.enReverb = true;
    return config;
}

}  // namespace

ServerRig::ServerRig(int32_t eqMode) : server_(rigConfig(eqMode), &transport_) {
    server_.init();
}

ServerRig::~ServerRig() {
    server_.deinit();
}

void ServerRig::serve(const std::string& frame) {
    transport_.writes.clear();
    server_.serve(frame.data(), static_cast<uint32_t>(frame.size()));
}

}  // namespace vekbench
