#pragma once

#include "VekDeviceProfile.h"
#include "VekMessageCatalog.h"
#include "VekSettingsTable.h"
#include "VekValueJson.h"

namespace vekmaster {

// The schema as GET /api/schema answers it: the channels, every message with its fields
// and its answer's, and every setting of the table with the messages that read and
// write it, the feature a device must serve for it, its keys (channels, bands) and its
// value fields with the profile's ranges and units. A client builds its pages from it
// and names no message itself.
class VekSchemaJson {
public:
    using Json = VekValueJson::Json;

    static Json of(const VekMessageCatalog& catalog, const VekSettingsTable& table,
                   const VekDeviceProfile& profile);
};

}  // namespace vekmaster
