#pragma once

#include "VekStaticAssets.h"

namespace vekserve {

// The browser panel (pc/panel/www), compiled into the program: index.html at "/",
// its modules, styles and icon beside it.
class VekPanelAssets {
public:
    static void addTo(VekStaticAssets& assets);
};

}  // namespace vekserve
