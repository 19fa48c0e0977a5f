#pragma once

namespace vekserver {

// Start-up probes: whether the front application has the effect. A present effect
// that is off is switched on. Each asks the library once per process.
bool isEqSupported();
bool isHfeSupported();
bool isVbSupported();

// Forgets what the probes found, so that tests can probe again.
void resetEffectProbes();

}  // namespace vekserver
