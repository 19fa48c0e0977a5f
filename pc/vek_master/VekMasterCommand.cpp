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
        case Verb::Curve:
            line = "curve " + channel + (document.empty() ? "" : " --document=" + document) +
                   (svg.empty() ? "" : " --svg=" + svg) + (csv ? " --csv" : "") +
                   (points == 0 ? "" : " --points=" + std::to_string(points));
            break;
        case Verb::EqImport:
            line = "eq import " + paths[0] + " --channel=" + channel + (fit ? " --fit" : "") +
                   (dryRun ? " --dry-run" : "") + (preamp.empty() ? "" : " --preamp=" + preamp) +
                   (document.empty() ? "" : " --document=" + document);
            break;
        case Verb::EqExport:
            line = "eq export " + channel + (format.empty() ? "" : " --format=" + format) +
                   (document.empty() ? "" : " --document=" + document);
            break;
    }
    return line + (output.empty() ? "" : " --output=" + output);
}

}  // namespace vekmaster
