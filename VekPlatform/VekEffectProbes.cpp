#include "VekEffectProbes.h"

#include "VekLibrary.h"
#include "VekLog.h"

namespace vekserver {

bool VekEffectProbes::probe(Probe& p) {
    if (p.presence != -1) {
        return p.presence == 1;
    }
    VekLibrary::with<VekLibrary::App>([&p](VekLibrary::App& app) {
        bool on = false;
        if (app.getEffectEnable(VekLibrary::kFrontApp, p.effect, &on) != 0) {
            return 0;
        }
        p.presence = 1;
        if (!on) {
            const int32_t status = app.setEffectEnable(VekLibrary::kFrontApp, p.effect, true);
            VekLog::zip("%s to enable %s, ret=%d.\n", VekLibrary::outcome(status), p.name, status);
        }
        return 0;
    });
    if (p.presence != 1) {
        p.presence = 0;
    }
    return p.presence == 1;
}

}  // namespace vekserver
