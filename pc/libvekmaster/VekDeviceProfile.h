#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "VekError.h"
#include "VekFieldSignature.h"
#include "VekSerDes.h"
#include "VekValueJson.h"

namespace vekmaster {

struct VekMasterMessage;

// What the platform leaves open and a tuning engineer needs to know: what a band's six
// values mean, and the range each settable value may take so that a typo never reaches
// an amplifier. Read from JSON (a default is built in); checked against the message
// catalogue when loaded, so a limit that names no field is an error, not a silent no-op.
class VekDeviceProfile {
public:
    using Json = VekValueJson::Json;

    // The filter shapes the response curve knows; a profile maps its type codes to them.
    enum class Shape { Off, Peaking, LowShelf, HighShelf, LowPass, HighPass };

    struct Limit {
        std::string feature;
        std::string message;  // the catalogue's name: "SetMaster"
        std::string field;
        int element = -1;  // -1: every element of an array field
        double min = 0;
        double max = 0;
        std::string unit;
    };
    // Where a band's values sit among its six (0 to 5).
    struct BandLayout {
        int type = 0;
        int frequency = 1;
        int gain = 2;
        int q = 3;
    };

    // The profile built into the program.
    static const VekDeviceProfile& builtIn();
    // The default profile's JSON text, as a user would start a file of their own from.
    static const char* defaultText();
    // The profile every check of this process uses; the built-in one until use().
    static std::shared_ptr<const VekDeviceProfile> inUse();
    static void use(std::shared_ptr<const VekDeviceProfile> profile);

    // Reads a profile file; "" or what is wrong, naming the file and the bad entry.
    std::string load(const std::string& path);
    // Reads a profile from JSON text; source names it in errors and in json().
    std::string parse(const std::string& text, const std::string& source);

    const std::string& name() const { return name_; }
    const std::string& source() const { return source_; }
    double sampleRate() const { return sampleRate_; }
    const BandLayout& band() const { return band_; }
    // The shape of a band type code; Off for a code the profile does not name.
    Shape shape(double code) const;
    // The lowest type code of a shape; false when the profile names none.
    bool code(Shape shape, long& out) const;
    // The profile's names of its type codes, lowest code first: "off lowShelf ...".
    std::string typeNames() const;
    // The range of a field (one element's own, else the whole field's), or null.
    const Limit* limit(const std::string& feature, const std::string& message,
                       const std::string& field, int element = -1) const {
        return find(feature, message, field, element);
    }
    const std::vector<Limit>& limits() const { return limits_; }

    // The first argument of a message out of range, as the request would carry it: a
    // Range error ("Gain SetMaster masterGain 60 is outside -60 to 12 dB (profile
    // default)", with the field and its range), or none.
    VekError check(const VekMasterMessage& message, const vekprotocol::VekFields& args) const;
    // The first value of the fields out of range: values holds each slot's texts in slot
    // order (an array slot its elements). channel, when not -1, is the element a
    // one-text array slot stands for (one channel of a six-channel array).
    VekError check(const std::string& feature, const std::string& message,
                 const std::vector<VekFieldSignature::Slot>& slots,
                 const std::vector<std::vector<std::string>>& values, int channel = -1) const;

    // The profile as GET /api/profile answers it.
    Json json() const;

private:
    const Limit* find(const std::string& feature, const std::string& message,
                      const std::string& field, int element) const;
    std::string read(const Json& json);

    std::string name_;
    std::string source_;
    double sampleRate_ = 48000;
    BandLayout band_;
    std::map<long, std::pair<std::string, Shape>> types_;
    std::vector<Limit> limits_;
};

}  // namespace vekmaster
