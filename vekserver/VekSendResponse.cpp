#include "VekSendResponse.h"

#include <string>

namespace vekserver {

int32_t sendResponse(vektransport::VekTransport* transport, std::stringstream& out) {
    const std::string frame = out.str();
    return transport->write(frame.data(), static_cast<uint32_t>(frame.size()));
}

}  // namespace vekserver
