#pragma once

#include <string>

#include "VekDeviceReading.h"
#include "VekMasterExchange.h"
#include "VekMasterReply.h"
#include "VekMessageCatalog.h"
#include "VekRawSink.h"
#include "VekSerDes.h"
#include "VekTuningApply.h"

namespace vekmaster {

// What the commands of vek_master need of a device: a message, a read of its settings
// and an apply. Over a line of our own it is a session; through `vek_master serve` the
// same questions go to the server, and the answers come back as the same structures,
// so both print the same.
class VekDeviceAccess {
public:
    using Json = VekValueJson::Json;

    virtual ~VekDeviceAccess() = default;

    // One message; its raw data goes to raw, or into the reply when raw is null. The
    // reply stays valid until the next call.
    virtual const VekMasterReply& request(const std::string& feature, const std::string& name,
                                          const vekprotocol::VekFields& args,
                                          VekRawSink* raw) = 0;
    // A request the catalogue has checked; the server of a remote device checks it anew.
    virtual const VekMasterReply& send(const VekCheckedRequest& checked, VekRawSink* raw) {
        return request(checked.message().feature, checked.message().name, checked.args(), raw);
    }
    // Several messages, each with its reply (raw data kept in it); a session keeps its
    // window of them on the line at once, elsewhere they go one after another.
    virtual void exchange(VekMasterExchange::Batch& batch) {
        for (VekMasterExchange& e : batch) {
            e.reply = request(e.message->feature, e.message->name, e.args, nullptr);
            e.sent = e.reply.outcome != VekMasterReply::Outcome::Refused;
        }
    }
    // The version, features and every setting (only null) or those a document's
    // "settings" (only) holds. False when the device stopped answering: failure() says why.
    virtual bool read(const Json* only, VekDeviceReading& reading) = 0;
    // Brings the device to a checked document.
    virtual VekTuningApply::Result apply(const Json& document,
                                         const VekTuningApply::Options& options) = 0;
    // The answer that stopped the last read.
    virtual const VekMasterReply& failure() const = 0;
};

}  // namespace vekmaster
