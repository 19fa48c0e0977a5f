#include "VekServe.h"

#include "VekDeviceProfile.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>
#include <mutex>
#include <vector>

#include "VekApiRoutes.h"
#include "VekEqRoutes.h"
#include "VekSettingRoutes.h"
#include "VekDeviceProfile.h"
#include "VekExitStatus.h"
#include "VekHistoryRoutes.h"
#include "VekHttpServer.h"
#include "VekJournal.h"
#include "VekLineWorker.h"
#include "VekVirtualDevice.h"

namespace vekserve {

namespace net = boost::asio;

namespace {

// How long connections may take to end after the lines have stopped.
constexpr auto kCloseLimit = std::chrono::seconds(5);

void say(const std::string& line) {
    static std::mutex mutex;
    std::lock_guard<std::mutex> lock(mutex);
    std::fputs((line + '\n').c_str(), stdout);
    std::fflush(stdout);
}

}  // namespace

int VekServe::run() {
    // A client that goes away while we write to it must not end the server.
    std::signal(SIGPIPE, SIG_IGN);
    // The io_context outlives the lines: a job that ends posts its answer to it.
    net::io_context io(1);
    vekmaster::VekJournal journal;
    const std::string stateDir =
        config_.stateDir.empty() ? vekmaster::VekJournal::defaultDirectory() : config_.stateDir;
    std::string problem = config_.journal ? journal.open(stateDir + "/journal.sqlite") : "";
    if (!problem.empty()) {
        std::fprintf(stderr, "vek_master: %s\n", problem.c_str());
        return vekmaster::VekExitStatus::kIo;
    }
    // Declared before the lines, so that a virtual device's daemon outlives its line.
    std::vector<std::unique_ptr<vekmaster::VekVirtualDevice>> virtuals;
    const std::string daemon = vekmaster::VekVirtualDevice::daemonPath(config_.daemon);
    for (const std::string& document : config_.virtuals) {
        auto device = std::make_unique<vekmaster::VekVirtualDevice>();
        problem = device->start(daemon, document, "", config_.timeoutMs);
        if (!problem.empty()) {
            std::fprintf(stderr, "vek_master: %s\n", problem.c_str());
            return vekmaster::VekExitStatus::kDaemon;
        }
        say("vek_master serve: virtual device " + document + " (daemon log " +
            device->daemonLog() + ")");
        virtuals.push_back(std::move(device));
    }
    VekEventHub events;
    VekApiRoutes::Lines lines;
    for (size_t i = 0; i < config_.devices.size(); ++i) {
        lines.push_back(std::make_unique<VekLineWorker>(static_cast<int>(i), config_.devices[i],
                                                        config_, events, say));
    }
    for (const auto& device : virtuals) {
        lines.push_back(std::make_unique<VekLineWorker>(static_cast<int>(lines.size()),
                                                        device->document(), config_, events, say,
                                                        device->line()));
    }
    events.setOpening([&lines] {
        std::vector<VekEventHub::Json> states;
        for (const auto& line : lines) {
            states.push_back(line->stateEvent());
        }
        return states;
    });
    VekRouteTable routes;
    const auto profile = vekmaster::VekDeviceProfile::inUse();
    const VekChangeRecorder recorder(config_.journal ? &journal : nullptr);
    VekApiRoutes api(lines, routes, profile, recorder);
    VekHistoryRoutes history(lines, routes, recorder);
    VekEqRoutes eq(api, routes);
    VekSettingRoutes settingRoutes(api, routes, profile);
    VekHttpServer server(io, config_, routes, assets_, events);
    uint16_t port = 0;
    problem = server.listen(port);
    if (!problem.empty()) {
        std::fprintf(stderr, "vek_master: %s\n", problem.c_str());
        return vekmaster::VekExitStatus::kIo;
    }
    const bool v6 = config_.host.find(':') != std::string::npos;
    say("vek_master serve: listening on http://" + (v6 ? '[' + config_.host + ']' : config_.host) +
        ':' + std::to_string(port));
    say("vek_master serve: device profile " + profile->name() + " (" + profile->source() + ")");

    net::steady_timer limit(io);
    size_t running = lines.size();
    const auto lineStopped = [&] {
        if (--running > 0) {
            return;
        }
        limit.expires_after(kCloseLimit);
        limit.async_wait([&io](const boost::system::error_code& e) {
            if (!e) {
                io.stop();
            }
        });
        server.closeAll([&limit] { limit.cancel(); });
    };
    for (const auto& line : lines) {
        line->start([&io, &lineStopped] { net::post(io, lineStopped); });
    }
    net::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&](const boost::system::error_code& ec, int signo) {
        if (ec) {
            return;
        }
        say("vek_master serve: stopping (signal " + std::to_string(signo) + ")");
        server.stopAccepting();
        for (const auto& line : lines) {
            line->stop();
        }
        limit.expires_after(std::chrono::seconds(30));
        limit.async_wait([&io](const boost::system::error_code& e) {
            if (!e) {
                io.stop();
            }
        });
    });
    io.run();
    for (const auto& line : lines) {
        line->join();
    }
    say("vek_master serve: stopped");
    return vekmaster::VekExitStatus::kOk;
}

}  // namespace vekserve
