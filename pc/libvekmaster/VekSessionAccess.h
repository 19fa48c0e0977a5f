#pragma once

#include <string>

#include "VekDeviceAccess.h"
#include "VekDeviceReader.h"
#include "VekMasterSession.h"
#include "VekSettingsTable.h"

namespace vekmaster {

// A device on a line of our own, through its session.
class VekSessionAccess : public VekDeviceAccess {
public:
    VekSessionAccess(VekMasterSession& session, const VekSettingsTable& table, std::string path)
        : session_(session), table_(table), path_(std::move(path)), reader_(session, table) {}

    const VekMasterReply& request(const std::string& feature, const std::string& name,
                                  const vekprotocol::VekFields& args, VekRawSink* raw) override {
        return session_.request(feature, name, args, raw);
    }
    const VekMasterReply& send(const VekCheckedRequest& checked, VekRawSink* raw) override {
        return session_.request(checked, raw);
    }
    void exchange(VekMasterExchange::Batch& batch) override { session_.exchange(batch); }
    bool read(const Json* only, VekDeviceReading& reading) override;
    VekTuningApply::Result apply(const Json& document,
                                 const VekTuningApply::Options& options) override {
        return VekTuningApply(session_, table_).run(document, options);
    }
    const VekMasterReply& failure() const override { return reader_.stopped(); }

private:
    VekMasterSession& session_;
    const VekSettingsTable& table_;
    std::string path_;
    VekDeviceReader reader_;
};

}  // namespace vekmaster
