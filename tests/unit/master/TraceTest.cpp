#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "VekPcapng.h"
#include "VekTraceFrame.h"
#include "VekTraceLog.h"
#include "VekTraceReplay.h"
#include "VekTraceSplitter.h"

namespace {

using vekmaster::VekPcapng;
using vekmaster::VekTrace;
using vekmaster::VekTraceFrame;
using vekmaster::VekTraceLog;
using vekmaster::VekTracePacket;
using vekmaster::VekTraceSplitter;

std::string bytes(const char* data, size_t size) { return std::string(data, size); }

// "in"/"out", "stray" and the bytes of each packet, one a line.
std::string summary(const std::vector<VekTracePacket>& packets) {
    std::string out;
    for (const VekTracePacket& p : packets) {
        out += std::string(p.outbound ? "out " : "in ") + (p.stray ? "stray " : "") + p.bytes + '|';
    }
    return out;
}

TEST(PcapngTest, PacketBlockIsLittleEndianWithDirectionAndStrayComment) {
    VekTracePacket p;
    p.line = 1;
    p.outbound = true;
    p.timeUs = 0x100000002LL;
    p.stray = true;
    p.bytes = "AS:";
    const char expected[] =
        "\x06\0\0\0" "\x40\0\0\0"                     // type 6, 64 bytes
        "\x01\0\0\0" "\x01\0\0\0" "\x02\0\0\0"         // interface 1, time high, low
        "\x03\0\0\0" "\x03\0\0\0" "AS:\0"              // lengths, data padded to 4
        "\x02\0\x04\0" "\x02\0\0\0"                    // flags: outbound
        "\x01\0\x0b\0" "stray bytes\0"                 // comment
        "\0\0\0\0" "\x40\0\0\0";
    EXPECT_EQ(VekPcapng::packet(p), bytes(expected, sizeof(expected) - 1));
    const std::string shb = VekPcapng::sectionHeader();
    EXPECT_EQ(shb.substr(0, 12), bytes("\x0a\x0d\x0d\x0a\x30\0\0\0\x4d\x3c\x2b\x1a", 12));
    const std::string idb = VekPcapng::interfaceDescription("/dev/x");
    EXPECT_EQ(idb.substr(0, 12), bytes("\x01\0\0\0\x2c\0\0\0\x96\0\0\0", 12));  // link type 150
}

TEST(PcapngTest, DecodeGivesBackWhatWasEncodedAndNamesWhatIsWrong) {
    VekTrace trace;
    trace.lineFor("/dev/ttyUSB0");
    trace.lineFor("/dev/ttyUSB1");
    trace.packets = {{0, false, 1, true, "HELLO!\n"},
                     {1, true, 1795599118123456, false, "AS:1:0:Gain:GetMasterRequest:0:OK:\n"},
                     {0, false, 7, false, std::string("AS:1:0:Common:FileContentResponse:3:OK:<p>:\n\0\xff\n", 48)}};
    const std::string file = VekPcapng::encode(trace);
    VekTrace back;
    ASSERT_EQ(VekPcapng::decode(file, back), "");
    EXPECT_EQ(back.lines, trace.lines);
    ASSERT_EQ(back.packets.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(back.packets[i].line, trace.packets[i].line);
        EXPECT_EQ(back.packets[i].outbound, trace.packets[i].outbound);
        EXPECT_EQ(back.packets[i].timeUs, trace.packets[i].timeUs);
        EXPECT_EQ(back.packets[i].stray, trace.packets[i].stray);
        EXPECT_EQ(back.packets[i].bytes, trace.packets[i].bytes);
    }
    VekTrace cut;
    EXPECT_EQ(VekPcapng::decode(file.substr(0, file.size() - 2), cut),
              "a block at byte " + std::to_string(file.size() - 92) + " has a bad length");
    std::string big = file;
    big[8] = '\x1a';
    big[11] = '\x4d';
    EXPECT_EQ(VekPcapng::decode(big, cut), "not a little-endian pcapng section at byte 0");
}

TEST(TraceSplitterTest, CutsFramesAcrossReadsAndKeepsStrayBytesApart) {
    VekTraceSplitter s;
    std::vector<VekTracePacket> out;
    const auto feed = [&](const std::string& chunk, int64_t time) {
        s.feed(chunk.data(), chunk.size(), time, out);
    };
    feed("HELLO!\nAS:1:0:Common:Vers", 1);
    EXPECT_EQ(summary(out), "in stray HELLO!\n|");
    feed("ionRequest:0:OK:\nnoiseAS:2:0:Common:FileContentResponse:4:OK:<p>:\nab", 2);
    feed("cdA", 3);
    feed("S:bad\nAS:3:0:Gain:GetMasterResponse:0:OK:<-12>:\n", 4);
    EXPECT_EQ(summary(out),
              "in stray HELLO!\n|in AS:1:0:Common:VersionRequest:0:OK:\n|in stray noise|"
              "in AS:2:0:Common:FileContentResponse:4:OK:<p>:\nabcd|in AS:bad\n|"
              "in AS:3:0:Gain:GetMasterResponse:0:OK:<-12>:\n|");
    EXPECT_EQ(out[1].timeUs, 2);  // the time of its last byte
    EXPECT_EQ(out[3].timeUs, 3);
    feed("AS:4:0:Common:FileContentResponse:9:OK:<p>:\nabc", 5);
    out.clear();
    s.flush(6, out);
    EXPECT_EQ(summary(out), "in stray AS:4:0:Common:FileContentResponse:9:OK:<p>:\nabc|");
}

const char kLog[] =
    "[AST][INF]Starting vek_tuner.\n"
    "[AST][INF]Args: progressName=vek_server, device=/dev/pts/7, baudRate=115200, eqMode=0, enReverb=0\n"
    "\n+SEND-HELLO!\n-SEND\n\n"
    "\n+RECV-AS:1:0:Common:VersionRequest:0:OK:<M1.0>:\n-RECV\n\n"
    "[AST][INF]Master version=M1.0, slave version=A00020001.\n"
    "\n+SEND-AS:1:0:Common:FileContentResponse:9:OK:</x>:\nab\ncd\nefg-SEND\n\n"
    "\n+SEND-AS:2:0:Common:FileContentResponse:9:OK:</x>:\nab-SEND\n\n";

TEST(TraceLogTest, DumpsBecomePacketsOnTheLineTheArgsName) {
    VekTrace trace;
    EXPECT_EQ(VekTraceLog::read(kLog, trace), 4u);
    EXPECT_EQ(trace.lines, std::vector<std::string>{"/dev/pts/7"});
    EXPECT_EQ(summary(trace.packets),
              "in stray HELLO!\n|out AS:1:0:Common:VersionRequest:0:OK:<M1.0>:\n|"
              "in AS:1:0:Common:FileContentResponse:9:OK:</x>:\nab\ncd\nefg|"
              "in stray AS:2:0:Common:FileContentResponse:9:OK:</x>:\nab|");
    EXPECT_EQ(trace.packets[1].timeUs, 0);
}

TEST(TraceLogTest, AJournalsLinesGiveTheirTimes) {
    std::string journal;
    const std::string log = kLog;
    for (size_t at = 0; at < log.size();) {
        const size_t end = log.find('\n', at);
        journal += "2026-11-25T10:31:58.123456+0100 host vek_tuner[42]: " +
                   log.substr(at, end - at + 1);
        at = end + 1;
    }
    VekTrace trace;
    EXPECT_EQ(VekTraceLog::read(journal, trace), 4u);
    ASSERT_EQ(trace.packets.size(), 4u);
    EXPECT_EQ(trace.packets[1].bytes, "AS:1:0:Common:VersionRequest:0:OK:<M1.0>:\n");
    EXPECT_EQ(trace.packets[1].timeUs, 1795599118123456LL);
    int64_t time = 0;
    EXPECT_EQ(VekTraceLog::strip("2026-11-25T09:31:58Z h vek_tuner@ttyUSB0[1]: -SEND", time), "-SEND");
    EXPECT_EQ(time, 1795599118000000LL);
    EXPECT_EQ(VekTraceLog::strip("plain line", time), "plain line");
    EXPECT_EQ(time, 0);
}

TEST(TraceFrameTest, FieldsAreNamedAfterTheRecord) {
    const vekmaster::VekMessageCatalog& catalog = vekmaster::VekMessageCatalog::shared();
    using Named = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(VekTraceFrame::parse("AS:1:0:Gain:GetFadeBalanceResponse:0:OK:<2:-1:15>:\n").named(catalog),
              (Named{{"fadeBalance[0]", "2"}, {"fadeBalance[1]", "-1"}, {"fadeBalance[2]", "15"}}));
    EXPECT_EQ(VekTraceFrame::parse("AS:1:0:Common:FileListResponse:0:OK:<Gain:a:b>:\n").named(catalog),
              (Named{{"feature", "Gain"}, {"files[0]", "a"}, {"files[1]", "b"}}));
    EXPECT_EQ(VekTraceFrame::parse("AS:1:0:Gain:NoSuchResponse:0:OK:<7>:\n").named(catalog),
              (Named{{"field0", "7"}}));
    EXPECT_EQ(VekTraceFrame::text(std::string("AS:1:0:Common:FileContentResponse:2:OK:<p>:\n\0\n", 46)),
              "AS:1:0:Common:FileContentResponse:2:OK:<p>: +2 bytes");
    EXPECT_EQ(VekTraceFrame::text("HELLO!\n\x01"), "HELLO!\\n\\x01");
}

TEST(TraceReplayTest, ComparisonNamesTheMessageAndFieldButNotTheNumbers) {
    const vekmaster::VekTraceReplay replay;
    using Lines = std::vector<std::string>;
    EXPECT_EQ(replay.compare("AS:1:0:Gain:GetMasterResponse:0:OK:<-12>:\n",
                             "AS:9:5:Gain:GetMasterResponse:0:OK:<-12>:\n"),
              Lines{});
    EXPECT_EQ(replay.compare("AS:1:0:Gain:GetMasterResponse:0:OK:<-12>:\n",
                             "AS:1:0:Gain:GetMasterResponse:0:NG:<0>:\n"),
              (Lines{"Gain GetMasterResponse: status OK, now NG",
                     "Gain GetMasterResponse: masterGain -12, now 0"}));
    EXPECT_EQ(replay.compare("AS:1:0:Common:FileContentResponse:2:OK:<p>:\nab",
                             "AS:1:0:Common:FileContentResponse:2:OK:<p>:\nac"),
              Lines{"Common FileContentResponse: the raw data differs"});
    EXPECT_EQ(replay.compare("AS:1:0:Gain:GetMasterResponse:0:OK:<-12>:\n",
                             "AS:1:0:Gain:GetChannelResponse:0:OK:<0:0:0:0:0:0>:\n"),
              Lines{"Gain GetMasterResponse: Gain GetChannelResponse came instead"});
}

}  // namespace
