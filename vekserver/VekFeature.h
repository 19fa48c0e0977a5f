#pragma once

#include <memory>

namespace vekserver {

// One served feature: its slave endpoint and the callback implementation behind it.
template <class Slave, class Impl>
struct VekFeature {
    std::unique_ptr<Slave> endpoint;
    std::unique_ptr<Impl> callback;

    // Endpoint first, then its callback.
    void reset() {
        endpoint.reset();
        callback.reset();
    }
};

}  // namespace vekserver
