#include "VekEffectProbe.h"

#include <cstdint>
#include <cstdio>

#include "VekLibrary.h"

namespace vekserver {

namespace {

struct Probe {
    const char* effect;
    const char* name;  // as the enable line prints it
    int32_t presence;  // -1 not yet probed, 0 absent, 1 present
};

Probe eqProbe{"equalizer", "EQ", -1};
Probe hfeProbe{"hfe", "Hfe", -1};
Probe vbProbe{"vb", "Vb", -1};

bool probe(Probe& p) {
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
            std::printf("[AST][ZIP]%s to enable %s, ret=%d.\n", VekLibrary::outcome(status), p.name,
                        status);
        }
        return 0;
    });
    if (p.presence != 1) {
        p.presence = 0;
    }
    return p.presence == 1;
}

}  // namespace

bool isEqSupported() {
    return probe(eqProbe);
}
bool isHfeSupported() {
    return probe(hfeProbe);
}
bool isVbSupported() {
    return probe(vbProbe);
}

void resetEffectProbes() {
    eqProbe.presence = -1;
    hfeProbe.presence = -1;
    vbProbe.presence = -1;
}

}  // namespace vekserver
