#pragma once

#include <cstdint>

namespace vekserver {

// Start-up probes: whether the front application has the equaliser, Hfe and Vb
// effects. A present effect that is off is switched on. Each effect is asked once;
// later calls give the first answer. The server owns one and asks it while it builds
// its features.
class VekEffectProbes {
public:
    bool isEqSupported() { return probe(eq_); }
    bool isHfeSupported() { return probe(hfe_); }
    bool isVbSupported() { return probe(vb_); }

private:
    struct Probe {
        const char* effect;
        const char* name;  // as the enable line prints it
        int32_t presence;  // -1 not yet probed, 0 absent, 1 present
    };

    static bool probe(Probe& p);

    Probe eq_{"equalizer", "EQ", -1};
    Probe hfe_{"hfe", "Hfe", -1};
    Probe vb_{"vb", "Vb", -1};
};

}  // namespace vekserver
