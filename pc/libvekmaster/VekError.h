#pragma once

#include <string>
#include <utility>

namespace vekmaster {

// Why something could not be done, as a value: callers tell kinds apart by kind, never
// by comparing texts. Each kind stands for one exit status, one HTTP status and one
// Python exception (VekExitStatus, VekExitHttp, the binding).
struct VekError {
    enum class Kind {
        None,
        Usage,       // the request, its ARGs or a document do not fit: nothing was sent
        Range,       // a value outside the device profile's ranges: nothing was sent
        NotFound,    // no such device, file or setting
        Busy,        // the line is disconnected, stopping or has too much waiting
        NoAnswer,    // nothing came in time
        LineFailed,  // the line failed while sending or waiting
        RawFailed,   // the answer came, but its raw data could not be kept
        BadAnswer,   // the answer came, but without the values the request needs
    };

    Kind kind = Kind::None;
    std::string text;
    std::string field;  // Range: the field out of range, with its bounds
    double min = 0;
    double max = 0;

    VekError() = default;
    VekError(Kind k, std::string why) : kind(k), text(std::move(why)) {}

    explicit operator bool() const { return kind != Kind::None; }
};

}  // namespace vekmaster
