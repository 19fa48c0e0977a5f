#include "VekLineWorker.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>

#include "VekDeviceReader.h"
#include "VekNames.h"
#include "VekReplyJson.h"

namespace vekserve {

using namespace vekmaster;

namespace {

using Outcome = VekMasterReply::Outcome;

const char* const kGreeting = "HELLO!\n";
// Between jobs the line is read this often for the greeting and for a hang-up.
constexpr auto kIdleSlice = std::chrono::milliseconds(100);
constexpr int kIdleSlices = 10;  // a second: how often a lost line is tried again

}  // namespace

VekLineWorker::VekLineWorker(int index, std::string path, const VekServeConfig& config,
                             VekEventHub& events, Log log, int virtualLine)
    : index_(index),
      path_(std::move(path)),
      virtualLine_(virtualLine),
      config_(config),
      events_(events),
      log_(std::move(log)) {}

VekLineWorker::~VekLineWorker() {
    stop();
    join();
}

void VekLineWorker::start(std::function<void()> stopped) {
    stopped_ = std::move(stopped);
    thread_ = std::thread([this] { run(); });
}

void VekLineWorker::stop() {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
    wake_.notify_all();
}

void VekLineWorker::join() {
    if (thread_.joinable()) {
        thread_.join();
    }
}

VekLineWorker::State VekLineWorker::state() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

bool VekLineWorker::stopping() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return stopping_;
}

std::string VekLineWorker::submit(VekLineJob job) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (stopping_) {
        return "the server is stopping";
    }
    if (state_ == State::Disconnected) {
        return path_ + " is disconnected";
    }
    if (queue_.size() >= config_.queueLimit) {
        return path_ + " has " + std::to_string(queue_.size()) +
               " requests waiting already; try again later";
    }
    queue_.push_back(std::move(job));
    wake_.notify_one();
    return "";
}

VekLineWorker::Json VekLineWorker::describe() const {
    std::lock_guard<std::mutex> lock(mutex_);
    Json out = Json::object();
    out["index"] = index_;
    out["path"] = path_;
    if (virtualLine_ >= 0) {
        out["virtual"] = true;  // path is then its document
    }
    out["state"] = state_ == State::Connected      ? "connected"
                   : state_ == State::Disconnected ? "disconnected"
                                                   : "connecting";
    if (!version_.empty()) {
        out["version"] = version_;
        out["features"] = features_;
    }
    return out;
}

VekLineWorker::Json VekLineWorker::stateEvent() const {
    Json out = Json::object();
    out["type"] = "state";
    out["device"] = index_;
    out.update(describe());
    out.erase("index");
    return out;
}

VekLineWorker::Json VekLineWorker::event(const char* type) const {
    Json out = Json::object();
    out["type"] = type;
    out["device"] = index_;
    out["path"] = path_;
    out["client"] = client_;
    if (!requestId_.empty()) {
        out["requestId"] = requestId_;
    }
    return out;
}

void VekLineWorker::run() {
    std::string problem;
    if (!openLine(problem)) {
        lose(problem);
    } else if (identify()) {
        setState(State::Connected, "");
    } else {
        lose(failure_);
    }
    while (!stopping()) {
        if (state() == State::Connected) {
            serveJobs();
        } else {
            recover();
        }
    }
    std::deque<VekLineJob> left;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        left.swap(queue_);
    }
    for (VekLineJob& job : left) {
        job.refuse("the server is stopping");
    }
    closeLine();
    if (stopped_) {
        stopped_();
    }
}

