#include "VekMasterSession.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace vekmaster {

namespace {

using Clock = std::chrono::steady_clock;
using Outcome = VekMasterReply::Outcome;

}  // namespace

VekMasterSession::VekMasterSession(VekSerialLine& line, int timeoutMs)
    : line_(line),
      catalog_(VekMessageCatalog::shared()),
      limits_(VekDeviceProfile::inUse()),
      decoder_(reply_),
      reader_(decoder_, reply_),
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
    const VekError refused = catalog_.check(message, args, limits_.get());
    if (refused) {
        reply_.expect(message.feature, message.response);
        return finish(Outcome::Refused, refused.text);
    }
    return send(message, args, raw);
}

const VekMasterReply& VekMasterSession::request(const VekCheckedRequest& checked, VekRawSink* raw) {
    return send(checked.message(), checked.args(), raw);
}

const VekMasterReply& VekMasterSession::send(const VekMasterMessage& message,
                                             const vekprotocol::VekFields& args, VekRawSink* raw) {
    const std::string what = message.feature + ' ' + message.name;
    reply_.expect(message.feature, message.response);
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
        anchored_ = false;  // a late answer may still come
        if (reply_.received && reply_.outcome != Outcome::Ng) {
            sink.abandon();
        }
        return told(message, args);
    }
    finish(reply_.fail ? Outcome::Ng : Outcome::Ok, "");
    answerSelf_ = reply_.self;
    anchored_ = true;
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

namespace vekmaster {

namespace {

// Echoed keys: a get answer repeats the channel and band it was asked for (unless NG).
bool sameKeys(const VekMasterMessage& message, const vekprotocol::VekFields& args,
              const VekMasterReply& reply) {
    if (reply.fail) {
        return true;
    }
    const std::vector<VekFieldSignature::Slot>& slots = message.signature.slots();
    for (size_t i = 0; i < slots.size() && i < args.size(); ++i) {
        if (slots[i].count != 1 || (slots[i].name != "channel" && slots[i].name != "band")) {
            continue;  // only the keys come back as they went
        }
        const VekFieldPrinter::Field* echoed = reply.field(slots[i].name);
        if (echoed == nullptr || echoed->parts.size() != 1) {
            continue;
        }
        const std::string& got = echoed->parts[0].text;
        if (slots[i].base == "string") {
            if (got != args[i]) {
                return false;
            }
        } else if (slots[i].base == "int" || slots[i].base == "uint") {
            char* end = nullptr;
            const long long a = std::strtoll(args[i].c_str(), &end, 10);
            const long long b = std::strtoll(got.c_str(), &end, 10);
            if (a != b) {
                return false;
            }
        }
    }
    return true;
}

uint32_t readSelf(const std::string& text) {
    char* end = nullptr;
    const unsigned long n = std::strtoul(text.c_str(), &end, 10);
    return n <= 65535 ? static_cast<uint32_t>(n) : 0;
}

}  // namespace

// The state of one exchange(): which requests are on the line, which answers are sure.
class VekMasterSession::Window {
public:
    Window(VekMasterSession& session, Batch& batch, const Answered& answered)
        : s_(session), batch_(batch), answered_(answered) {}

    void run();

private:
    void send();
    void header(const vekprotocol::VekFields& header);
    void done();
    // The outcome of the oldest request on the line.
    void resolve(VekMasterReply reply);
    void lose(size_t index, const std::string& problem);
    // Nothing on the line can be matched for sure any more.
    void desync(const std::string& problem);
    void failAll(Outcome outcome, const std::string& problem);

