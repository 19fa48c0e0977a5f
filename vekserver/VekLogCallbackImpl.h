#pragma once

#include "VekLogCallbackItf.h"

namespace vekserver {

// The protocol library's reports go to standard output as they are.
class VekLogCallbackImpl : public vekprotocol::VekLogCallbackItf {
public:
    explicit VekLogCallbackImpl(int32_t lvl) { level = lvl; }
    void onLog(const char* text) override;
};

}  // namespace vekserver
