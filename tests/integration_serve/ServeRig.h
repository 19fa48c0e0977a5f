#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "MasterRun.h"

// The built `vek_master serve` as a process of its own on the given lines, listening on
// a free loopback port, its output in a file; and a client that speaks HTTP to it.
class ServeRig {
public:
    struct Reply {
        int status = 0;  // 0: the connection ended without an answer
        std::map<std::string, std::string> headers;
        std::string body;
    };

    // extra: more options for serve (--timeout=..., --token-file=...); token: the one
    // the server asks for, which the rig's own look at /api/devices brings.
    explicit ServeRig(const std::vector<std::string>& devices,
                      const std::vector<std::string>& extra = {}, const std::string& token = "");
    // SIGTERM, if it still runs.
    ~ServeRig();
    ServeRig(const ServeRig&) = delete;
    ServeRig& operator=(const ServeRig&) = delete;

    // Listening, and every line connected.
    bool ready() const { return ready_; }
    uint16_t port() const { return port_; }
    pid_t pid() const { return pid_; }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }
    std::string output() const { return log_.read(); }
    // Waits until /api/devices shows line index in state; true when it does.
    bool awaitState(int index, const std::string& state,
                    std::chrono::milliseconds limit = std::chrono::seconds(20)) const;

    // One request on a connection of its own; headers go besides Host (given a Host,
    // that one is sent instead).
    Reply call(const std::string& method, const std::string& target, const std::string& body = "",
               const std::map<std::string, std::string>& headers = {}) const;
    // Bytes as they are, then whatever the server answers: a request cut short plays a
    // client too slow to finish it.
    Reply raw(const std::string& bytes) const;
    // Signals the server and returns its exit status (-1 when it did not end in time).
    // Once only: the process is gone after it.
    int stop(int signo);

private:
    MasterRun::TempFile log_;
    pid_t pid_ = -1;
    std::map<std::string, std::string> bearer_;
    uint16_t port_ = 0;
    bool ready_ = false;
    bool stopped_ = false;
};
