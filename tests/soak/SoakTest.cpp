#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "DaemonHarness.h"
#include "VekCommonMaster.h"
#include "VekEqV2Master.h"
#include "VekGainMaster.h"
#include "VekHfeMaster.h"
#include "VekReverbMaster.h"
#include "VekSpeakerMaster.h"
#include "VekVbMaster.h"

namespace {

using namespace std::chrono_literals;
using namespace vekprotocol;
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

// One request message with random but valid field values, and the answer it expects.
struct Message {
    std::string feature;
    std::string response;
    std::function<void(Rng&, uint32_t self, std::stringstream&)> encode;
};

int32_t between(Rng& rng, int32_t lo, int32_t hi) {
    return std::uniform_int_distribution<int32_t>(lo, hi)(rng);
}
float real(Rng& rng, float lo, float hi) {
    // Quarter steps, as a tuning tool sets them, keep every value exact in %g.
    return static_cast<float>(
               between(rng, static_cast<int32_t>(lo * 4), static_cast<int32_t>(hi * 4))) /
           4;
}
bool coin(Rng& rng) {
    return between(rng, 0, 1) == 1;
}
std::string channel(Rng& rng) {
    static const char* const names[] = {"LF", "RF", "LS", "RS", "CF", "L1"};
    return names[between(rng, 0, 5)];
}
template <class T, size_t N, class Gen>
void fill(T (&items)[N], Gen gen) {
    for (T& item : items) {
        item = gen();
    }
}

template <class Master, class Record, class Fill>
Message message(void (Master::*encode)(std::stringstream&, const Record&), Fill fill) {
    std::string response = Record::kMessage;
    response.replace(response.rfind("Request"), 7, "Response");
    return {Master::kFeature, response,
            [encode, fill](Rng& rng, uint32_t self, std::stringstream& out) {
                Record record;
                record.self = self;
                fill(rng, record);
                Master master;
                (master.*encode)(out, record);
            }};
}
template <class Master, class Record>
Message message(void (Master::*encode)(std::stringstream&, const Record&)) {
    return message(encode, [](Rng&, Record&) {});
}

// Every message of every feature the daemon serves with --reverb and the default EqV2.
std::vector<Message> allMessages(const std::string& file) {
    const auto enable = [](Rng& g, auto& r) { r.enable = coin(g); };
    const auto pickChannel = [](Rng& g, auto& r) { r.channel = channel(g); };
    // Bands within what a tuning tool lays out, so the simulator's store stays bounded.
    const auto band = [](Rng& g, auto& r) {
        r.channel = channel(g);
        r.band = static_cast<uint32_t>(between(g, 0, 19));
    };
    const auto bandConfig = [band](Rng& g, auto& r) {
        band(g, r);
        r.value1 = between(g, 0, 7);
        r.value2 = between(g, 20, 20000);
        r.value3 = real(g, -24, 24);
        r.value4 = real(g, 0.25f, 16);
        r.value5 = between(g, 0, 1);
        r.value6 = between(g, 0, 1);
    };
    return {
        message(&VekCommonMaster::encodeVersionRequest,
                [](Rng& g, auto& r) { r.version = "A" + std::to_string(between(g, 0, 99999999)); }),
        message(&VekCommonMaster::encodeFeatureRequest),
        message(&VekCommonMaster::encodeFileListRequest,
                [](Rng& g, auto& r) {
                    static const char* const features[] = {"Speaker", "Gain", "EqV2",
                                                           "Hfe",     "Vb",   "Reverb"};
                    r.feature = features[between(g, 0, 5)];
                }),
        message(&VekCommonMaster::encodeFileContentRequest,
                [file](Rng& g, auto& r) { r.path = coin(g) ? file : file + ".absent"; }),
        message(&VekCommonMaster::encodeGetBypassRequest),
        message(&VekCommonMaster::encodeSetBypassRequest, enable),
        message(&VekGainMaster::encodeGetMasterRequest),
        message(&VekGainMaster::encodeSetMasterRequest,
                [](Rng& g, auto& r) { r.masterGain = real(g, -60, 12); }),
        message(&VekGainMaster::encodeGetChannelRequest),
        message(&VekGainMaster::encodeSetChannelRequest,
                [](Rng& g, auto& r) { fill(r.channelGain, [&] { return real(g, -30, 6); }); }),
        message(&VekGainMaster::encodeGetFadeBalanceRequest),
        message(&VekGainMaster::encodeSetFadeBalanceRequest,
                [](Rng& g, auto& r) { fill(r.fadeBalance, [&] { return between(g, -15, 15); }); }),
        message(&VekSpeakerMaster::encodeGetEnableRequest),
        message(&VekSpeakerMaster::encodeSetEnableRequest,
                [](Rng& g, auto& r) { fill(r.enable, [&] { return coin(g); }); }),
        message(&VekSpeakerMaster::encodeGetDelayRequest),
        message(&VekSpeakerMaster::encodeSetDelayRequest,
                [](Rng& g, auto& r) { fill(r.delay, [&] { return real(g, 0, 20); }); }),
        message(&VekSpeakerMaster::encodeSetStylePatternRequest,
                [](Rng& g, auto& r) {
                    r.channel = channel(g);
                    r.style = between(g, 0, 7);
                }),
        message(&VekSpeakerMaster::encodeSetSinePatternRequest,
                [](Rng& g, auto& r) {
                    r.channel = channel(g);
                    r.frequency = between(g, 20, 20000);
                }),
        message(&VekEqV2Master::encodeGetEnableRequest),
        message(&VekEqV2Master::encodeSetEnableRequest, enable),
        message(&VekEqV2Master::encodeGetBandCountRequest),
        message(&VekEqV2Master::encodeSetBandCountRequest,
                [](Rng& g, auto& r) { fill(r.bandCount, [&] { return between(g, 0, 20); }); }),
        message(&VekEqV2Master::encodeGetBandConfigRequest, band),
        message(&VekEqV2Master::encodeSetBandConfigRequest, bandConfig),
        message(&VekHfeMaster::encodeGetEnableRequest),
        message(&VekHfeMaster::encodeSetEnableRequest, enable),
        message(&VekHfeMaster::encodeGetChannelConfigRequest, pickChannel),
        message(&VekHfeMaster::encodeSetChannelConfigRequest,
                [](Rng& g, auto& r) {
                    r.channel = channel(g);
                    r.flag1 = coin(g);
                    r.flag2 = coin(g);
                    r.flag3 = coin(g);
                    r.value = real(g, -12, 12);
                }),
        message(&VekVbMaster::encodeGetEnableRequest),
        message(&VekVbMaster::encodeSetEnableRequest, enable),
        message(&VekVbMaster::encodeGetChannelConfigRequest, pickChannel),
        message(&VekVbMaster::encodeSetChannelConfigRequest,
                [](Rng& g, auto& r) {
                    r.channel = channel(g);
                    r.flag = coin(g);
                    r.number = between(g, 0, 1000);
                    fill(r.params, [&] { return real(g, -100, 100); });
                }),
        message(&VekReverbMaster::encodeGetEnableRequest),
        message(&VekReverbMaster::encodeGetModeRequest),
        message(&VekReverbMaster::encodeSetModeRequest,
                [](Rng& g, auto& r) { r.mode = between(g, 0, 7); }),
    };
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
    const std::vector<Message> messages = allMessages(file.path);

    DaemonHarness daemon({{"--reverb"}, ""});
    // Features are announced after the greeting, and the first read follows them.
    ASSERT_TRUE(daemon.waitForOutput("+SEND-HELLO!\n-SEND\n\n") &&
                daemon.waitForOutput("FT232 state is abnormal"));
    std::set<std::string> announced{"Common"};
    for (const std::string& line : daemon.lines("[AST][INF]Support feature(")) {
        announced.insert(line.substr(26, line.size() - 28));
    }
    std::set<std::string> covered;
    for (const Message& m : messages) {
        covered.insert(m.feature);
    }
    ASSERT_EQ(covered, announced);

    std::deque<const Message*> inFlight;
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
                const Message& m = messages[static_cast<size_t>(between(rng, 0, last))];
                std::stringstream frame;
                m.encode(rng, sent % 65535 + 1, frame);
                appendNoise(rng, bytes);
                bytes += frame.str();
                inFlight.push_back(&m);
            }
            sendChunked(daemon, rng, bytes);
        }
        const std::vector<std::string> header = headerOf(daemon.nextFrame(10s));
        const Message& m = *inFlight.front();
        inFlight.pop_front();
        ASSERT_EQ(header, (std::vector<std::string>{std::to_string(expectedNumber), "0", m.feature,
                                                    m.response, "OK"}))
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
