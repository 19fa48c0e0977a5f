#pragma once

#include <string>
#include <vector>

#include "VekDeviceProfile.h"
#include "VekSettingsTable.h"
#include "VekValueJson.h"

namespace vekmaster {

// A whole tuning as one JSON document:
//   {"format": "vek-tuning/1",
//    "device": {"path", "version", "features", "eqMode", "reverb"},
//    "time": "2024-05-01T10:00:00Z", "notes": "...",
//    "settings": {"Gain": {"master": -10, "channel": {"LF": 0, ...}, ...}, ...}}
// Only "format" and "settings" are read back; a document may hold any part of a tuning.
class VekTuningDocument {
public:
    using Json = VekValueJson::Json;

    static constexpr const char* kFormat = "vek-tuning/1";

    // The document of a snapshot of the device at path.
    static Json make(const VekSettingsTable& table, const std::string& path,
                     const std::string& version, const std::vector<std::string>& features,
                     Json settings);
    // Parses a document's text; "" or why it is not JSON, with where.
    static std::string parse(const std::string& text, Json& document);
    // The number of values the settings hold, and how many of them are missing markers.
    static void count(const VekSettingsTable& table, const Json& settings, int& values,
                      int& missing);
    // "" or the first entry that a device could not take, named by its place in the
    // document: "settings.EqV2.band.CF[7]: value3 is not a number a float can hold".
    static std::string check(const VekSettingsTable& table, const Json& document);
    // The first value of a checked document outside the profile's ranges, its problem
    // led by its place: "Gain.master: Gain SetMaster masterGain 60 is outside ...".
    static VekError outOfRange(const VekSettingsTable& table, const Json& document,
                                               const VekDeviceProfile& profile);
};

}  // namespace vekmaster
