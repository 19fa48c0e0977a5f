#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "VekFrameReceiver.h"
#include "VekMasterCommand.h"
#include "VekMasterReply.h"
#include "VekMessageCatalog.h"
#include "VekSerialLine.h"

namespace vekmaster {

// One connection to the slave: sends commands one at a time, waits for each answer and
// prints it. Requests are numbered 1, 2, ... for the whole run.
class VekMasterSession {
public:
    // baudRate bounds how long the longest answer may take to arrive.
    VekMasterSession(VekSerialLine& line, VekMessageCatalog& catalog, VekMasterReply& reply,
                     int timeoutMs, int32_t baudRate, bool json);

    // Bytes that arrived before the first command (behind the daemon's greeting).
    void preload(const std::string& bytes);
    // Runs the commands in order and stops at the first failure unless keepGoing; echo
    // prints each command before its answer. Returns the first failure's status, or 0.
    int runAll(const std::vector<VekMasterCommand>& commands, bool echo, bool keepGoing);

private:
    int run(const VekMasterCommand& command, bool echo);
    // Reads the line until the expected answer is in; its exit status.
    int await(const std::string& what);
    bool showProgress(const std::string& what) const;

    VekSerialLine& line_;
    VekMasterReply& reply_;
    VekFrameReceiver receiver_;
    int timeoutMs_;
    int64_t frameMs_;
    bool json_;
    bool terminal_;
    uint32_t self_ = 0;
};

}  // namespace vekmaster
