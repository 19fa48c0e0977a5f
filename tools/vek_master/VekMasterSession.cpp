#include "VekMasterSession.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "VekComplain.h"
#include "VekExitStatus.h"
#include "VekReplyFormatter.h"

namespace vekmaster {

namespace {

using Clock = std::chrono::steady_clock;

// Answers smaller than this arrive too fast for a progress line to help.
constexpr int32_t kProgressFrom = 4096;

void print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

bool writeFile(const std::string& path, const std::string& bytes) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    bool written =
        file != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    written = (file != nullptr && std::fclose(file) == 0) && written;
    if (!written) {
        complain("cannot write " + path + ": " + std::strerror(errno));
    }
    return written;
}

}  // namespace

VekMasterSession::VekMasterSession(VekSerialLine& line, VekMessageCatalog& catalog,
                                   VekMasterReply& reply, int timeoutMs, int32_t baudRate,
                                   bool json)
    : line_(line),
      reply_(reply),
      receiver_(catalog),
      timeoutMs_(timeoutMs),
      // Ten bits a byte on an 8N1 line.
      frameMs_(int64_t{vekprotocol::VekFrameHub::kCacheSize} * 10 * 1000 / baudRate + 1),
      json_(json),
      terminal_(isatty(STDERR_FILENO) == 1) {}

void VekMasterSession::preload(const std::string& bytes) {
    receiver_.feed(bytes.data(), bytes.size());
}

int VekMasterSession::runAll(const std::vector<VekMasterCommand>& commands, bool echo,
                             bool keepGoing) {
    int first = VekExitStatus::kOk;
    for (const VekMasterCommand& command : commands) {
        const int status = run(command, echo);
        if (status != VekExitStatus::kOk) {
            first = first == VekExitStatus::kOk ? status : first;
            if (!keepGoing) {
                break;
            }
        }
    }
    return first;
}

int VekMasterSession::run(const VekMasterCommand& command, bool echo) {
    const VekMasterMessage& message = *command.message;
    const std::string what = message.feature + ' ' + message.name;
    if (echo && !json_) {
        print("> " + command.text() + '\n');
    }
    self_ = self_ >= 65535 ? 1 : self_ + 1;
    reply_.expect(message.feature, message.response);
    std::stringstream frame;
    message.encode(command.args, self_, frame);  // the ARGs were checked when it was prepared
    if (!line_.send(frame.str(), timeoutMs_)) {
        complain("cannot send " + what + ": " + std::strerror(errno));
        return VekExitStatus::kIo;
    }
    const int status = await(what);
    if (status != VekExitStatus::kOk) {
        return status;
    }
    print(json_ ? VekReplyFormatter::json(reply_) : VekReplyFormatter::text(reply_));
    if (reply_.fail) {
        return VekExitStatus::kNg;
    }
    if (!command.output.empty() && !writeFile(command.output, reply_.rawData)) {
        return VekExitStatus::kIo;
    }
    return VekExitStatus::kOk;
}

int VekMasterSession::await(const std::string& what) {
    const auto limit = std::chrono::milliseconds(timeoutMs_);
    auto deadline = Clock::now() + limit;
    // However the bytes keep coming, no answer the hub can hold takes longer than this.
    const auto cap = deadline + std::chrono::milliseconds(frameMs_);
    receiver_.takeDropped();
    int status = VekExitStatus::kOk;
    bool shown = false;
    char buffer[4096];
    while (!reply_.received) {
        const int32_t dropped = receiver_.takeDropped();
        if (dropped > 0) {
            complain(what + ": the answer carries " + std::to_string(dropped) +
                     " bytes of raw data; a frame holds at most " +
                     std::to_string(vekprotocol::VekFrameHub::kCacheSize) + " bytes");
            status = VekExitStatus::kNoAnswer;
            break;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            complain("no answer to " + what + " within " + std::to_string(timeoutMs_) + " ms");
            status = VekExitStatus::kNoAnswer;
            break;
        }
        const ssize_t n = line_.receive(buffer, sizeof(buffer), static_cast<int>(left));
        if (n < 0) {
            complain("the line failed while waiting for " + what + ": " + std::strerror(errno));
            status = VekExitStatus::kIo;
            break;
        }
        receiver_.feed(buffer, static_cast<size_t>(n));
        // A long answer on a slow line takes longer than the limit: while one is coming
        // in, the limit counts from its latest byte.
        if (n > 0 && receiver_.inFrame()) {
            deadline = std::min(Clock::now() + limit, cap);
        }
        shown = showProgress(what) || shown;
    }
    if (shown) {
        std::fputs("\r\033[K", stderr);
    }
    return status;
}

bool VekMasterSession::showProgress(const std::string& what) const {
    const int32_t announced = receiver_.announced();
    if (!terminal_ || announced < kProgressFrom) {
        return false;
    }
    std::fprintf(stderr, "\r%s: %d of %d bytes", what.c_str(),
                 static_cast<int>(receiver_.arrived()), static_cast<int>(announced));
    return true;
}

}  // namespace vekmaster