    VekMasterSession& s_;
    Batch& batch_;
    const Answered& answered_;
    std::deque<size_t> inflight_;
    size_t next_ = 0;     // the next request to send
    size_t settled_ = 0;  // answers before it are sure
    bool stopped_ = false;
    bool draining_ = false;
    bool matching_ = false;  // the frame in progress is the oldest request's answer
    bool heard_ = false;     // bytes came since the oldest request went out
    static constexpr size_t kNone = static_cast<size_t>(-1);
    size_t anchoredAt_ = kNone;  // whose answer gave the numbering in this window
    Clock::time_point deadline_;
};

void VekMasterSession::exchange(Batch& batch, const Answered& answered) {
    Window(*this, batch, answered).run();
}

void VekMasterSession::Window::run() {
    s_.reader_.await(s_.memory_);
    s_.reader_.listen([this](const vekprotocol::VekFields& h) { header(h); },
                      [this] { done(); });
    const auto limit = std::chrono::milliseconds(s_.timeoutMs_);
    // Long enough for the answers still on their way to come in, after a mix-up.
    const int quietMs = std::min(s_.timeoutMs_, 300);
    char buffer[16384];
    while (true) {
        send();
        if (inflight_.empty()) {
            settled_ = next_;
            if (draining_) {
                if (!s_.drain(quietMs)) {
                    failAll(Outcome::LineFailed, std::string("the line failed: ") +
                                                     std::strerror(errno));
                    break;
                }
                draining_ = false;
                continue;
            }
            if (stopped_ || next_ >= batch_.size()) {
                break;
            }
            continue;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                              deadline_ - Clock::now())
                              .count();
        if (left <= 0) {
            const VekMasterExchange& head = batch_[inflight_.front()];
            const std::string what = head.message->feature + ' ' + head.message->name;
            if (heard_) {
                // The device answers, but not this: a request lost on its way, or an
                // answer lost whole. Every answer since the last sure one may be misplaced.
                desync("no answer to " + what + " while the device answered others");
            } else {
                failAll(Outcome::NoAnswer, "no answer to " + what + " within " +
                                               std::to_string(s_.timeoutMs_) + " ms");
            }
            continue;
        }
        const ssize_t n = s_.line_.receive(buffer, sizeof(buffer), static_cast<int>(left));
        if (n < 0) {
            failAll(Outcome::LineFailed,
                    std::string("the line failed while waiting for answers: ") +
                        std::strerror(errno));
            break;
        }
        if (n == 0) {
            continue;
        }
        heard_ = true;
        s_.traffic_.bytesReceived += static_cast<uint64_t>(n);
        s_.reader_.feed(buffer, static_cast<size_t>(n));
        if (s_.reader_.inFrame()) {
            deadline_ = Clock::now() + limit;
        }
    }
    for (size_t i = next_; i < batch_.size(); ++i) {
        batch_[i].reply.problem = "not sent";
    }
    s_.reader_.listen(nullptr, nullptr);
    s_.reply_.expect("", "");
}

void VekMasterSession::Window::send() {
    while (!draining_ && !stopped_ && next_ < batch_.size()) {
        if (inflight_.size() >= static_cast<size_t>(s_.window_)) {
            return;
        }
        const size_t index = next_++;
        VekMasterExchange& e = batch_[index];
        e.reply.expect(e.message->feature, e.message->response);
        const VekError refused =
            e.checked ? VekError() : s_.catalog_.check(*e.message, e.args, s_.limits_.get());
        if (refused) {
            e.reply.outcome = Outcome::Refused;
            e.reply.problem = refused.text;
            if (inflight_.empty() && answered_ && answered_(batch_, index)) {
                stopped_ = true;
            }
            continue;
        }
        s_.self_ = s_.self_ >= 65535 ? 1 : s_.self_ + 1;
        std::stringstream frame;
        e.message->encode(e.args, s_.self_, frame);
        const std::string bytes = frame.str();
        if (s_.watcher_) {
            s_.watcher_(*e.message, e.args, nullptr);
        }
        if (!s_.line_.send(bytes, s_.timeoutMs_)) {
            const std::string problem = "cannot send " + e.message->feature + ' ' +
                                        e.message->name + ": " + std::strerror(errno);
            e.reply.outcome = Outcome::LineFailed;
            e.reply.problem = problem;
            failAll(Outcome::LineFailed, problem);
            return;
        }
        e.sent = true;
        ++s_.traffic_.requests;
        s_.traffic_.bytesSent += bytes.size();
        if (inflight_.empty()) {
            deadline_ = Clock::now() + std::chrono::milliseconds(s_.timeoutMs_);
            heard_ = false;
        }
        inflight_.push_back(index);
    }
}

void VekMasterSession::Window::header(const vekprotocol::VekFields& header) {
    matching_ = false;
    s_.reply_.expect("", "");  // decoded into nothing unless it is the answer due
    const uint32_t self = readSelf(header[0]);
    if (inflight_.empty()) {
        s_.answerSelf_ = self;  // a late answer: the numbering goes on from it
        return;
    }
    if (!s_.anchored_) {
        // The numbering is taken from this answer, on trial until the window is done:
        // a stale answer of an earlier session could stand first.
        anchoredAt_ = inflight_.front();
    } else {
        const uint32_t expected = s_.answerSelf_ % 65535 + 1;
        const uint32_t gap = (self + 65535 - expected) % 65535;
        const bool onTrial = anchoredAt_ != kNone && anchoredAt_ >= settled_;
        if (gap >= inflight_.size() || (gap > 0 && onTrial)) {
            s_.answerSelf_ = self;
            desync("answer number " + std::to_string(self) + " where " +
                   std::to_string(expected) + " was due");
            return;
        }
        for (uint32_t i = 0; i < gap; ++i) {
            const size_t index = inflight_.front();
            inflight_.pop_front();
            lose(index, "its answer was lost on the line (answer number " +
                            std::to_string((expected + i - 1) % 65535 + 1) + " never came whole)");
        }
    }
    s_.answerSelf_ = self;
    s_.anchored_ = true;
    const VekMasterExchange& head = batch_[inflight_.front()];
    if (header[2] != head.message->feature || header[3] != head.message->response) {
        desync(header[2] + ' ' + header[3] + " came where the answer to " +
               head.message->feature + ' ' + head.message->name + " was due");
        return;
    }
    s_.reply_.expect(head.message->feature, head.message->response);
    matching_ = true;
}

void VekMasterSession::Window::done() {
    if (!matching_ || inflight_.empty()) {
        return;
    }
    matching_ = false;
    VekMasterReply reply = s_.reply_;
    reply.outcome = reply.fail ? Outcome::Ng : Outcome::Ok;
    const VekMasterExchange& head = batch_[inflight_.front()];
    if (!sameKeys(*head.message, head.args, reply)) {
        desync("the answer to " + head.message->text(head.args) + " names other keys");
        return;
    }
    resolve(std::move(reply));
}

void VekMasterSession::Window::resolve(VekMasterReply reply) {
    const size_t index = inflight_.front();
    inflight_.pop_front();
    VekMasterExchange& e = batch_[index];
    e.reply = std::move(reply);
    heard_ = false;
    deadline_ = Clock::now() + std::chrono::milliseconds(s_.timeoutMs_);
    if (s_.watcher_) {
        s_.watcher_(*e.message, e.args, &e.reply);
    }
    if (answered_ && answered_(batch_, index)) {
        stopped_ = true;
    }
}

void VekMasterSession::Window::lose(size_t index, const std::string& problem) {
    VekMasterExchange& e = batch_[index];
    e.reply.expect(e.message->feature, e.message->response);
    e.reply.outcome = Outcome::NoAnswer;
    e.reply.lost = true;
    e.reply.problem = e.message->text(e.args) + ": " + problem;
    if (s_.watcher_) {
        s_.watcher_(*e.message, e.args, &e.reply);
    }
    if (answered_ && answered_(batch_, index)) {
        stopped_ = true;
    }
}

void VekMasterSession::Window::desync(const std::string& problem) {
    matching_ = false;
    // A request lost on its way shifts every later answer onto the request before it;
    // that goes unseen only while the messages are alike. So the answers given since
    // the last sure point to a run of requests like the one where the mix-up showed
    // may be their neighbours': none of them is kept.
    const size_t head = inflight_.empty() ? next_ : inflight_.front();
    // Numbering found in this window and now in doubt: nothing answered since is sure.
    const size_t trial = anchoredAt_ != kNone && anchoredAt_ >= settled_ ? anchoredAt_ : head;
    for (size_t i = trial; i < head; ++i) {
        VekMasterExchange& e = batch_[i];
        if (e.sent && e.reply.answered()) {
            e.reply.outcome = Outcome::NoAnswer;
            e.reply.lost = true;
            e.reply.problem = e.message->text(e.args) + ": its answer may have been another's (" +
                              problem + ")";
        }
    }
    anchoredAt_ = kNone;
    for (size_t i = head; i > settled_; --i) {
        VekMasterExchange& e = batch_[i - 1];
        const VekMasterMessage* after = i < batch_.size() ? batch_[i].message : nullptr;
        if (after == nullptr || e.message->feature != after->feature ||
            e.message->name != after->name) {
            break;
        }
        if (e.sent && e.reply.answered()) {
            e.reply.outcome = Outcome::NoAnswer;
            e.reply.lost = true;
            e.reply.problem = e.message->text(e.args) + ": its answer may have been another's (" +
                              problem + ")";
        }
    }
    while (!inflight_.empty()) {
        const size_t index = inflight_.front();
        inflight_.pop_front();
        lose(index, problem);
    }
    settled_ = next_;
    s_.anchored_ = false;
    draining_ = true;
}

void VekMasterSession::Window::failAll(Outcome outcome, const std::string& problem) {
    while (!inflight_.empty()) {
        const size_t index = inflight_.front();
        inflight_.pop_front();
        VekMasterExchange& e = batch_[index];
        e.reply.expect(e.message->feature, e.message->response);
        e.reply.outcome = outcome;
        e.reply.problem = problem;
        if (s_.watcher_) {
            s_.watcher_(*e.message, e.args, &e.reply);
        }
        if (answered_) {
            answered_(batch_, index);
        }
    }
    s_.anchored_ = false;
    stopped_ = true;
}

bool VekMasterSession::drain(int quietMs) {
    char buffer[4096];
    auto quiet = Clock::now() + std::chrono::milliseconds(quietMs);
    const auto limit = Clock::now() + std::chrono::milliseconds(timeoutMs_);
    while (Clock::now() < limit) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(quiet - Clock::now()).count();
        if (left <= 0) {
            break;
        }
        const ssize_t n = line_.receive(buffer, sizeof(buffer), static_cast<int>(left));
        if (n < 0) {
            return false;
        }
        if (n > 0) {
            traffic_.bytesReceived += static_cast<uint64_t>(n);
            reader_.feed(buffer, static_cast<size_t>(n));
            quiet = Clock::now() + std::chrono::milliseconds(quietMs);
        }
    }
    return true;
}

}  // namespace vekmaster
