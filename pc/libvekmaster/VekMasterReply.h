#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "VekError.h"
#include "VekFieldPrinter.h"

namespace vekmaster {

// One request's outcome: the answer the master waited for, with its fields by name and
// type, or why there is none. Nothing here is printed; the CLI, the server and the
// Python package each present it their own way.
struct VekMasterReply {
    enum class Outcome {
        Ok,          // answered OK
        Ng,          // answered NG
        Refused,     // the arguments do not fit the message: nothing was sent
        NoAnswer,    // nothing came in time
        LineFailed,  // the line failed while sending or waiting
        RawFailed,   // the answer came, but its raw data could not be kept
    };

    // Expected: the feature and the response's message name.
    std::string feature;
    std::string message;
    bool received = false;

    Outcome outcome = Outcome::NoAnswer;
    std::string problem;  // what went wrong, for every outcome but Ok and Ng
    // NoAnswer because the answer was lost on the line or could not be told from another
    // one; the device is alive and may have acted on the request.
    bool lost = false;

    uint32_t self = 0;
    bool fail = false;
    int32_t rawDataLength = 0;
    // The raw data, when no sink was given for it; otherwise it went to the sink.
    std::string rawData;
    std::vector<VekFieldPrinter::Field> fields;
    // The answer's header line as it came, without its line feed: decoded again by a
    // client of a server, it gives this very reply.
    std::string frame;

    void expect(const std::string& expectedFeature, const std::string& expectedMessage) {
        *this = VekMasterReply();
        feature = expectedFeature;
        message = expectedMessage;
    }
    bool answered() const { return outcome == Outcome::Ok || outcome == Outcome::Ng; }
    // Why there is no answer, as an error; none when it was answered.
    VekError error() const {
        switch (outcome) {
            case Outcome::Ok:
            case Outcome::Ng:
                break;
            case Outcome::Refused:
                return {VekError::Kind::Usage, problem};
            case Outcome::NoAnswer:
                return {VekError::Kind::NoAnswer, problem};
            case Outcome::LineFailed:
                return {VekError::Kind::LineFailed, problem};
            case Outcome::RawFailed:
                return {VekError::Kind::RawFailed, problem};
        }
        return {};
    }
    // The field of that name, or null.
    const VekFieldPrinter::Field* field(const std::string& name) const {
        for (const VekFieldPrinter::Field& f : fields) {
            if (f.name == name) {
                return &f;
            }
        }
        return nullptr;
    }
};

}  // namespace vekmaster
