#include "VekTraceReplay.h"

#include <chrono>
#include <thread>

#include "VekTraceFrame.h"
#include "VekTraceSplitter.h"

namespace vekmaster {

namespace {

using Clock = std::chrono::steady_clock;

std::string answerTo(const VekTraceFrame& request) {
    const std::string& m = request.message();
    const std::string kRequest = "Request";
    if (m.size() < kRequest.size() || m.compare(m.size() - kRequest.size(), kRequest.size(), kRequest) != 0) {
        return "";
    }
    return m.substr(0, m.size() - kRequest.size()) + "Response";
}

std::string describe(const VekTraceFrame& f) {
    return f.frame ? f.feature() + ' ' + f.message() : "a frame that is no frame";
}

// The next frame the device sends within ms; false when none came (failed: the line did).
bool nextFrame(VekSerialLine& line, VekTraceSplitter& splitter, std::vector<VekTracePacket>& held,
               int ms, std::string& frame, bool& failed) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(ms);
    failed = false;
    for (;;) {
        while (!held.empty()) {
            VekTracePacket p = std::move(held.front());
            held.erase(held.begin());
            if (!p.stray) {
                frame = std::move(p.bytes);
                return true;
            }
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            return false;
        }
        char buffer[4096];
        const ssize_t n = line.receive(buffer, sizeof(buffer), static_cast<int>(left));
        if (n < 0) {
            failed = true;
            return false;
        }
        splitter.feed(buffer, static_cast<size_t>(n), 0, held);
    }
}

}  // namespace

std::vector<std::string> VekTraceReplay::compare(const std::string& recorded,
                                                 const std::string& now) const {
    const VekTraceFrame a = VekTraceFrame::parse(recorded);
    const VekTraceFrame b = VekTraceFrame::parse(now);
    std::vector<std::string> out;
    const std::string what = describe(a);
    if (!a.frame || !b.frame || a.feature() != b.feature() || a.message() != b.message()) {
        out.push_back(what + ": " + describe(b) + " came instead");
        return out;
    }
    if (a.status() != b.status()) {
        out.push_back(what + ": status " + a.status() + ", now " + b.status());
    }
    if (a.header[4] != b.header[4]) {
        out.push_back(what + ": raw data length " + a.header[4] + ", now " + b.header[4]);
    } else if (a.raw != b.raw) {
        out.push_back(what + ": the raw data differs");
    }
    const auto fa = a.named(catalog_);
    const auto fb = b.named(catalog_);
    for (size_t i = 0; i < fa.size() || i < fb.size(); ++i) {
        if (i >= fb.size()) {
            out.push_back(what + ": " + fa[i].first + " " + fa[i].second + ", now missing");
        } else if (i >= fa.size()) {
            out.push_back(what + ": " + fb[i].first + " missing, now " + fb[i].second);
        } else if (fa[i].second != fb[i].second) {
            out.push_back(what + ": " + fa[i].first + " " + fa[i].second + ", now " +
                          fb[i].second);
        }
    }
    return out;
}

VekTraceReplay::Result VekTraceReplay::run(const VekTrace& trace, uint32_t line, VekSerialLine& on,
                                           const Options& options) {
    Result result;
    std::vector<const VekTracePacket*> frames;
    for (const VekTracePacket& p : trace.packets) {
        if (p.line == line && !p.stray) {
            frames.push_back(&p);
        }
    }
    std::vector<bool> claimed(frames.size(), false);
    VekTraceSplitter splitter;
    std::vector<VekTracePacket> held;
    const auto start = Clock::now();
    int64_t firstUs = -1;
    for (size_t i = 0; i < frames.size(); ++i) {
        if (!frames[i]->outbound) {
            continue;
        }
        const VekTraceFrame request = VekTraceFrame::parse(frames[i]->bytes);
        const std::string response = answerTo(request);
        const std::string* recorded = nullptr;
        for (size_t j = i + 1; j < frames.size() && request.frame && !response.empty(); ++j) {
            if (!frames[j]->outbound && !claimed[j]) {
                const VekTraceFrame f = VekTraceFrame::parse(frames[j]->bytes);
                if (f.frame && f.feature() == request.feature() && f.message() == response) {
                    claimed[j] = true;
                    recorded = &frames[j]->bytes;
                    break;
                }
            }
        }
        if (options.originalTiming && frames[i]->timeUs != 0) {
            if (firstUs < 0) {
                firstUs = frames[i]->timeUs;
            }
            std::this_thread::sleep_until(start + std::chrono::microseconds(frames[i]->timeUs - firstUs));
        }
        ++result.requests;
        if (!on.send(frames[i]->bytes, options.timeoutMs)) {
            result.failure = "the line failed while sending " + describe(request);
            return result;
        }
        std::string answer;
        bool failed = false;
        const bool came = nextFrame(on, splitter, held,
                                    recorded != nullptr ? options.timeoutMs : kSilenceMs, answer, failed);
        const std::string where = "request " + std::to_string(result.requests) + " (" +
                                  describe(request) + "): ";
        if (failed) {
            result.failure = "the line failed while waiting for the answer to " + describe(request);
            return result;
        }
        if (recorded == nullptr && came) {
            result.differences.push_back(where + "unanswered when recorded, now " +
                                         describe(VekTraceFrame::parse(answer)));
        } else if (recorded != nullptr && !came) {
            result.differences.push_back(where + "no answer within " +
                                         std::to_string(options.timeoutMs) + " ms");
        } else if (recorded != nullptr) {
            for (const std::string& d : compare(*recorded, answer)) {
                result.differences.push_back(where + d);
            }
        }
    }
    return result;
}

}  // namespace vekmaster
