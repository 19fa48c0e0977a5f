#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "VekEventHub.h"
#include "VekLineWorker.h"
#include "VekMessageCatalog.h"

using namespace vekserve;
using namespace vekmaster;

namespace {

using Json = VekEventHub::Json;
using Clock = std::chrono::steady_clock;

// A device on the far end of a pseudo-terminal: answers Version, Feature and Gain
// GetMaster, numbering its answers as a daemon does, until it is told to fall silent.
class FakeDevice {
public:
    FakeDevice() {
        char name[128] = {};
        if (::openpty(&master_, &slave_, name, nullptr, nullptr) == 0) {
            path_ = name;
            termios raw{};
            ::tcgetattr(master_, &raw);
            ::cfmakeraw(&raw);
            ::tcsetattr(master_, TCSANOW, &raw);
        }
        thread_ = std::thread([this] { serve(); });
    }
    ~FakeDevice() {
        stop_ = true;
        thread_.join();
        ::close(master_);
        ::close(slave_);
    }

    const std::string& path() const { return path_; }
    void setSilent(bool silent) { silent_ = silent; }
    void greet() { send("HELLO!\n"); }
    int requests() const { return requests_; }

private:
    void send(const std::string& bytes) {
        std::lock_guard<std::mutex> lock(write_);
        if (::write(master_, bytes.data(), bytes.size()) < 0) {
            ADD_FAILURE() << "cannot write to the pseudo-terminal";
        }
    }
    void serve() {
        std::string pending;
        while (!stop_) {
            pollfd ready{master_, POLLIN, 0};
            char buffer[512];
            const ssize_t n = ::poll(&ready, 1, 20) == 1 ? ::read(master_, buffer, sizeof(buffer)) : 0;
            if (n <= 0) {
                continue;
            }
            pending.append(buffer, static_cast<size_t>(n));
            for (size_t end; (end = pending.find('\n')) != std::string::npos;) {
                answer(pending.substr(0, end));
                pending.erase(0, end + 1);
            }
        }
    }
    // "AS:7:0:Gain:GetMasterRequest:0:OK:<>:" -> "AS:N:0:Gain:GetMasterResponse:0:OK:<-6>:"
    void answer(const std::string& line) {
        std::vector<std::string> f;
        size_t from = line.find("AS:");
        for (size_t at; from != std::string::npos && (at = line.find(':', from)) != std::string::npos;
             from = at + 1) {
            f.push_back(line.substr(from, at - from));
        }
        if (f.size() < 5 || silent_) {
            return;
        }
        ++requests_;
        const std::string message = f[4].substr(0, f[4].size() - 7);  // less "Request"
        const std::string payload = message == "Version"   ? "1.2.3"
                                    : message == "Feature" ? "Common:Gain"
                                                           : "-6";
        send("AS:" + std::to_string(++self_) + ":0:" + f[3] + ':' + message +
             "Response:0:OK:<" + payload + ">:\n");
    }

    int master_ = -1;
    int slave_ = -1;
    std::string path_;
    std::thread thread_;
    std::mutex write_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> silent_{false};
    std::atomic<int> requests_{0};
    int self_ = 0;
};

// The events a hub publishes, to wait for.
class Events {
public:
    explicit Events(VekEventHub& hub) {
        hub.subscribe([this](const VekEventHub::Text& text) {
            std::lock_guard<std::mutex> lock(mutex_);
            list_.push_back(Json::parse(*text));
            changed_.notify_all();
        });
    }
    // The first event from index `from` on with that type and (for states) state.
    Json await(const std::string& type, const std::string& state = "", size_t from = 0) {
        std::unique_lock<std::mutex> lock(mutex_);
        Json found;
        changed_.wait_for(lock, std::chrono::seconds(10), [&] {
            for (size_t i = from; i < list_.size(); ++i) {
                if (list_[i]["type"] == type && (state.empty() || list_[i]["state"] == state)) {
                    found = list_[i];
                    return true;
                }
            }
            return false;
        });
        return found;
    }
    size_t size() {
        std::lock_guard<std::mutex> lock(mutex_);
        return list_.size();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Json> list_;
};

// What became of a job: its reply's outcome and problem, or why it was refused.
struct Outcome {
    std::mutex mutex;
    std::condition_variable done;
    bool finished = false;
    std::string result;

    void set(std::string text) {
        std::lock_guard<std::mutex> lock(mutex);
        result = std::move(text);
        finished = true;
        done.notify_all();
    }
    std::string wait() {
        std::unique_lock<std::mutex> lock(mutex);
        done.wait_for(lock, std::chrono::seconds(10), [this] { return finished; });
        return finished ? result : "(nothing)";
    }
};

VekLineJob getMaster(Outcome& outcome) {
    VekLineJob job;
    job.client = "127.0.0.1:5000";
    job.requestId = "r1";
    const VekMessageCatalog& catalog = VekMessageCatalog::shared();
    EXPECT_FALSE(catalog.prepare({"Gain", "GetMaster"}, nullptr, job.request));
    job.answer = [&outcome](const VekMasterReply& reply) {
        outcome.set(reply.answered() ? reply.fields.at(0).parts.at(0).text : reply.problem);
    };
    job.refuse = [&outcome](const std::string& why) { outcome.set("refused: " + why); };
    return job;
}

struct Rig {
    Rig() {
        config.timeoutMs = 300;
        worker = std::make_unique<VekLineWorker>(0, device.path(), config, hub,
                                                 [this](const std::string& line) {
                                                     std::lock_guard<std::mutex> lock(mutex);
                                                     log.push_back(line);
                                                 });
    }

