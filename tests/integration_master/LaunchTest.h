#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MasterRun.h"

// vek_master --launch against the built daemon, with the daemon's log in a known file.
class LaunchTest : public ::testing::Test {
protected:
    MasterRun::Result launch(std::vector<std::string> args, const std::string& input = "",
                             const std::vector<std::string>& env = {},
                             const std::string& cwd = "") {
        args.insert(args.begin(), {"--launch=" VEK_TUNER_PATH, "--log=" + log.path()});
        return MasterRun::run(args, input, env, cwd);
    }
    // What vek_master prints on standard error around the commands' own complaints.
    std::string stderrWith(const std::string& complaints = "") const {
        return "daemon log: " + log.path() + '\n' + complaints + "daemon exited with status 0\n";
    }

    MasterRun::TempFile log;
};
