#include <sys/prctl.h>

#include <cstdio>
#include <cstring>
#include <utility>

#include "AudioSemaphore.h"
#include "Signals.h"
#include "StopSemaphore.h"
#include "VekServer.h"
#include "VekServerConfig.h"
#include "VekText.h"
#include "VekTransportUsb.h"

namespace {

const char* const kHelp[] = {
    "[AST][INF]\n",
    "[AST][INF]NAME\n",
    "[AST][INF]    vek_tuner\n",
    "[AST][INF]\n",
    "[AST][INF]SYNOPSIS\n",
    "[AST][INF]    vek_tuner [OPTION]...\n",
    "[AST][INF]\n",
    "[AST][INF]DESCRIPTION\n",
    "[AST][INF]    Run the slave of VEK(Dravino Audio Tuner).\n",
    "[AST][INF]    Mandatory arguments to long options ONLY.\n",
    "[AST][INF]\n",
    "[AST][INF]    --progress=progressName [default=vek_server]\n",
    "[AST][INF]      Name of current progress.\n",
    "[AST][INF]    --device=deviceName [default=/dev/ttyUSB0]\n",
    "[AST][INF]      Path of UART device.\n",
    "[AST][INF]    --baudRate=baudRate [default=115200]\n",
    "[AST][INF]      Speed of UART device.\n",
    "[AST][INF]    --eqMode=mode [default=0]\n",
    "[AST][INF]      0: Flexible EQ bands configured.\n",
    "[AST][INF]      1: Fixed 20 EQ bands.\n",
    "[AST][INF]    --reverb\n",
    "[AST][INF]      Enable reverb app effect or not.\n",
    "[AST][INF]    --help\n",
    "[AST][INF]      Help specification.\n",
    "[AST][INF]\n",
    "[AST][INF]  EXIT STATUS\n",
    "[AST][INF]    0  - Success ALWAYS.\n",
    "[AST][INF]\n",
};

// The value after a prefix, when arg starts with it.
const char* after(const char* arg, const char* prefix) {
    const size_t n = std::strlen(prefix);
    return std::strncmp(arg, prefix, n) == 0 ? arg + n : nullptr;
}

// Options in table order; the first row that matches applies. Returns the run flag.
bool parseOptions(int argc, char** argv, vekserver::VekServerConfig& config) {
    bool run = true;
    for (int i = 0; i < argc; ++i) {
        const char* arg = argv[i];
        const char* value = nullptr;
        if (std::strcmp(arg, "--help") == 0) {
            for (const char* line : kHelp) {
                std::fputs(line, stdout);
            }
            run = false;
        } else if ((value = after(arg, "--progress=")) != nullptr) {
            config.progressName = value;
        } else if ((value = after(arg, "--device=")) != nullptr) {
            config.device = value;
        } else if ((value = after(arg, "--baudRate=")) != nullptr) {
            config.baudRate = vekprotocol::VekText::readLenient(value);
        } else if ((value = after(arg, "--eqMode=")) != nullptr) {
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
        std::printf("[AST][ERR]Failed to init signal.\n");
        return -1;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    std::printf("[AST][INF]Starting vek_tuner.\n");

    vekserver::VekServerConfig config;
    const bool run = parseOptions(argc, argv, config);
    std::printf(
        "[AST][INF]Args: progressName=%s, device=%s, baudRate=%d, eqMode=%d, enReverb=%d.\n",
        config.progressName.c_str(), config.device.c_str(), static_cast<int>(config.baudRate),
        static_cast<int>(config.eqMode), config.enReverb ? 1 : 0);
    if (!run) {
        return 0;
    }
    prctl(PR_SET_NAME, config.progressName.c_str(), 0, 0, 0);

    auto* transport = new vektransport::VekTransportUsb(config.device, config.baudRate);
    auto* server = new vekserver::VekServer(std::move(config), transport);
    server->init();
    server->start();

    stopSemaphore.wait();

    server->stop();
    server->join();
    server->deinit();
    delete server;
    delete transport;
    std::printf("[AST][INF]Ending vek_tuner.\n");
    return 0;
}
