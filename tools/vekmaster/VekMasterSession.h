#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "VekFrameReader.h"
#include "VekMasterReply.h"
#include "VekMessageCatalog.h"
#include "VekRawStringSink.h"
#include "VekSerialLine.h"

namespace vekmaster {

// One connection to a slave: sends one request at a time and gives back the answer as
// a structure; it prints nothing. Requests are numbered 1, 2, ... 65535, 1, ... for the
// whole session. Not shared between threads: one session per line.
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

    const VekMessageCatalog& catalog() const { return catalog_; }
    // Off: values outside the device profile's ranges are sent.
    void setLimited(bool limited) { catalog_.setLimited(limited); }
    const Traffic& traffic() const { return traffic_; }
    // The answer of the request under way (its fields are in once its raw data begins).
    const VekMasterReply& reply() const { return reply_; }

private:
    const VekMasterReply& finish(VekMasterReply::Outcome outcome, const std::string& problem);
    // Tells the watcher the outcome of a request that went on the line.
    const VekMasterReply& told(const VekMasterMessage& message, const vekprotocol::VekFields& args);
    // Reads the line until the expected answer is in.
    void await(const std::string& what, VekRawSink& sink);

    VekSerialLine& line_;
    VekMasterReply reply_;
    VekMessageCatalog catalog_;
    VekFrameReader reader_;
    VekRawStringSink memory_;
    int timeoutMs_;
    uint32_t self_ = 0;
    Traffic traffic_;
    Progress progress_;
    Watcher watcher_;
};

}  // namespace vekmaster
