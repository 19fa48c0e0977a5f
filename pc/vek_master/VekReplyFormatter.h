#pragma once

#include <string>

#include "VekMasterReply.h"

namespace vekmaster {

// Turns a received answer into what vek_master prints.
class VekReplyFormatter {
public:
    // name=value lines (parts joined by ':' as on the wire), rawDataLength=N when the
    // answer carries raw data, then OK or NG.
    static std::string text(const VekMasterReply& reply);
    // One JSON object on one line: feature, message, self, status, fields, rawDataLength.
    static std::string json(const VekMasterReply& reply);
};

}  // namespace vekmaster
