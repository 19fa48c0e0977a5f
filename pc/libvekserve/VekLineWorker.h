#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "VekEventHub.h"
#include "VekLineJob.h"
#include "VekDeviceConnection.h"
#include "VekMasterSession.h"
#include "VekSerialLine.h"
#include "VekServeConfig.h"
#include "VekSettingsTable.h"
#include "VekTraceRing.h"

namespace vekserve {

// Owns one serial line: its session, a bounded queue of jobs from every client, and a
// thread that runs them one at a time, so one request is on the line at a time. Every
// request and answer, and every change of the line's state, is published as an event.
//
// A line is lost when it fails (a read error or hang-up), or when a request goes
// unanswered and a version probe right after it does too (the daemon has stopped; a
// daemon that merely ignores a request it does not serve still answers the probe).
// Then its waiting jobs are refused and, every second, the node is reopened if it has
// to be and the device asked for its version; the daemon's greeting ("HELLO!\n")
// prompts the question at once. When it answers, the line is connected again.
class VekLineWorker {
public:
    using Json = VekEventHub::Json;
    using Log = std::function<void(const std::string& line)>;

    // virtualLine: the master end of a virtual device's pseudo-terminal (path is then its
    // document), used as it is and never closed here; -1 for a line opened by path.
    VekLineWorker(int index, std::string path, const VekServeConfig& config, VekEventHub& events,
                  Log log, int virtualLine = -1);
    // Stops and joins the thread.
    ~VekLineWorker();
    VekLineWorker(const VekLineWorker&) = delete;
    VekLineWorker& operator=(const VekLineWorker&) = delete;

    // Opens the line and serves; stopped is called from the line's thread as it ends.
    void start(std::function<void()> stopped);
    // Finishes the job under way, refuses the waiting ones and ends; returns at once.
    void stop();
    void join();

    // Queues a job; "" or why it was not taken (then it is not run and not refused).
    std::string submit(VekLineJob job);
    // {"index", "path", "virtual", "state", "version", "features"}: virtual (true) only
    // for a virtual device, version and features once known.
    Json describe() const;
    // describe() as a state event.
    Json stateEvent() const;
    const std::string& path() const { return path_; }
    bool isVirtual() const { return virtualLine_ >= 0; }
    // From a job on the line's thread only: the device's whole settings as a job has just
    // read or set them, and those settings as long as no set message has gone on the line
    // since and the daemon has not started again (null otherwise).
    void remember(Json settings);
    const Json* known() const;
    // The line's latest traffic, every frame each way, for a download.
    const vekmaster::VekTraceRing& trace() const { return trace_; }

private:
    enum class State { Connecting, Connected, Disconnected };

    void run();
    void serveJobs();
    // Single messages of several clients, on the session's window; each answer to its own.
    void serveMessages(std::vector<VekLineJob>& jobs);
    void recover();
    // After a request went unanswered: false, with the line lost, when a version probe
    // goes unanswered too.
    bool probe();
    // Asks for the version and features; true when the device answered.
    bool identify();
    // The line has failed or the device has gone: refuse the waiting jobs, tell everyone.
    void lose(const std::string& reason);
    bool openLine(std::string& problem);
    void closeLine();
    // Waits up to a second, for a stop or (on an open line) the daemon's greeting.
    void pause();
    // Reads what came unasked; false when the line failed. A greeting is noted.
    bool readIdle(int timeoutMs);
    void setState(State state, const std::string& reason);
    bool stopping() const;
    State state() const;
    void watch(const vekmaster::VekMasterMessage& message, const vekprotocol::VekFields& args,
               const vekmaster::VekMasterReply* reply);
    Json event(const char* type) const;

    const int index_;
    const std::string path_;
    const int virtualLine_;
    const VekServeConfig& config_;
    VekEventHub& events_;
    Log log_;
    std::function<void()> stopped_;
    vekmaster::VekTraceRing trace_;
    std::thread thread_;

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<VekLineJob> queue_;
    bool stopping_ = false;
    State state_ = State::Connecting;
    std::string version_;
    std::vector<std::string> features_;

    // The line thread's own.
    vekmaster::VekDeviceConnection connection_;
    std::string client_ = "serve";  // whose job is on the line
    std::string requestId_;         // and the request it answers ("" for the server's own)
    // Whose messages a window holds, in order, and how many of their events went out.
    struct Owner {
        std::string client;
        std::string requestId;
    };
    std::vector<Owner> windowOwners_;
    size_t requestEvents_ = 0;
    size_t replyEvents_ = 0;
    uint64_t setsSeen_ = 0;  // set messages sent and reconnections, to date the known settings
    Json known_;
    uint64_t knownAt_ = 0;
    bool quiet_ = false;            // no traffic events (the probes of a lost line)
    bool lineFailed_ = false;
    bool unanswered_ = false;
    std::string failure_;
    std::string idle_;  // the last bytes read between jobs, for the greeting
    bool greeted_ = false;
    bool latencyTold_ = false;
};

}  // namespace vekserve
