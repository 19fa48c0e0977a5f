#pragma once

#include "VekMasterReply.h"
#include "VekValueJson.h"

namespace vekmaster {

// An answer as one JSON object: feature, message, self, status, fields by name (an
// array for an array or list field), rawDataLength.
class VekReplyJson {
public:
    static VekValueJson::Json of(const VekMasterReply& reply);
};

}  // namespace vekmaster
