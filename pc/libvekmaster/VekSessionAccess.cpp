#include "VekSessionAccess.h"

namespace vekmaster {

bool VekSessionAccess::read(const Json* only, VekDeviceReading& reading) {
    reading = VekDeviceReading();
    reading.path = path_;
    return reader_.identify(reading.version, reading.features) &&
           reader_.read(reading.features, only, reading.settings, reading.missing);
}

}  // namespace vekmaster
