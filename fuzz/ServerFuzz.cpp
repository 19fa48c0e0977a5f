// The daemon's whole receive path over the simulator: frame hub, both equaliser
// modes' endpoints, every service and adapter. Input: one byte choosing how the
// stream is cut into reads, then the bytes the master sends.
//
// Checked on every input:
// - each request that reaches a service is answered by exactly one transport write:
//   the responses are numbered 1, 2, 3, ... without a gap or a repeat, and the last
//   number the hub handed out is the last response's;
// - each write is one whole frame: its header line's length field counts the bytes
//   after it;
// - a read that does not fit beside the held bytes is dropped whole (nothing of it is
//   served, the hub unchanged) while the frame in progress can still end inside the
//   cache and the read before was taken; otherwise the held bytes are given up;
// - the link is never deaf for good: after the input, reads of noise ending in a
//   request get an answer within 45 reads;
// - no library object outlives a request.

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "AudioSim.h"
#include "CapturingTransport.h"
#include "VekFrameHub.h"
#include "VekServer.h"

namespace {

using vekprotocol::VekFrameHub;

void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "invariant broken: %s\n", what);
        std::abort();
    }
}

// Read sizes from the first byte: 0 feeds whole reads of up to 1024 bytes as the
// server does; 1 to 127 a small generator with sizes up to 2^(1..8); 128 and above
// take each read's size from the input, 1 + a little-endian u16 before its bytes
// modulo 1024, so that the fuzzer can put read boundaries anywhere. No read is larger
// than the server's.
class Chunker {
public:
    Chunker(uint8_t mode, const uint8_t* data, size_t size)
        : data_(data), left_(size), state_(mode * 2654435761u + 1), limit_(1u << (mode % 8 + 1)) {
        if (mode == 0) {
            limit_ = vekserver::VekServer::kReadSize;
        }
        fixed_ = mode == 0;
        sized_ = mode >= 128;
    }
    // The next read; false when the input is used up.
    bool next(const char*& bytes, uint32_t& n) {
        if (sized_ && left_ >= 2) {
            n = 1 + static_cast<uint32_t>(data_[0] | (data_[1] << 8)) % vekserver::VekServer::kReadSize;
            data_ += 2;
            left_ -= 2;
        } else if (fixed_) {
            n = limit_;
        } else {
            state_ = state_ * 1103515245u + 12345u;
            n = 1 + (state_ >> 8) % limit_;
        }
        if (n > left_) {
            n = static_cast<uint32_t>(left_);
        }
        bytes = reinterpret_cast<const char*>(data_);
        data_ += n;
        left_ -= n;
        return n > 0;
    }

private:
    const uint8_t* data_;
    size_t left_;
    uint32_t state_;
    uint32_t limit_;
    bool fixed_ = false;
    bool sized_ = false;
};

// Feeds reads one at a time and checks what the hub does with reads that do not fit.
class Feeder {
public:
    Feeder(vekserver::VekServer& server, const VekFrameHub& hub) : server_(server), hub_(hub) {}

    void feed(const char* bytes, uint32_t n) {
        const VekFrameHub::State state = hub_.state();
        const uint32_t cached = hub_.cachedLength();
        const int32_t missing = hub_.rawDataLength();
        const size_t served = hub_.sequence();
        server_.serve(bytes, n);
        if (static_cast<uint64_t>(cached) + n <= VekFrameHub::kCacheSize) {
            droppedLast_ = false;
            return;
        }
        const bool kept = hub_.state() == state && hub_.cachedLength() == cached &&
                          hub_.rawDataLength() == missing;
        if (kept) {
            check(hub_.sequence() == served, "nothing of a dropped read is served");
        }
        const bool canEnd =
            cached < VekFrameHub::kCacheSize &&
            (state == VekFrameHub::ReadHeader ||
             (state == VekFrameHub::ReadRawData &&
              static_cast<uint64_t>(cached) + static_cast<uint32_t>(missing) <=
                  VekFrameHub::kCacheSize));
        if (canEnd && !droppedLast_) {
            check(kept, "a frame that can still end inside the cache is kept");
        } else {
            check(hub_.cachedLength() <= n, "bytes that can never become a frame are given up");
        }
        droppedLast_ = kept;
    }

private:
    vekserver::VekServer& server_;
    const VekFrameHub& hub_;
    bool droppedLast_ = false;
};

void checkFrame(const std::string& frame, uint32_t number) {
    check(frame.compare(0, 3, "AS:") == 0, "response starts with the magic");
    const size_t lf = frame.find('\n');
    check(lf != std::string::npos, "response has a header line");
    check(std::strtoul(frame.c_str() + 3, nullptr, 10) == number,
          "responses are numbered on without a gap or a repeat");
    // AS:self:peer:feature:message:length:status...
    size_t field = 0;
    for (int colons = 0; colons < 5; ++colons) {
        field = frame.find(':', field) + 1;
        check(field != 0 && field < lf, "response header has its fields");
    }
    const long length = std::strtol(frame.c_str() + field, nullptr, 10);
    check(length >= 0 && frame.size() - lf - 1 == static_cast<size_t>(length),
          "response length field counts its raw data");
}

// Noise, then a request: whatever state the input left, one of these is answered
// after at most a cache's worth of reads and the two that may be dropped.
void checkNotDeaf(Feeder& feeder, const CapturingTransport& transport) {
    static const std::string kRead =
        std::string(vekserver::VekServer::kReadSize - 35, '#') + "AS:1:0:Common:FeatureRequest:0:OK:\n";
    const size_t before = transport.writes.size();
    for (int reads = 0; reads < 45 && transport.writes.size() == before; ++reads) {
        feeder.feed(kRead.data(), static_cast<uint32_t>(kRead.size()));
    }
    check(transport.writes.size() > before, "the link is never deaf for good");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // The daemon's lines are not looked at; they must not flood the fuzzer's output.
    const int null = open("/dev/null", O_WRONLY);
    if (null < 0 || dup2(null, STDOUT_FILENO) < 0) {
        std::perror("stdout redirect");
        std::abort();
    }
    close(null);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool initialised = LLVMFuzzerInitialize(nullptr, nullptr) == 0;
    if (size == 0 || !initialised) {
        return 0;
    }
    AudioSim::reset();
    for (int32_t eqMode = 0; eqMode < 2; ++eqMode) {
        CapturingTransport transport;
        vekserver::VekServerConfig config;
        config.eqMode = eqMode;
        config.enReverb = true;
        vekserver::VekServer server(config, &transport);
        server.init();
        transport.writes.clear();
        const VekFrameHub* hub = server.frameHub();
        check(hub != nullptr, "the server has a hub after its greeting");

        Feeder feeder(server, *hub);
        Chunker chunker(data[0], data + 1, size - 1);
        const char* bytes = nullptr;
        uint32_t n = 0;
        while (chunker.next(bytes, n)) {
            feeder.feed(bytes, n);
        }
        checkNotDeaf(feeder, transport);
        for (size_t i = 0; i < transport.writes.size(); ++i) {
            checkFrame(transport.writes[i], static_cast<uint32_t>(i + 1));
        }
        check(hub->sequence() == transport.writes.size(),
              "every response number handed out was sent");
        server.deinit();
    }
    check(AudioSim::liveObjects() == 0, "no library object outlives a request");
    return 0;
}
