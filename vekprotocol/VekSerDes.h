#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace vekprotocol {

using VekFields = std::vector<std::string>;

// A protocol endpoint: the frame hub hands it every complete frame of its feature.
class VekSerDes {
public:
    virtual ~VekSerDes() = default;
    // headerFields: self, peer, feature, message, length, status (and any extras);
    // frame: the whole frame, header line and raw data; rawOffset: first raw byte.
    virtual void decode(const VekFields& headerFields, const VekFields& payloadFields,
                        std::stringstream& frame, uint32_t rawOffset) = 0;
};

}  // namespace vekprotocol
