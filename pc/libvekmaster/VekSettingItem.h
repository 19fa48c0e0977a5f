#pragma once

#include <functional>
#include <string>
#include <vector>

#include "VekMasterReply.h"
#include "VekSerDes.h"
#include "VekSetting.h"
#include "VekValueJson.h"

namespace vekmaster {

// One value of a setting as a document holds it (an item): a scalar when the setting has
// one field of one element (and for each channel of a ChannelArray), an array for one
// field of several, an object by field name otherwise; or a missing marker
// {"missing": "NG"} where the device could not say.
class VekSettingItem {
public:
    using Json = VekValueJson::Json;
    // An item's values, field by field, in wire text.
    using Texts = std::vector<std::vector<std::string>>;
    // Where an item sits: a channel ("" for none) and a band (-1 for none).
    struct Key {
        std::string channel;
        int band = -1;
    };

    static Json missing(const std::string& reason);
    static bool isMissing(const Json& item);

    // The item in a get answer; channel picks the element of a ChannelArray (-1 for
    // none). A missing marker when the answer lacks the fields.
    static Json fromReply(const VekSetting& setting, const VekMasterReply& reply, int channel);
    // An item's values as wire texts; "" or what is wrong with it, naming the field.
    static std::string texts(const VekSetting& setting, const Json& item, Texts& out);
    // The set message's ARGs: the key fields from key, the value fields from values (for
    // a ChannelArray, one field of six texts).
    static vekprotocol::VekFields args(const VekSetting& setting, const Key& key,
                                       const Texts& values);
    // The get message's ARGs: the channel and band it asks for.
    static vekprotocol::VekFields keyArgs(const VekSetting& setting, const Key& key);
    // "Gain.master", "Gain.channel[LF]", "EqV2.band[CF/7]"
    static std::string label(const VekSetting& setting, const Key& key);
    // Calls visit for every item of a setting's value in a document, in order; a value
    // that is a missing marker as a whole is one item without a key.
    static void forEach(const VekSetting& setting, const Json& value,
                        const std::function<void(const Key&, const Json&)>& visit);
    // The item at key in a "settings" object, or null.
    static const Json* at(const Json& settings, const VekSetting& setting, const Key& key);
    // Puts an item at key into a "settings" object.
    static void place(Json& settings, const VekSetting& setting, const Key& key, Json item);
};

}  // namespace vekmaster