void VekLineWorker::serveJobs() {
    for (;;) {
        VekLineJob job;
        std::vector<VekLineJob> messages;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            wake_.wait_for(lock, kIdleSlice, [this] { return stopping_ || !queue_.empty(); });
            if (stopping_) {
                return;
            }
            // Single messages waiting in a row go on the line together.
            while (!queue_.empty() && queue_.front().request.valid() &&
                   messages.size() < static_cast<size_t>(connection_.session().window())) {
                messages.push_back(std::move(queue_.front()));
                queue_.pop_front();
            }
            if (messages.empty() && !queue_.empty()) {
                job = std::move(queue_.front());
                queue_.pop_front();
            }
        }
        if (!messages.empty()) {
            serveMessages(messages);
            if (lineFailed_) {
                lose(failure_);
                return;
            }
            if (unanswered_ && !probe()) {
                return;
            }
            continue;
        }
        if (!job.run) {
            if (!readIdle(0)) {
                lose(failure_);
                return;
            }
            if (greeted_) {
                // The daemon started again behind our back: what it serves may differ.
                if (!identify()) {
                    lose(failure_);
                    return;
                }
                setState(State::Connected, "");
            }
            continue;
        }
        client_ = job.client;
        requestId_ = job.requestId;
        lineFailed_ = false;
        unanswered_ = false;
        try {
            job.run(connection_.session(), connection_.access());
        } catch (const std::exception& e) {
            // A fault of ours must cost one answer, not the server; a client that was
            // answered already keeps its answer.
            job.refuse(std::string("the server failed: ") + e.what());
        }
        client_ = "serve";
        requestId_.clear();
        if (lineFailed_) {
            lose(failure_);
            return;
        }
        if (unanswered_ && !probe()) {
            return;
        }
    }
}

bool VekLineWorker::probe() {
    const std::string unanswered = failure_;
    if (!connection_.session().request("Common", "Version", {"vek_master"}).answered()) {
        lose(unanswered + ", nor to a version probe");
        return false;
    }
    return true;
}

void VekLineWorker::serveMessages(std::vector<VekLineJob>& jobs) {
    lineFailed_ = false;
    unanswered_ = false;
    vekmaster::VekMasterExchange::Batch batch;
    windowOwners_.clear();
    for (size_t i = 0; i < jobs.size(); ++i) {
        batch.emplace_back(jobs[i].request);
        windowOwners_.push_back({jobs[i].client, jobs[i].requestId});
    }
    requestEvents_ = replyEvents_ = 0;
    connection_.session().exchange(batch);
    windowOwners_.clear();
    client_ = "serve";
    requestId_.clear();
    for (size_t i = 0; i < jobs.size(); ++i) {
        try {
            jobs[i].answer(batch[i].reply);
        } catch (const std::exception& e) {
            jobs[i].refuse(std::string("the server failed: ") + e.what());
        }
    }
}

void VekLineWorker::recover() {
    while (!stopping()) {
        std::string problem;
        if (!connection_.isOpen() && !openLine(problem)) {
            pause();
            continue;
        }
        quiet_ = true;
        const bool answered = identify();
        quiet_ = false;
        if (answered) {
            setState(State::Connected, "");
            return;
        }
        if (lineFailed_) {
            closeLine();
        }
        pause();
    }
}

void VekLineWorker::pause() {
    for (int i = 0; i < kIdleSlices && !greeted_; ++i) {
        if (connection_.isOpen()) {
            if (stopping() || !readIdle(static_cast<int>(kIdleSlice.count()))) {
                closeLine();
                return;
            }
            continue;
        }
        std::unique_lock<std::mutex> lock(mutex_);
        if (wake_.wait_for(lock, kIdleSlice, [this] { return stopping_; })) {
            return;
        }
    }
    greeted_ = false;
}

bool VekLineWorker::identify() {
    lineFailed_ = false;
    unanswered_ = false;
    VekDeviceReader reader(connection_.session(), VekSettingsTable::shared());
    std::string version;
    std::vector<std::string> features;
    if (!reader.identify(version, features)) {
        failure_ = reader.stopped().problem;
        lineFailed_ = reader.stopped().outcome == Outcome::LineFailed;
        return false;
    }
    greeted_ = false;
    std::lock_guard<std::mutex> lock(mutex_);
    version_ = version;
    features_ = features;
    return true;
}

bool VekLineWorker::openLine(std::string& problem) {
    vekmaster::VekDeviceConnection::Options options;
    options.baudRate = config_.baudRate;
    options.timeoutMs = config_.timeoutMs;
    options.window = config_.window;
    options.trace = {&trace_};
    if (config_.trace != nullptr) {
        options.trace.push_back(config_.trace);
    }
    if (virtualLine_ >= 0) {
        connection_.adopt(virtualLine_, path_, options);  // the virtual device's daemon
    } else {
        problem = connection_.open(path_, options);
    }
    if (!problem.empty()) {
        return false;
    }
    const std::string& note = connection_.line().latencyNote();
    if (!note.empty() && !latencyTold_) {
        latencyTold_ = true;  // once, not at every reopening
        log_(note);
    }
    connection_.session().setWatcher(
        [this](const VekMasterMessage& message, const vekprotocol::VekFields& args,
               const VekMasterReply* reply) { watch(message, args, reply); });
    idle_.clear();
    return true;
}

