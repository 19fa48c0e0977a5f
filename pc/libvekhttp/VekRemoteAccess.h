#pragma once

#include <string>

#include "VekDeviceAccess.h"
#include "VekFrameReader.h"
#include "VekHttpClient.h"
#include "VekMessageCatalog.h"
#include "VekReplyDecoder.h"
#include "VekSettingsTable.h"

namespace vekhttp {

// A device served by `vek_master serve`, for vek_master --connect: every question goes
// to the server's API and every answer comes back as the structure a line of our own
// gives, so the commands print the same. An answer is decoded from its header line
// with our own catalogue, and its raw data passes through the frame reader as it would
// off a line.
class VekRemoteAccess : public vekmaster::VekDeviceAccess {
public:
    // The most messages the server takes in one batch; a longer one goes in slices.
    static constexpr size_t kMaxBatch = 1024;

    VekRemoteAccess(VekHttpClient& client, int device);
    VekRemoteAccess(const VekRemoteAccess&) = delete;
    VekRemoteAccess& operator=(const VekRemoteAccess&) = delete;

    const vekmaster::VekMasterReply& request(const std::string& feature, const std::string& name,
                                             const vekprotocol::VekFields& args,
                                             vekmaster::VekRawSink* raw) override;
    // The batch in one request to the server, whose line keeps it in one window.
    void exchange(vekmaster::VekMasterExchange::Batch& batch) override;
    bool read(const Json* only, vekmaster::VekDeviceReading& reading) override;
    vekmaster::VekTuningApply::Result apply(const Json& document,
                                            const vekmaster::VekTuningApply::Options& options) override;
    const vekmaster::VekMasterReply& failure() const override { return failure_; }

private:
    // Sets reply to how a request fared that got no answer: the status says which way.
    void refused(int status, const std::string& problem, vekmaster::VekMasterReply& reply) const;
    // Feeds an answer's header line to reader; true when it made a reply.
    bool feedFrame(vekmaster::VekFrameReader& reader, const Json& answer);
    // The "error" of a refusal's body, or the body itself.
    static std::string errorOf(const std::string& body);

    VekHttpClient& client_;
    std::string base_;  // "/api/devices/N"
    vekmaster::VekMasterReply reply_;
    const vekmaster::VekMessageCatalog& catalog_;
    vekmaster::VekReplyDecoder decoder_;
    const vekmaster::VekSettingsTable& table_;
    vekmaster::VekMasterReply failure_;
};

}  // namespace vekhttp
