#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "DaemonHarness.h"
#include "SampleRequests.h"

namespace {

using namespace std::chrono_literals;
using Rng = std::mt19937;

constexpr uint32_t kRequests = 100000;
constexpr uint32_t kWarmUp = 10000;
// Requests in flight: a few hundred bytes each way, far below what the pty buffers
// hold, so neither side ever blocks on a full buffer.
constexpr size_t kWindow = 16;
constexpr uint32_t kDefaultSeed = 20240611;
// Not zero: VmRSS moves by whole pages as the allocator's free lists and the stack
// reach their high marks, which reads of varying sizes approach only slowly. Growth
// measured after warm-up is 0 to 8 KiB; keeping a few bytes per request would be
// hundreds of KiB, and a record of every library call grew it by 24 MiB.
constexpr long kRssToleranceKb = 64;

// One request of every message with random values of the sample's shape: each number
// between 0 and the sample's value (whole numbers stay whole, others move in quarter
// steps, so every value is exact in %g), each channel name any of the six.
int32_t between(Rng& rng, int32_t lo, int32_t hi) {
    return std::uniform_int_distribution<int32_t>(lo, hi)(rng);
}
bool coin(Rng& rng) {
    return between(rng, 0, 1) == 1;
}

std::string vary(Rng& rng, const std::string& sample) {
    static const std::set<std::string> channels{"LF", "RF", "LS", "RS", "CF", "L1"};
    if (channels.count(sample) != 0) {
        static const char* const names[] = {"LF", "RF", "LS", "RS", "CF", "L1"};
        return names[between(rng, 0, 5)];
    }
    char* end = nullptr;
    const long whole = std::strtol(sample.c_str(), &end, 10);
    if (!sample.empty() && *end == '\0') {
        const auto value = static_cast<int32_t>(whole);
        return std::to_string(between(rng, std::min(value, 0), std::max(value, 0)));
    }
    const float real = std::strtof(sample.c_str(), &end);
    if (sample.empty() || *end != '\0') {
        return sample;
    }
    const auto quarters = static_cast<int32_t>(real * 4);
    char text[32];
    std::snprintf(
        text, sizeof(text), "%g",
        static_cast<float>(between(rng, std::min(quarters, 0), std::max(quarters, 0))) / 4);
    return text;
}

// Noise never holds 'A': the daemon looks for the magic "AS" between frames, so any
// other byte, control bytes and line feeds included, must be skipped without effect.
void appendNoise(Rng& rng, std::string& bytes) {
    for (int32_t n = coin(rng) ? between(rng, 1, 24) : 0; n > 0; --n) {
        const int32_t byte = between(rng, 0, 254);
        bytes += static_cast<char>(byte >= 'A' ? byte + 1 : byte);
    }
}

// Writes in pieces of 1 to 48 bytes, so that boundaries fall anywhere in a frame.
void sendChunked(DaemonHarness& daemon, Rng& rng, const std::string& bytes) {
    for (size_t at = 0; at < bytes.size();) {
        const size_t n = static_cast<size_t>(between(rng, 1, 48));
        daemon.send(bytes.substr(at, n));
        at += n;
    }
}

// kDefaultSeed, or VEK_SOAK_SEED (decimal or 0x hex); false when that is not a number.
bool readSeed(uint32_t& seed) {
    seed = kDefaultSeed;
    const char* text = std::getenv("VEK_SOAK_SEED");
    if (text == nullptr) {
        return true;
    }
    char* end = nullptr;
    const unsigned long value = std::strtoul(text, &end, 0);
    seed = static_cast<uint32_t>(value);
    return end != text && *end == '\0' && value <= UINT32_MAX;
}

// A small file for FileContentRequest to send back; removed whatever the outcome.
struct SmallFile {
    SmallFile() {
        const int fd = mkstemp(path);
        const std::string content(300, 'x');
        written = fd >= 0 && write(fd, content.data(), content.size()) == 300;
        close(fd);
    }
    ~SmallFile() { unlink(path); }
    char path[32] = "/tmp/vek_soak_file_XXXXXX";
    bool written = false;
};

// An answer's header fields but the length (a file's answer carries bytes): self,
// peer, feature, message, status. Empty when no answer came.
std::vector<std::string> headerOf(const std::string& frame) {
    std::vector<std::string> fields;
    std::istringstream line(frame.substr(0, frame.find('\n')));
    std::string field;
    while (std::getline(line, field, ':')) {
        fields.push_back(field);
    }
    if (fields.size() < 7) {
        return {};
    }
    return {fields[1], fields[2], fields[3], fields[4], fields[6]};
}

TEST(SoakTest, EveryRequestIsAnsweredOnceInOrderAndMemoryStaysFlat) {
    uint32_t runSeed = 0;
    ASSERT_TRUE(readSeed(runSeed)) << "VEK_SOAK_SEED is not a number";
    std::printf("soak seed %u (set VEK_SOAK_SEED to repeat another run)\n", runSeed);
    Rng rng(runSeed);

    const SmallFile file;
    ASSERT_TRUE(file.written);

    DaemonHarness daemon({{"--reverb"}, ""});
    // Features are announced after the greeting, and the first read follows them.
    ASSERT_TRUE(daemon.waitForOutput("+SEND-HELLO!\n-SEND\n\n") &&
                daemon.waitForOutput("FT232 state is abnormal"));
    std::set<std::string> announced{"Common"};
    for (const std::string& line : daemon.lines("[AST][INF]Support feature(")) {
        announced.insert(line.substr(26, line.size() - 28));
    }
    // Every message of every feature served with --reverb and the default EqV2.
    std::vector<const SampleRequests::Request*> messages;
    std::set<std::string> covered;
    for (const SampleRequests::Request& r : SampleRequests::all()) {
        if (announced.count(r.feature) != 0) {
            messages.push_back(&r);
            covered.insert(r.feature);
        }
    }
    ASSERT_EQ(covered, announced);

    std::deque<const SampleRequests::Request*> inFlight;
    std::string bytes;
    uint32_t sent = 0;
    uint32_t expectedNumber = 1;
    long warmRss = 0;
    for (uint32_t answered = 0; answered < kRequests; ++answered) {
        // Refilled in batches, so that pieces also straddle the end of one frame and
        // the start of the next.
        if (inFlight.size() <= kWindow / 2) {
            bytes.clear();
            for (; inFlight.size() < kWindow && sent < kRequests; ++sent) {
                const int32_t last = static_cast<int32_t>(messages.size()) - 1;
                const SampleRequests::Request* m =
                    messages[static_cast<size_t>(between(rng, 0, last))];
                std::vector<std::string> fields;
                for (const std::string& arg : m->args) {
                    fields.push_back(vary(rng, arg));
                }
                const std::string path = coin(rng) ? file.path : std::string(file.path) + ".absent";
                appendNoise(rng, bytes);
                bytes += m->frame(sent % 65535 + 1, fields, path);
                inFlight.push_back(m);
            }
            sendChunked(daemon, rng, bytes);
        }
        const std::vector<std::string> header = headerOf(daemon.nextFrame(10s));
        const SampleRequests::Request& m = *inFlight.front();
        inFlight.pop_front();
        ASSERT_EQ(header, (std::vector<std::string>{std::to_string(expectedNumber), "0", m.feature,
                                                    m.message + "Response", "OK"}))
            << "answer " << answered + 1 << ", seed " << runSeed;
        expectedNumber = expectedNumber == 65535 ? 1 : expectedNumber + 1;
        if (answered + 1 == kWarmUp) {
            warmRss = daemon.residentKb();
        }
    }
    EXPECT_EQ(daemon.nextFrame(500ms), "") << "no answer without a request";

    const long endRss = daemon.residentKb();
    std::printf("daemon VmRSS after %u requests: %ld KiB, after %u: %ld KiB%s\n", kWarmUp, warmRss,
                kRequests, endRss,
                DaemonHarness::kSanitized ? " (the sanitizer's allocator: not judged)" : "");
    EXPECT_GT(warmRss, 0);
    if (!DaemonHarness::kSanitized) {
        EXPECT_LE(endRss - warmRss, kRssToleranceKb);
    }

    daemon.signal(SIGUSR1);
    EXPECT_EQ(daemon.waitExit(), 0);
}

}  // namespace
