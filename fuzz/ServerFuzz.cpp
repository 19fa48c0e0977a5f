// The daemon's whole receive path over the simulator: frame hub, both equaliser
// modes' endpoints, every service and adapter. Input: one byte choosing how the
// stream is cut into reads, then the bytes the master sends.
//
// Checked on every input: each request that reaches a service (its
// "on...Request, self=" line) is answered by exactly one transport write, and each
// write is one whole frame: its header line's length field counts the bytes after it.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "AudioSim.h"
#include "CapturingTransport.h"
#include "VekServer.h"

namespace {

int logFd = -1;  // standard output, redirected here and read back after each input

void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "invariant broken: %s\n", what);
        std::abort();
    }
}

// Read sizes from the first byte: 0 feeds whole reads of up to 1024 bytes as the
// server does; otherwise a small generator gives sizes up to 2^(1..8).
class Chunker {
public:
    explicit Chunker(uint8_t seed) : state_(seed * 2654435761u + 1), limit_(1u << (seed % 8 + 1)) {
        if (seed == 0) {
            limit_ = vekserver::VekServer::kReadSize;
            fixed_ = true;
        }
    }
    size_t next(size_t left) {
        size_t n = limit_;
        if (!fixed_) {
            state_ = state_ * 1103515245u + 12345u;
            n = 1 + (state_ >> 8) % limit_;
        }
        return n < left ? n : left;
    }

private:
    uint32_t state_;
    uint32_t limit_;
    bool fixed_ = false;
};

// Request lines since the last call; standard output is emptied.
size_t takeRequestLines() {
    std::fflush(stdout);
    const off_t size = lseek(logFd, 0, SEEK_END);
    std::string text(static_cast<size_t>(size), '\0');
    check(pread(logFd, &text[0], text.size(), 0) == size, "log read back");
    check(ftruncate(logFd, 0) == 0 && lseek(logFd, 0, SEEK_SET) == 0, "log emptied");
    // Fields cannot hold a line feed, so no request text can forge a line start.
    static const char kHead[] = "[AST][INF]on";
    size_t count = 0;
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        const std::string line = text.substr(start, end - start);
        if (line.compare(0, sizeof(kHead) - 1, kHead) == 0 &&
            line.find("Request, self=") != std::string::npos) {
            ++count;
        }
        start = end + 1;
    }
    return count;
}

void checkFrame(const std::string& frame) {
    check(frame.compare(0, 3, "AS:") == 0, "response starts with the magic");
    const size_t lf = frame.find('\n');
    check(lf != std::string::npos, "response has a header line");
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

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    logFd = memfd_create("vek_fuzz_stdout", 0);
    if (logFd < 0 || dup2(logFd, STDOUT_FILENO) < 0) {
        std::perror("stdout redirect");
        std::abort();
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    if (logFd < 0) {
        LLVMFuzzerInitialize(nullptr, nullptr);
    }
    AudioSim::reset();
    for (int32_t eqMode = 0; eqMode < 2; ++eqMode) {
        CapturingTransport transport;
        vekserver::VekServerConfig config;
        config.eqMode = eqMode;
        config.enReverb = true;
        vekserver::VekServer server(config, &transport);
        server.init();
        takeRequestLines();
        transport.writes.clear();

        Chunker chunker(data[0]);
        const char* bytes = reinterpret_cast<const char*>(data + 1);
        for (size_t left = size - 1; left > 0;) {
            const size_t n = chunker.next(left);
            server.serve(bytes, static_cast<uint32_t>(n));
            bytes += n;
            left -= n;
        }
        check(takeRequestLines() == transport.writes.size(), "one write per served request");
        for (const std::string& frame : transport.writes) {
            checkFrame(frame);
        }
        server.deinit();
    }
    check(AudioSim::liveObjects() == 0, "no library object outlives a request");
    return 0;
}
