#pragma once

#include "VekSerDes.h"

namespace vekprotocol {

// What every endpoint holds: one callback it does not own.
template <class CallbackItf>
class VekEndpoint : public VekSerDes {
public:
    void setCallback(CallbackItf* cb) { callback = cb; }

    CallbackItf* callback = nullptr;
};

}  // namespace vekprotocol
