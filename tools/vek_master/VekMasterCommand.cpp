#include "VekMasterCommand.h"

#include "VekMasterMessage.h"

namespace vekmaster {

std::string VekMasterCommand::text() const {
    std::string line;
    switch (verb) {
        case Verb::Message:
            line = VekMasterMessage::text(feature, name, args);
            break;
        case Verb::Snapshot:
            line = "snapshot";
            break;
        case Verb::Apply:
            line = "apply " + paths[0] + (dryRun ? " --dry-run" : "") + (bypass ? " --bypass" : "");
            break;
        case Verb::Diff:
            line = "diff " + paths[0] + ' ' + paths[1];
            break;
    }
    return line + (output.empty() ? "" : " --output=" + output);
}

}  // namespace vekmaster
