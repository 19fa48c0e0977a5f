#pragma once

#include <string>
#include <vector>

#include "VekValueJson.h"

namespace vekmaster {

// What a device said about itself and its settings in one read: the makings of a
// snapshot document, wherever the read was made (on a line of our own or by a server).
struct VekDeviceReading {
    std::string path;  // the line the device is on
    std::string version;
    std::vector<std::string> features;
    VekValueJson::Json settings = VekValueJson::Json::object();  // a document's "settings"
    int missing = 0;  // values the device answered NG for
};

}  // namespace vekmaster
