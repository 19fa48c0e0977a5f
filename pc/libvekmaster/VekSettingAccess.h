#pragma once

#include <functional>
#include <string>
#include <vector>

#include "VekDeviceAccess.h"
#include "VekDeviceProfile.h"
#include "VekSettingItem.h"
#include "VekSettingsTable.h"

namespace vekmaster {

// One setting of the table read or written as a document holds it, whole or for one
// channel or band, over any device access: the one place where a setting becomes its
// get and set messages. A write may give part of a value (some of its fields, some
// channels of a value one message sets for all of them): the rest is read from the
// device first, so the set message carries the device's own values for it.
class VekSettingAccess {
public:
    using Json = VekValueJson::Json;
    using Key = VekSettingItem::Key;

    // A setting and the part of it meant: a channel ("" for every one) and a band (-1
    // for every one).
    struct Target {
        const VekSetting* setting = nullptr;
        Key key;

        // "EqV2.band[CF/7]"
        std::string label() const { return VekSettingItem::label(*setting, key); }
    };
    // What the device answered. message and reply: the request that decided (the first
    // answered NG, else the last; after an error, the one that went unanswered). value,
    // for a read: the value as a document holds it, a part answered NG as a missing
    // marker; null when its one answer was NG.
    struct Result {
        const VekMasterMessage* message = nullptr;
        VekMasterReply reply;
        Json value;
    };
    // Told of every request the catalogue has passed, just before it is sent.
    using Sending = std::function<void(const VekCheckedRequest& request)>;

    // limits: the ranges values are checked against; null sends values outside them.
    VekSettingAccess(VekDeviceAccess& access, const VekSettingsTable& table,
                     const VekDeviceProfile* limits)
        : access_(access), table_(table), limits_(limits) {}

    void setSending(Sending sending) { sending_ = std::move(sending); }

    // The part of a setting that feature, name, channel and band name: NotFound without
    // such a setting, Usage for a channel or band it does not have. With whole, channel
    // "" and band -1 name all of them; without, a setting per channel (per band) needs
    // one.
    static VekError locate(const VekSettingsTable& table, const std::string& feature,
                           const std::string& name, const std::string& channel, int band,
                           bool whole, Target& target);
    // The same from an address's segments: feature, name, and a channel and a band when
    // given (all of them when not); the band as decimal text.
    static VekError locate(const VekSettingsTable& table, const std::vector<std::string>& path,
                           Target& target);
    // Checks a value given for a write of target and brings it to the form a document
    // holds (a ChannelArray's six-element sequence or one channel's item as an object by
    // channel); partial when the device's own values must complete it. Usage, naming
    // the target, when it cannot be written.
    static VekError prepare(const Target& target, Json& value, bool& partial);

    // Reads target: one request, or for several channels and bands one batch (the band
    // counts first).
    VekError read(const Target& target, Result& result);
    // Reads several targets with their requests in one batch (the band counts they need
    // in one before); results in order. An error when any request went unanswered.
    VekError read(const std::vector<Target>& targets, std::vector<Result>& results);
    // Writes value (see prepare) to target with one set message, after reading what a
    // partial value leaves out; result is the set's answer, or the NG that stopped it.
    VekError write(const Target& target, const Json& value, Result& result);

private:
    // The get requests' keys of a target; counts: the band counts of its feature.
    static std::vector<Key> keysOf(const Target& target, const Json* counts);
    // The band count row a read of target needs first, or null.
    const VekSetting* countOf(const Target& target) const;
    // The result of a target from the answers to its keys' requests.
    static void assemble(const Target& target, const std::vector<const VekMasterExchange*>& answers,
                         const std::vector<Key>& keys, Result& result);
    // The checked request, told to sending_.
    VekError checked(const VekMasterMessage& message, const vekprotocol::VekFields& args,
                     VekCheckedRequest& request) const;

    VekDeviceAccess& access_;
    const VekSettingsTable& table_;
    const VekDeviceProfile* limits_;
    Sending sending_;
};

}  // namespace vekmaster
