#include <sys/prctl.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "AudioSemaphore.h"
#include "Signals.h"
#include "StopSemaphore.h"
#include "VekLog.h"
#include "VekOption.h"
#include "VekServer.h"
#include "VekServerConfig.h"
#include "VekText.h"
#include "VekTunerHelp.h"
#include "VekTransportUsb.h"

using vekprotocol::VekOption;

namespace {

// Options in table order; the first row that matches applies. Returns the run flag.
bool parseOptions(int argc, char** argv, vekserver::VekServerConfig& config) {
    bool run = true;
    for (int i = 0; i < argc; ++i) {
        const char* arg = argv[i];
        const char* value = nullptr;
        if (std::strcmp(arg, "--help") == 0) {
            const std::string help = VekTunerHelp::text();
            VekLog::put(help.data(), help.size());
            run = false;
        } else if ((value = VekOption::valueAfter(arg, "--progress=")) != nullptr) {
            config.progressName = value;
        } else if ((value = VekOption::valueAfter(arg, "--device=")) != nullptr) {
            config.device = value;
        } else if ((value = VekOption::valueAfter(arg, "--baudRate=")) != nullptr) {
            config.baudRate = vekprotocol::VekText::readLenient(value);
        } else if ((value = VekOption::valueAfter(arg, "--eqMode=")) != nullptr) {
            config.eqMode = vekprotocol::VekText::readLenient(value);
        } else if (std::strcmp(arg, "--reverb") == 0) {
            config.enReverb = true;
        }
    }
    return run;
}

}  // namespace

int main(int argc, char** argv) {
    if (installSignalHandlers(onSignal) != 0) {
        VekLog::error("Failed to init signal.\n");
        return -1;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    VekLog::info("Starting vek_tuner.\n");

    vekserver::VekServerConfig config;
    const bool run = parseOptions(argc, argv, config);
    VekLog::info("Args: progressName=%s, device=%s, baudRate=%d, eqMode=%d, enReverb=%d.\n",
                 config.progressName.c_str(), config.device.c_str(),
                 static_cast<int>(config.baudRate), static_cast<int>(config.eqMode),
                 config.enReverb ? 1 : 0);
    if (!run) {
        return 0;
    }
    prctl(PR_SET_NAME, config.progressName.c_str(), 0, 0, 0);

    auto transport =
        std::make_unique<vektransport::VekTransportUsb>(config.device, config.baudRate);
    auto server = std::make_unique<vekserver::VekServer>(config, transport.get());
    server->init();
    server->start();

    stopSemaphore.wait();

    server->stop();
    server->join();
    server->deinit();
    // The server before the transport it uses.
    server.reset();
    transport.reset();
    VekLog::info("Ending vek_tuner.\n");
    return 0;
}
