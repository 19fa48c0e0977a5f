#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "VekFrameReader.h"
#include "VekMasterExchange.h"
#include "VekMasterReply.h"
#include "VekDeviceProfile.h"
#include "VekMessageCatalog.h"
#include "VekReplyDecoder.h"
#include "VekRawStringSink.h"
#include "VekSerialLine.h"

namespace vekmaster {

// One connection to a slave: sends a request and gives back the answer as a structure,
// or keeps a batch of requests on the line, up to its window at once; it prints nothing.
// Requests are numbered 1, 2, ... 65535, 1, ... for the whole session. Not shared
// between threads: one session per line.
//
// In a batch, answers are matched to requests in order, by message name and by the
// device's answer numbers, which go up by one per answer: a gap says how many answers
// were lost, and those requests are reported lost. Anything that does not fit (another
// message where an answer is due, echoed keys that differ, a request left unanswered
// while others are) loses every answer that could be misplaced: the session waits for
// the line to fall quiet and goes on. The first answer of a window whose numbering is not
// known yet gives it on trial: until every request of that stretch is answered in turn,
// a gap or a mix-up loses every answer since. An answer is never given to a request it
// may not belong to.
class VekMasterSession {
public:
    // Bytes and requests that went over the line, each way.
    struct Traffic {
        uint64_t requests = 0;
        uint64_t bytesSent = 0;
        uint64_t bytesReceived = 0;
    };
    // Called while the raw data of an answer comes in, and once more with done set.
    using Progress = std::function<void(const VekMasterReply& reply, int64_t arrived,
                                        int64_t announced, bool done)>;
    // Told of every request that goes on the line, before it is sent (reply null) and
    // once its outcome is known: a server shows all its clients each other's traffic.
    using Watcher = std::function<void(const VekMasterMessage& message,
                                       const vekprotocol::VekFields& args,
                                       const VekMasterReply* reply)>;

    // Values are checked against the process's device profile until setLimits().
    VekMasterSession(VekSerialLine& line, int timeoutMs);
    VekMasterSession(const VekMasterSession&) = delete;
    VekMasterSession& operator=(const VekMasterSession&) = delete;

    // Bytes that arrived before the first request (behind the daemon's greeting).
    void preload(const std::string& bytes);
    void setProgress(Progress progress) { progress_ = std::move(progress); }
    void setWatcher(Watcher watcher) { watcher_ = std::move(watcher); }

    // Sends the message with its ARGs and waits for its answer; the raw data goes to
    // raw, or into the reply when raw is null. The reply stays valid until the next
    // request.
    const VekMasterReply& request(const VekMasterMessage& message,
                                  const vekprotocol::VekFields& args, VekRawSink* raw = nullptr);
    // The same by names ("Gain", "SetMaster"); Refused when the catalog has no such
    // message or the ARGs do not fit it.
    const VekMasterReply& request(const std::string& feature, const std::string& name,
                                  const vekprotocol::VekFields& args, VekRawSink* raw = nullptr);
    // A request the catalogue has checked already: sent as it is.
    const VekMasterReply& request(const VekCheckedRequest& checked, VekRawSink* raw = nullptr);

    using Batch = VekMasterExchange::Batch;
    // Told of each request's outcome, in batch order; it may add requests to the batch.
    // True: send nothing more (those on the line are still awaited).
    using Answered = std::function<bool(Batch& batch, size_t index)>;
    static constexpr int kDefaultWindow = 32;
    static constexpr int kMaxWindow = 64;
    // How many requests of a batch may be on the line at once; 1 sends each after the
    // answer to the one before.
    void setWindow(int window) { window_ = window < 1 ? 1 : window; }
    int window() const { return window_; }
    // Sends the batch's requests in order and gives each its outcome (unsent ones stay
    // NoAnswer with sent false). The raw data of answers is kept in their replies. A
    // request marked checked is not checked again.
    void exchange(Batch& batch, const Answered& answered = {});

    const VekMessageCatalog& catalog() const { return catalog_; }
    // The ranges values are checked against; null: values outside them are sent.
    void setLimits(std::shared_ptr<const VekDeviceProfile> limits) { limits_ = std::move(limits); }
    // The catalogue's check with those ranges.
    VekError check(const VekMasterMessage& message, const vekprotocol::VekFields& args) const {
        return catalog_.check(message, args, limits_.get());
    }
    const Traffic& traffic() const { return traffic_; }
    // The answer of the request under way (its fields are in once its raw data begins).
    const VekMasterReply& reply() const { return reply_; }

private:
    const VekMasterReply& send(const VekMasterMessage& message, const vekprotocol::VekFields& args,
                               VekRawSink* raw);
    const VekMasterReply& finish(VekMasterReply::Outcome outcome, const std::string& problem);
    // Tells the watcher the outcome of a request that went on the line.
    const VekMasterReply& told(const VekMasterMessage& message, const vekprotocol::VekFields& args);
    // Reads the line until the expected answer is in.
    void await(const std::string& what, VekRawSink& sink);

    class Window;
    // The line fell quiet or the time is up; false when the line failed.
    bool drain(int quietMs);

    VekSerialLine& line_;
    VekMasterReply reply_;
    const VekMessageCatalog& catalog_;
    std::shared_ptr<const VekDeviceProfile> limits_;
    VekReplyDecoder decoder_;
    VekFrameReader reader_;
    VekRawStringSink memory_;
    int timeoutMs_;
    uint32_t self_ = 0;
    int window_ = kDefaultWindow;
    // The device's number of its latest answer, once known.
    uint32_t answerSelf_ = 0;
    bool anchored_ = false;
    Traffic traffic_;
    Progress progress_;
    Watcher watcher_;
};

}  // namespace vekmaster
