#include "VekTraceLog.h"

#include <cstdlib>
#include <regex>
#include <vector>

#include "VekHeaderLine.h"

namespace vekmaster {

namespace {

struct Dump {
    const char* open;
    const char* close;
    bool outbound;
};

// The daemon's receive dump is a request from the master; its send dump an answer.
const Dump kDumps[] = {{"+RECV-", "-RECV", true}, {"+SEND-", "-SEND", false}};
constexpr size_t kCloseSize = 5;

int64_t field(const std::string& text) {
    return std::strtoll(text.c_str(), nullptr, 10);
}

// Seconds of a UTC calendar time, without the process's time zone.
int64_t utcSeconds(int64_t year, int64_t month, int64_t day, int64_t h, int64_t m, int64_t s) {
    // Days from the civil date (the proleptic Gregorian calendar).
    year -= month <= 2 ? 1 : 0;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const int64_t yoe = year - era * 400;
    const int64_t doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    const int64_t days = era * 146097 + doe - 719468;
    return days * 86400 + h * 3600 + m * 60 + s;
}

int32_t announced(const std::string& headerLine) {
    vekprotocol::VekFields header;
    vekprotocol::VekFields payload;
    uint32_t rawOffset = 0;
    const std::string line = headerLine + '\n';
    vekprotocol::VekHeaderLine::cut(line.data(), static_cast<int32_t>(headerLine.size()), header,
                                    payload, rawOffset);
    int32_t length = 0;
    return vekprotocol::VekHeaderLine::readLength(header, length) && length > 0 ? length : 0;
}

}  // namespace

std::string VekTraceLog::strip(const std::string& line, int64_t& timeUs) {
    static const std::regex journal(
        R"(^(\d{4})-(\d\d)-(\d\d)T(\d\d):(\d\d):(\d\d)(\.(\d{1,6}))?(Z|([+-])(\d\d):?(\d\d))? \S+ [^ :\[]+\[\d+\]: ?)");
    std::smatch m;
    timeUs = 0;
    if (!std::regex_search(line, m, journal)) {
        return line;
    }
    int64_t seconds = utcSeconds(field(m[1]), field(m[2]), field(m[3]), field(m[4]), field(m[5]),
                                 field(m[6]));
    if (m[10].matched) {
        const int64_t offset = field(m[11]) * 3600 + field(m[12]) * 60;
        seconds -= m[10] == "+" ? offset : -offset;
    }
    int64_t micros = 0;
    if (m[8].matched) {
        std::string digits = m[8];
        digits.resize(6, '0');
        micros = field(digits);
    }
    timeUs = seconds * 1000000 + micros;
    return line.substr(static_cast<size_t>(m.length(0)));
}

size_t VekTraceLog::read(const std::string& log, VekTrace& trace) {
    uint32_t line = 0;
    bool named = false;
    size_t found = 0;
    const Dump* dump = nullptr;  // the dump being read
    std::string headerLine;
    std::string body;  // what follows the header line, lines joined again
    bool bodyStarted = false;
    int32_t raw = 0;
    int64_t dumpTime = 0;

    const auto finish = [&](std::string bytes, bool stray) {
        VekTracePacket packet;
        if (!named) {
            line = trace.lineFor("log");
            named = true;
        }
        packet.line = line;
        packet.outbound = dump->outbound;
        packet.timeUs = dumpTime;
        // The greeting is dumped like a frame; on the wire it is stray bytes.
        packet.stray = stray || bytes.compare(0, 2, "AS") != 0;
        packet.bytes = std::move(bytes);
        trace.packets.push_back(std::move(packet));
        ++found;
        dump = nullptr;
    };

    size_t at = 0;
    while (at < log.size()) {
        size_t end = log.find('\n', at);
        if (end == std::string::npos) {
            end = log.size();
        }
        int64_t timeUs = 0;
        const std::string text = strip(log.substr(at, end - at), timeUs);
        at = end + 1;
        if (dump != nullptr) {
            body += (bodyStarted ? "\n" : "") + text;
            bodyStarted = true;
            const size_t whole = static_cast<size_t>(raw);
            if (body.size() >= whole + kCloseSize &&
                body.compare(whole, kCloseSize, dump->close) == 0) {
                finish(headerLine + '\n' + body.substr(0, whole), false);
            } else if (body.size() >= kCloseSize &&
                       body.compare(body.size() - kCloseSize, kCloseSize, dump->close) == 0) {
                finish(headerLine + '\n' + body.substr(0, body.size() - kCloseSize), true);
            }
            continue;
        }
        const size_t args = text.find("[AST][INF]Args: ");
        if (args != std::string::npos) {
            const size_t device = text.find("device=", args);
            if (device != std::string::npos) {
                const size_t stop = text.find(',', device);
                line = trace.lineFor(text.substr(device + 7, stop == std::string::npos
                                                                  ? std::string::npos
                                                                  : stop - device - 7));
                named = true;
            }
            continue;
        }
        for (const Dump& d : kDumps) {
            if (text.compare(0, 6, d.open) == 0) {
                dump = &d;
                dumpTime = timeUs;
                headerLine = text.substr(6);
                raw = announced(headerLine);
                body.clear();
                bodyStarted = false;
                // A header line cut by the log buffer has its close on the same line.
                if (headerLine.size() >= kCloseSize &&
                    headerLine.compare(headerLine.size() - kCloseSize, kCloseSize, d.close) == 0) {
                    finish(headerLine.substr(0, headerLine.size() - kCloseSize), true);
                }
                break;
            }
        }
    }
    return found;
}

}  // namespace vekmaster
