#pragma once

#include <string>
#include <vector>

#include "VekMasterCommand.h"
#include "VekMessageCatalog.h"

namespace vekmaster {

// Turns the words of a command (from the command line or a script line) into a checked
// command: FEATURE MESSAGE ARG..., "snapshot", "apply FILE", "diff A B", "curve CHANNEL",
// "eq import FILE" or "eq export CHANNEL".
class VekCommandReader {
public:
    // The verbs, for the usage text.
    static bool isVerb(const std::string& word);
    // command comes with its options set (output, dryRun, bypass); "" or what is wrong.
    // A message's values are checked against limits unless it is null (--force).
    static std::string read(const VekMessageCatalog& catalog, const VekDeviceProfile* limits,
                            const std::vector<std::string>& words, VekMasterCommand& command);
    // A script line: its words, of which --output=FILE, --dry-run and --bypass are options
    // of its command; "" or what is wrong.
    static std::string readLine(const VekMessageCatalog& catalog, const VekDeviceProfile* limits,
                                const std::vector<std::string>& words, VekMasterCommand& command);
};

}  // namespace vekmaster
