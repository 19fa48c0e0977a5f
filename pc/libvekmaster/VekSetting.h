#pragma once

#include <string>
#include <vector>

#include "VekFieldSignature.h"
#include "VekMasterMessage.h"

namespace vekmaster {

// One row of the settings table: a value the device can report, and usually take.
struct VekSetting {
    // What one get message covers.
    enum class Range {
        One,           // one value
        ChannelArray,  // one value per channel, all six in one message
        PerChannel,    // one value per channel, a message for each (its "channel" field)
        PerBand,       // one value per channel and band, up to the channel's band count
    };

    std::string feature;
    std::string name;
    const VekMasterMessage* get = nullptr;
    const VekMasterMessage* set = nullptr;  // null: it can only be read
    Range range = Range::One;
    // The device answers with what was last set through it since it started: the
    // platform has no getter for this value.
    bool lastSet = false;
    // Asking for it changes the device, so a snapshot leaves it out.
    bool disturbs = false;
    // The fields that hold the value, in wire order (the set message's, or the get
    // answer's when it cannot be set), without the keys "channel" and "band".
    std::vector<VekFieldSignature::Slot> value;

    // "Gain.channel"
    std::string path() const { return feature + '.' + name; }
};

}  // namespace vekmaster