    FakeDevice device;
    VekServeConfig config;
    VekEventHub hub;
    Events events{hub};
    std::mutex mutex;
    std::vector<std::string> log;
    std::unique_ptr<VekLineWorker> worker;
};

// A line comes up once its device answers, serves a client's message with the events
// that name the client, and says who asked.
TEST(LineWorkerTest, AnIdentifiedLineServesAMessageAndTellsEveryoneWhoAsked) {
    Rig rig;
    rig.worker->start([] {});
    const Json up = rig.events.await("state", "connected");
    EXPECT_EQ(up["device"], 0);
    EXPECT_EQ(up["path"], rig.device.path());
    EXPECT_EQ(up["version"], "1.2.3");
    EXPECT_EQ(up["features"], Json::parse(R"(["Common","Gain"])"));
    EXPECT_EQ(rig.worker->describe()["state"], "connected");

    const size_t from = rig.events.size();  // after the server's own identifying requests
    Outcome outcome;
    ASSERT_EQ(rig.worker->submit(getMaster(outcome)), "");
    EXPECT_EQ(outcome.wait(), "-6");
    const Json request = rig.events.await("request", "", from);
    EXPECT_EQ(request["client"], "127.0.0.1:5000");
    EXPECT_EQ(request["requestId"], "r1");
    EXPECT_EQ(request["request"], Json::parse(R"({"feature":"Gain","message":"GetMaster","args":[]})"));
    EXPECT_EQ(rig.events.await("response", "", from)["reply"]["fields"]["masterGain"], -6);
    rig.worker->stop();
    rig.worker->join();
    std::lock_guard<std::mutex> lock(rig.mutex);
    ASSERT_FALSE(rig.log.empty());
    EXPECT_EQ(rig.log[0], rig.device.path() + ": connected (1.2.3; Common Gain)");
}

// A device that answers neither a request nor the version probe after it is lost: the
// line refuses new work until the device greets again, and is then served as before.
TEST(LineWorkerTest, ASilentDeviceLosesTheLineAndItsGreetingBringsItBack) {
    Rig rig;
    rig.worker->start([] {});
    ASSERT_FALSE(rig.events.await("state", "connected").is_null());
    rig.device.setSilent(true);
    Outcome lost;
    ASSERT_EQ(rig.worker->submit(getMaster(lost)), "");
    EXPECT_EQ(lost.wait(), "no answer to Gain GetMaster within 300 ms");
    const Json down = rig.events.await("state", "disconnected");
    EXPECT_EQ(down["reason"], "no answer to Gain GetMaster within 300 ms, nor to a version probe");
    Outcome turnedAway;
    EXPECT_EQ(rig.worker->submit(getMaster(turnedAway)), rig.device.path() + " is disconnected");

    const size_t before = rig.events.size();
    rig.device.setSilent(false);
    rig.device.greet();
    ASSERT_FALSE(rig.events.await("state", "connected", before).is_null());
    Outcome back;
    ASSERT_EQ(rig.worker->submit(getMaster(back)), "");
    EXPECT_EQ(back.wait(), "-6");
}

// Stopping finishes the job under way and refuses those still waiting; nothing is
// taken afterwards.
TEST(LineWorkerTest, StoppingRefusesTheWaitingJobsAndTakesNoMore) {
    Rig rig;
    rig.config.queueLimit = 2;
    rig.worker->start([] {});
    ASSERT_FALSE(rig.events.await("state", "connected").is_null());
    std::mutex gate;
    std::unique_lock<std::mutex> held(gate);
    std::atomic<bool> started{false};
    Outcome running;
    VekLineJob blocker;
    blocker.run = [&](VekMasterSession&, VekSessionAccess&) {
        started = true;
        std::lock_guard<std::mutex> wait(gate);  // until the test lets it go
        running.set("ran");
    };
    blocker.refuse = [&](const std::string& why) { running.set("refused: " + why); };
    ASSERT_EQ(rig.worker->submit(std::move(blocker)), "");
    const auto deadline = Clock::now() + std::chrono::seconds(5);
    while (!started && Clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ASSERT_TRUE(started);
    Outcome first;
    Outcome second;
    Outcome third;
    ASSERT_EQ(rig.worker->submit(getMaster(first)), "");
    ASSERT_EQ(rig.worker->submit(getMaster(second)), "");
    EXPECT_EQ(rig.worker->submit(getMaster(third)),
              rig.device.path() + " has 2 requests waiting already; try again later");
    rig.worker->stop();
    held.unlock();
    rig.worker->join();
    EXPECT_EQ(running.wait(), "ran");
    EXPECT_EQ(first.wait(), "refused: the server is stopping");
    EXPECT_EQ(second.wait(), "refused: the server is stopping");
    EXPECT_EQ(rig.worker->submit(getMaster(third)), "the server is stopping");
}

}  // namespace
