#pragma once

#include <string>

#include "VekMasterOptions.h"

namespace vekmaster {

// vek_master trace show FILE | trace from-log LOG --output=FILE |
// trace replay FILE (--launch=DAEMON [-- ARGS] | --device=PATH) [--timing=original]:
// what a capture holds, a capture made from a daemon's log, and a capture sent again.
class VekTraceCommand {
public:
    // The exit status; out and err are what to print.
    static int run(const VekMasterOptions& options, std::string& out, std::string& err);
    // "" or why the words and options do not make a trace command.
    static std::string check(const VekMasterOptions& options);
    // "2026-11-25 10:31:58.123456" in UTC, or "-" for a time that is not known.
    static std::string time(int64_t timeUs);

private:
    static int show(const VekMasterOptions& options, std::string& out, std::string& err);
    static int fromLog(const VekMasterOptions& options, std::string& out, std::string& err);
    static int replay(const VekMasterOptions& options, std::string& out, std::string& err);
};

}  // namespace vekmaster
