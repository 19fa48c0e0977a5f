#pragma once

#include <string>

#include "VekValueJson.h"

namespace vekmaster {

// One value the device took: which setting and where, what it held before and after, as
// a document's items. Enough to put it back (undo) or take it again (redo).
struct VekSettingChange {
    std::string setting;  // "EqV2.band"
    std::string channel;  // "" for none
    int band = -1;        // -1 for none
    VekValueJson::Json before;  // null when the device had not reported it
    VekValueJson::Json after;
};

}  // namespace vekmaster
