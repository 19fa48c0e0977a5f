#pragma once

#include <string>
#include <vector>

#include "VekDeviceAccess.h"
#include "VekFilterFit.h"
#include "VekFilterList.h"

namespace vekmaster {

// Filter text onto channels of a device or of a tuning document: read, fitted, and
// written as one partial tuning document through the apply (which reads, sends what
// differs and reads back). The one path every program takes, so that the CLI, the
// server and Python import alike.
class VekFilterImport {
public:
    using Json = VekValueJson::Json;

    struct Request {
        std::string text;
        std::string source;  // names the text in problems: a file name, or "filters"
        std::vector<std::string> channels;
        VekFilterFit::Options options;
        bool dryRun = false;
        size_t points = VekResponseCurve::kDefaultPoints;  // the curves' grid
    };
    struct Fitted {
        VekFilterFit::Channel channel;
        std::vector<VekResponseCurve::Band> before;
        VekFilterFit::Result result;
    };
    struct Outcome {
        int status = VekExitStatus::kOk;
        std::vector<std::string> problems;  // "FILE: line 3: ..."; nothing was sent
        std::string stopped;                // why the device could not be read or set
        std::vector<Fitted> channels;
        Json document;  // the partial tuning document that carries the change
        VekTuningApply::Result applied;
    };

    // "" or why the text of --channel is not a list of channels.
    static std::string channels(const std::string& list, std::vector<std::string>& out);
    // "" or why the text of --preamp names no handling.
    static std::string preamp(const std::string& name, VekFilterFit::Preamp& out);

    // Reads the channels from the device, fits, and applies unless dry run or misfit.
    static Outcome toDevice(VekDeviceAccess& access, const Request& request);
    // Fits against a document's bands and gains and, unless dry run or misfit, puts
    // the result into it.
    static Outcome toDocument(Json& document, const Request& request);

    // The outcome for a program to print or answer: status, problems, per channel the
    // changes, the gain, the largest difference and the curves (frequencies, before,
    // asked, after), then the apply's result.
    static Json json(const Outcome& outcome, size_t points);
    // What a person reads on standard output: per channel what it became and what the
    // fit changed.
    static std::string text(const Outcome& outcome);

private:
    // Parses the text; false with the outcome's problems.
    static bool parse(const Request& request, VekFilterList& filters, Outcome& outcome);
    // Fits every channel and makes the partial document; false with its problems.
    static bool fitAll(const Request& request, const VekFilterList& filters, Outcome& outcome);
};

}  // namespace vekmaster
