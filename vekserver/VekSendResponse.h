#pragma once

#include <cstdint>
#include <sstream>

#include "VekTransport.h"

namespace vekserver {

// Sends the stream's whole content in one transport write.
int32_t sendResponse(vektransport::VekTransport* transport, std::stringstream& out);

}  // namespace vekserver
