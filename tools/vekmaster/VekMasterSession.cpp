#include "VekMasterSession.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <sstream>

namespace vekmaster {

namespace {

using Clock = std::chrono::steady_clock;
using Outcome = VekMasterReply::Outcome;

}  // namespace

VekMasterSession::VekMasterSession(VekSerialLine& line, int timeoutMs)
    : line_(line),
      catalog_(reply_),
      reader_(catalog_, reply_),
      memory_(reply_.rawData),
      timeoutMs_(timeoutMs) {}

void VekMasterSession::preload(const std::string& bytes) {
    traffic_.bytesReceived += bytes.size();
    reader_.feed(bytes.data(), bytes.size());
}

const VekMasterReply& VekMasterSession::finish(Outcome outcome, const std::string& problem) {
    reply_.outcome = outcome;
    reply_.problem = problem;
    return reply_;
}

const VekMasterReply& VekMasterSession::request(const std::string& feature, const std::string& name,
                                                const vekprotocol::VekFields& args,
                                                VekRawSink* raw) {
    const VekMasterMessage* message = catalog_.find(feature, name);
    if (message == nullptr) {
        reply_.expect(feature, name + "Response");
        return finish(Outcome::Refused, "no message " + feature + ' ' + name);
    }
    return request(*message, args, raw);
}

const VekMasterReply& VekMasterSession::request(const VekMasterMessage& message,
                                                const vekprotocol::VekFields& args,
                                                VekRawSink* raw) {
    const std::string what = message.feature + ' ' + message.name;
    reply_.expect(message.feature, message.response);
    const std::string refused = catalog_.check(message, args);
    if (!refused.empty()) {
        return finish(Outcome::Refused, refused);
    }
    self_ = self_ >= 65535 ? 1 : self_ + 1;
    std::stringstream frame;
    message.encode(args, self_, frame);
    const std::string bytes = frame.str();
    if (watcher_) {
        watcher_(message, args, nullptr);
    }
    if (!line_.send(bytes, timeoutMs_)) {
        finish(Outcome::LineFailed, "cannot send " + what + ": " + std::strerror(errno));
        return told(message, args);
    }
    ++traffic_.requests;
    traffic_.bytesSent += bytes.size();
    VekRawSink& sink = raw != nullptr ? *raw : memory_;
    await(what, sink);
    if (reply_.outcome != Outcome::Ok) {
        if (reply_.received && reply_.outcome != Outcome::Ng) {
            sink.abandon();
        }
        return told(message, args);
    }
    finish(reply_.fail ? Outcome::Ng : Outcome::Ok, "");
    return told(message, args);
}

const VekMasterReply& VekMasterSession::told(const VekMasterMessage& message,
                                             const vekprotocol::VekFields& args) {
    if (watcher_) {
        watcher_(message, args, &reply_);
    }
    return reply_;
}

void VekMasterSession::await(const std::string& what, VekRawSink& sink) {
    const auto limit = std::chrono::milliseconds(timeoutMs_);
    auto deadline = Clock::now() + limit;
    reader_.await(sink);
    bool shown = false;
    char buffer[16384];
    reply_.outcome = Outcome::Ok;
    while (!reader_.complete()) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            finish(Outcome::NoAnswer,
                   "no answer to " + what + " within " + std::to_string(timeoutMs_) + " ms");
            break;
        }
        const ssize_t n = line_.receive(buffer, sizeof(buffer), static_cast<int>(left));
        if (n < 0) {
            finish(Outcome::LineFailed,
                   "the line failed while waiting for " + what + ": " + std::strerror(errno));
            break;
        }
        traffic_.bytesReceived += static_cast<uint64_t>(n);
        reader_.feed(buffer, static_cast<size_t>(n));
        // A long answer on a slow line takes longer than the limit: while one is coming
        // in, the limit counts from its latest byte.
        if (n > 0 && reader_.inFrame()) {
            deadline = Clock::now() + limit;
        }
        if (progress_ && reader_.announced() > 0) {
            progress_(reply_, reader_.arrived(), reader_.announced(), false);
            shown = true;
        }
    }
    if (shown) {
        progress_(reply_, reader_.arrived(), reader_.announced(), true);
    }
    if (reader_.sinkFailed() && reply_.outcome == Outcome::Ok) {
        finish(Outcome::RawFailed, sink.problem());
    }
}

}  // namespace vekmaster