void VekLineWorker::closeLine() {
    connection_.close();
}

bool VekLineWorker::readIdle(int timeoutMs) {
    char buffer[4096];
    const ssize_t n = connection_.line().receive(buffer, sizeof(buffer), timeoutMs);
    if (n < 0) {
        failure_ = std::string("the line failed: ") + std::strerror(errno);
        lineFailed_ = true;
        return false;
    }
    if (n > 0) {
        const std::string bytes(buffer, static_cast<size_t>(n));
        // A late answer to a request given up on is dropped by the session's reader.
        connection_.session().preload(bytes);
        idle_ += bytes;
        const size_t keep = std::strlen(kGreeting) - 1;
        if (idle_.find(kGreeting) != std::string::npos) {
            greeted_ = true;
            idle_.clear();
        } else if (idle_.size() > keep) {
            idle_.erase(0, idle_.size() - keep);
        }
    }
    return true;
}

void VekLineWorker::lose(const std::string& reason) {
    if (lineFailed_ || !connection_.isOpen()) {
        closeLine();
    }
    std::deque<VekLineJob> waiting;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        waiting.swap(queue_);
    }
    setState(State::Disconnected, reason);
    for (VekLineJob& job : waiting) {
        job.refuse(path_ + " is disconnected: " + reason);
    }
}

void VekLineWorker::remember(Json settings) {
    known_ = std::move(settings);
    knownAt_ = setsSeen_;
}

const VekLineWorker::Json* VekLineWorker::known() const {
    return !known_.is_null() && knownAt_ == setsSeen_ ? &known_ : nullptr;
}

void VekLineWorker::setState(State state, const std::string& reason) {
    ++setsSeen_;  // a device found again may have started afresh
    {
        std::lock_guard<std::mutex> lock(mutex_);
        state_ = state;
    }
    Json event = stateEvent();
    if (state == State::Connected) {
        log_(path_ + ": connected (" + version_ + "; " + VekNames::join(features_) + ")");
    } else {
        event["reason"] = reason;
        log_(path_ + ": disconnected (" + reason + ")");
    }
    events_.publish(std::move(event));
}

void VekLineWorker::watch(const VekMasterMessage& message, const vekprotocol::VekFields& args,
                          const VekMasterReply* reply) {
    if (reply != nullptr && reply->outcome == Outcome::LineFailed) {
        lineFailed_ = true;
        failure_ = reply->problem;
    } else if (reply != nullptr && reply->outcome == Outcome::NoAnswer) {
        unanswered_ = true;
        failure_ = reply->problem;
    }
    if (reply == nullptr && message.name.rfind("Set", 0) == 0) {
        ++setsSeen_;
    }
    // In a window the requests go out, and their outcomes come, in the window's order.
    if (!windowOwners_.empty()) {
        size_t& n = reply == nullptr ? requestEvents_ : replyEvents_;
        const Owner& owner = windowOwners_[std::min(n++, windowOwners_.size() - 1)];
        client_ = owner.client;
        requestId_ = owner.requestId;
    }
    // Nobody listening: the event is not worth making (it costs about as much as a
    // request's own work on the server).
    if (quiet_ || events_.subscribers() == 0) {
        return;
    }
    Json out = event(reply == nullptr ? "request" : "response");
    if (reply == nullptr) {
        out["request"] = {{"feature", message.feature}, {"message", message.name}, {"args", args}};
    } else if (reply->answered()) {
        out["reply"] = VekReplyJson::of(*reply);
    } else {
        out["request"] = {{"feature", message.feature}, {"message", message.name}, {"args", args}};
        out["error"] = reply->problem;
    }
    events_.publish(std::move(out));
}

}  // namespace vekserve
