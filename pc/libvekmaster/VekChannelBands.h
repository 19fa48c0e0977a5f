#pragma once

#include <string>
#include <vector>

#include "VekDeviceAccess.h"
#include "VekResponseCurve.h"

namespace vekmaster {

// One channel's equaliser bands, read from a device (EqV2 or the fixed-band Eq, whichever
// it serves) or taken from a tuning document: what a response curve is drawn from.
struct VekChannelBands {
    std::string feature;  // "EqV2" or "Eq"
    std::string channel;
    std::vector<VekResponseCurve::Band> bands;
    VekMasterReply failure;  // the answer that stopped a read of the bands

    // Asks the device for its features, the channel's band count and each band. False
    // when it cannot: failed is the answer that stopped it (NG, none, a failed line),
    // or null when the device serves no equaliser (problem says so).
    bool read(VekDeviceAccess& access, const std::string& name, const VekMasterReply*& failed,
              std::string& problem);
    // The channel's bands in a document: up to its band count when the document holds
    // one; "" or why there are none.
    std::string take(const VekValueJson::Json& document, const std::string& name);
    // "" or why name is not a channel.
    static std::string checkChannel(const std::string& name);
    // {"device", "feature", "channel"} and the response curve of the bands on points
    // frequencies; without device (negative) for bands taken from a document.
    VekValueJson::Json curve(const VekDeviceProfile& profile, size_t points, int device) const;

private:
    // The bands of the first limit items of list (a document's or a read's "band" of the
    // channel); an item that is no band is left out.
    void add(const VekValueJson::Json& list, size_t limit);
};

}  // namespace vekmaster
