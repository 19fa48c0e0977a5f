#pragma once

#include <string>

#include "VekChannelBands.h"
#include "VekCommandResult.h"
#include "VekDeviceAccess.h"
#include "VekMasterCommand.h"
#include "VekSettingsTable.h"
#include "VekTuningApply.h"

namespace vekmaster {

// Runs commands on one device and puts what they did into words: the full text (or
// JSON) for a single device, one summary line for each of several. The device may be on
// a line of our own or behind a server: the words are the same.
class VekCommandRunner {
public:
    using Json = VekValueJson::Json;

    // device names the line in output file names, index is its place among the
    // devices (--device order; the server's index with --connect); outputDir: several
    // devices write their documents into the directory --output names.
    VekCommandRunner(VekDeviceAccess& access, const VekMessageCatalog& catalog, std::string device,
                     int index, bool json, bool outputDir)
        : access_(access),
          table_(catalog),
          device_(std::move(device)),
          index_(index),
          json_(json),
          outputDir_(outputDir) {}

    VekCommandResult run(const VekMasterCommand& command);

    // Reads and checks a document; false with the result failed (64 for a bad document,
    // 74 for a file that cannot be read).
    static bool load(const VekSettingsTable& table, const std::string& path, Json& document,
                     VekCommandResult& result);
    // The file a device's document goes to in a directory: /dev/ttyUSB0 -> DIR/dev_ttyUSB0.json
    static std::string fileIn(const std::string& directory, const std::string& device);

private:
    VekCommandResult message(const VekMasterCommand& command);
    VekCommandResult snapshot(const VekMasterCommand& command);
    VekCommandResult apply(const VekMasterCommand& command);
    VekCommandResult diff(const VekMasterCommand& command);
    VekCommandResult curve(const VekMasterCommand& command);
    VekCommandResult eqImport(const VekMasterCommand& command);
    VekCommandResult eqExport(const VekMasterCommand& command);
    // What an apply did, in words: each value set (or, dry, each request), what did not
    // take, and a summary line.
    static void describe(const VekTuningApply::Result& applied, bool dryRun,
                         VekCommandResult& result);
    // The bands of the command's channel, from its document or the device; false with
    // the result failed.
    bool channelBands(const VekMasterCommand& command, VekChannelBands& bands,
                      VekCommandResult& result);
    // A tuning to compare: a document, or the device read for what other holds.
    bool side(const std::string& path, const Json* other, Json& settings, VekCommandResult& result);

    VekDeviceAccess& access_;
    VekSettingsTable table_;
    std::string device_;
    int index_;
    bool json_;
    bool outputDir_;
};

}  // namespace vekmaster
