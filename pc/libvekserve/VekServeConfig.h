#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "VekTraceSink.h"

namespace vekserve {

// How `vek_master serve` runs: the lines it owns, where it listens, and the limits that
// keep one client from disturbing the others.
struct VekServeConfig {
    static constexpr const char* kDefaultListen = "127.0.0.1:8741";

    std::vector<std::string> devices;
    // --virtual=FILE: devices made from tuning documents, served after the lines.
    std::vector<std::string> virtuals;
    std::string daemon;    // the daemon a virtual device runs
    std::string stateDir;  // where the journal and checkpoints are kept
    bool journal = true;
    int32_t baudRate = 115200;
    int timeoutMs = 3000;  // for each answer on a line
    int window = 32;       // requests of a batch on a line at once

    std::string host = "127.0.0.1";  // an IP address, or "localhost"
    uint16_t port = 8741;            // 0: any free port (the one taken is printed)
    std::string token;               // needed from every client when not empty

    size_t queueLimit = 64;               // requests waiting per line
    size_t bodyLimit = 1024 * 1024;       // bytes of a request body
    int clientTimeoutMs = 15000;          // to send a request or take an answer
    size_t subscriberLimit = 4096;        // events waiting for one subscriber
    size_t maxClients = 256;              // connections open at once, WebSockets included
    // vek_master --trace=FILE: every line's traffic also goes there (not owned; may be null).
    vekmaster::VekTraceSink* trace = nullptr;

    // Reads HOST:PORT ("127.0.0.1:8741", "[::1]:8741", "localhost:0"); "" or what is
    // wrong with it.
    std::string listen(const std::string& text);
    // The listen address is one only this machine reaches.
    bool loopback() const;
    // Reads the token from the first line of a file; "" or why it cannot be used.
    std::string readToken(const std::string& path);
};

}  // namespace vekserve
