#pragma once

#include <cstdint>
#include <string>
#include <vector>

// One request of every message of every feature, from sample_requests.vek: what the
// soak test, the benchmarks and the fuzz corpus maker send.
class SampleRequests {
public:
    struct Request {
        std::string feature;
        std::string message;            // without "Request"
        std::vector<std::string> args;  // the payload fields; "FILE" stands for a file

        // AS:<self>:0:<feature>:<message>Request:0:OK[:<args joined by ':'>]:\n, with
        // the given args and FILE replaced by file.
        std::string frame(uint32_t self, const std::vector<std::string>& fields,
                          const std::string& file) const;
        std::string frame(uint32_t self, const std::string& file) const {
            return frame(self, args, file);
        }
    };

    // Read once; empty when the list cannot be read.
    static const std::vector<Request>& all();
    static const char* path();
};
