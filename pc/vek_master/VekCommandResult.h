#pragma once

#include <string>

#include "VekExitStatus.h"
#include "VekValueJson.h"

namespace vekmaster {

// What one command did on one device, in the forms vek_master prints it.
struct VekCommandResult {
    int status = VekExitStatus::kOk;
    std::string out;      // standard output, when one device is served
    std::string err;      // complaints, one "vek_master: ..." line each
    std::string summary;  // one line, when several devices are served
    VekValueJson::Json json = VekValueJson::Json::object();  // the same, for --json

    void complain(const std::string& text) { err += "vek_master: " + text + '\n'; }
    // A command that could not run to its end: the complaint is also its summary.
    VekCommandResult& fail(int exitStatus, const std::string& problem) {
        status = exitStatus;
        complain(problem);
        summary = problem;
        json["error"] = problem;
        return *this;
    }
};

}  // namespace vekmaster
