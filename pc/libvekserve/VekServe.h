#pragma once

#include "VekServeConfig.h"
#include "VekStaticAssets.h"

namespace vekserve {

// `vek_master serve`: owns the lines and serves the API on them until SIGINT or
// SIGTERM. Its lines go to standard output: where it listens, each line's state as it
// changes, and the stop.
class VekServe {
public:
    // assets: the pages served besides the API (none when empty).
    VekServe(VekServeConfig config, const VekStaticAssets& assets)
        : config_(std::move(config)), assets_(assets) {}

    // 0 after a stop by signal; 74 when the listen address cannot be had.
    int run();

private:
    VekServeConfig config_;
    const VekStaticAssets& assets_;
};

}  // namespace vekserve
