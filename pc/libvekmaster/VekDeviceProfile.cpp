#include "VekDeviceProfile.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "VekMessageCatalog.h"
#include "VekNames.h"
#include "VekSettingsTable.h"
#include "VekTuningDocument.h"

namespace vekmaster {

namespace {

using Json = VekDeviceProfile::Json;
using Shape = VekDeviceProfile::Shape;

// The simulator's starting tuning lies inside every range: master -12 dB, channel gains
// 0 to -4 dB, delays up to 1.5 ms, ten bands (five on L1) of peaking filters at 31 Hz
// to 20 kHz with Q 0.707.
const char* const kDefault = R"({
  "name": "default",
  "sampleRate": 48000,
  "band": {
    "type": 0, "frequency": 1, "gain": 2, "q": 3,
    "types": {"0": "off", "1": "lowShelf", "2": "peaking", "3": "highShelf",
              "4": "lowPass", "5": "highPass"}
  },
  "limits": [
    {"feature": "Gain", "message": "SetMaster", "field": "masterGain", "min": -60, "max": 12, "unit": "dB"},
    {"feature": "Gain", "message": "SetChannel", "field": "channelGain", "min": -30, "max": 12, "unit": "dB"},
    {"feature": "Gain", "message": "SetFadeBalance", "field": "fadeBalance", "element": 0, "min": -100, "max": 100, "unit": ""},
    {"feature": "Gain", "message": "SetFadeBalance", "field": "fadeBalance", "element": 1, "min": -100, "max": 100, "unit": ""},
    {"feature": "Gain", "message": "SetFadeBalance", "field": "fadeBalance", "element": 2, "min": 0, "max": 100, "unit": ""},
    {"feature": "EqV2", "message": "SetBandCount", "field": "bandCount", "min": 0, "max": 40, "unit": ""},
    {"feature": "EqV2", "message": "SetBandConfig", "field": "band", "min": 0, "max": 39, "unit": ""},
    {"feature": "EqV2", "message": "SetBandConfig", "field": "value1", "min": 0, "max": 5, "unit": ""},
    {"feature": "EqV2", "message": "SetBandConfig", "field": "value2", "min": 20, "max": 20000, "unit": "Hz"},
    {"feature": "EqV2", "message": "SetBandConfig", "field": "value3", "min": -24, "max": 12, "unit": "dB"},
    {"feature": "EqV2", "message": "SetBandConfig", "field": "value4", "min": 0.1, "max": 16, "unit": ""},
    {"feature": "Eq", "message": "SetBandConfig", "field": "band", "min": 0, "max": 19, "unit": ""},
    {"feature": "Eq", "message": "SetBandConfig", "field": "value1", "min": 0, "max": 5, "unit": ""},
    {"feature": "Eq", "message": "SetBandConfig", "field": "value2", "min": 20, "max": 20000, "unit": "Hz"},
    {"feature": "Eq", "message": "SetBandConfig", "field": "value3", "min": -24, "max": 12, "unit": "dB"},
    {"feature": "Eq", "message": "SetBandConfig", "field": "value4", "min": 0.1, "max": 16, "unit": ""},
    {"feature": "Vb", "message": "SetChannelConfig", "field": "number", "min": 0, "max": 18, "unit": ""},
    {"feature": "Reverb", "message": "SetMode", "field": "mode", "min": 0, "max": 15, "unit": ""},
    {"feature": "Speaker", "message": "SetDelay", "field": "delay", "min": 0, "max": 20, "unit": "ms"},
    {"feature": "Speaker", "message": "SetStylePattern", "field": "style", "min": 0, "max": 15, "unit": ""},
    {"feature": "Speaker", "message": "SetSinePattern", "field": "frequency", "min": 20, "max": 20000, "unit": "Hz"}
  ]
}
)";

const std::pair<const char*, Shape> kShapes[] = {
    {"off", Shape::Off},           {"peaking", Shape::Peaking},   {"lowShelf", Shape::LowShelf},
    {"highShelf", Shape::HighShelf}, {"lowPass", Shape::LowPass}, {"highPass", Shape::HighPass},
};

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%g", value);
    return text;
}

// The elements a field has in total: an array slot's count, or one per slot when the
// record lists the field several times (fade/balance).
size_t elementsOf(const std::vector<VekFieldSignature::Slot>& slots, const std::string& name) {
    size_t total = 0;
    for (const VekFieldSignature::Slot& slot : slots) {
        total += slot.name == name ? slot.count : 0;
    }
    return total;
}

bool numeric(const std::string& base) {
    return base == "int" || base == "uint" || base == "float";
}

// "bad" unless json[key] is an integer in [low, high].
bool indexMember(const Json& json, const char* key, int low, int high, int& out) {
    const auto found = json.find(key);
    if (found == json.end() || !found->is_number_integer()) {
        return false;
    }
    const long long value = found->get<long long>();
    if (value < low || value > high) {
        return false;
    }
    out = static_cast<int>(value);
    return true;
}

// "" or "PREFIXkey: unknown member (members: ...)": a misspelt member is refused rather
// than its default taken in silence.
std::string unknownMember(const Json& object, const std::vector<std::string>& known,
                          const std::string& prefix) {
    for (const auto& member : object.items()) {
        if (std::find(known.begin(), known.end(), member.key()) == known.end()) {
            return prefix + member.key() + ": unknown member (members: " + VekNames::join(known) +
                   ')';
        }
    }
    return "";
}

std::shared_ptr<const VekDeviceProfile>& current() {
    static std::shared_ptr<const VekDeviceProfile> profile;
    return profile;
}

}  // namespace

const char* VekDeviceProfile::defaultText() {
    return kDefault;
}

const VekDeviceProfile& VekDeviceProfile::builtIn() {
    static const VekDeviceProfile profile = [] {
        VekDeviceProfile made;
        made.parse(kDefault, "built-in");
        return made;
    }();
    return profile;
}

std::shared_ptr<const VekDeviceProfile> VekDeviceProfile::inUse() {
    std::shared_ptr<const VekDeviceProfile> profile = std::atomic_load(&current());
    if (profile == nullptr) {
        // Not owned: the built-in profile lives as long as the program.
        return std::shared_ptr<const VekDeviceProfile>(&builtIn(), [](const VekDeviceProfile*) {});
    }
    return profile;
}

void VekDeviceProfile::use(std::shared_ptr<const VekDeviceProfile> profile) {
    std::atomic_store(&current(), std::move(profile));
}

std::string VekDeviceProfile::load(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return "profile " + path + ": cannot be read";
    }
    std::stringstream text;
    text << in.rdbuf();
    // Named in errors as given; in use, by where it is (a server's clients see it).
    const std::string problem = parse(text.str(), path);
    char* real = ::realpath(path.c_str(), nullptr);
    if (problem.empty() && real != nullptr) {
        source_ = real;
    }
    std::free(real);
    return problem;
}

std::string VekDeviceProfile::parse(const std::string& text, const std::string& source) {
    Json json;
    std::string problem = VekTuningDocument::parse(text, json);
    if (problem.empty()) {
        problem = read(json);
    }
    if (!problem.empty()) {
        return "profile " + source + ": " + problem;
    }
    source_ = source;
    return "";
}

std::string VekDeviceProfile::read(const Json& json) {
    if (!json.is_object()) {
        return "is not a JSON object";
    }
    // source: what GET /api/profile adds, so that its answer loads as a file.
    std::string problem =
        unknownMember(json, {"name", "source", "sampleRate", "band", "limits"}, "");
    if (!problem.empty()) {
        return problem;
    }
    const Json* name = VekValueJson::member(&json, "name");
    if (name == nullptr || !name->is_string() || name->get<std::string>().empty()) {
        return "name: expected a non-empty string";
    }
    name_ = name->get<std::string>();
    const Json* rate = VekValueJson::member(&json, "sampleRate");
    if (rate != nullptr && (!rate->is_number() || rate->get<double>() < 8000 ||
                            rate->get<double>() > 768000)) {
        return "sampleRate: expected a number of Hz from 8000 to 768000";
    }
    sampleRate_ = rate != nullptr ? rate->get<double>() : 48000;

    const Json* band = VekValueJson::member(&json, "band");
    if (band == nullptr || !band->is_object()) {
        return "band: expected an object with type, frequency, gain, q and types";
    }
    problem = unknownMember(*band, {"type", "frequency", "gain", "q", "types"}, "band.");
    if (!problem.empty()) {
        return problem;
    }
    const char* const roles[] = {"type", "frequency", "gain", "q"};
    int* const slots[] = {&band_.type, &band_.frequency, &band_.gain, &band_.q};
    bool used[6] = {};
    for (size_t i = 0; i < 4; ++i) {
        if (!indexMember(*band, roles[i], 0, 5, *slots[i])) {
            return std::string("band.") + roles[i] + ": expected the index of a band value, 0 to 5";
        }
        if (used[*slots[i]]) {
            return std::string("band.") + roles[i] + ": value " + std::to_string(*slots[i]) +
                   " already has another meaning";
        }
        used[*slots[i]] = true;
    }
    const Json* types = VekValueJson::member(band, "types");
    if (types == nullptr || !types->is_object() || types->empty()) {
        return "band.types: expected an object of type codes, as {\"2\": \"peaking\"}";
    }
    types_.clear();
    for (const auto& entry : types->items()) {
        const std::string where = "band.types." + entry.key();
        char* end = nullptr;
        const long code = std::strtol(entry.key().c_str(), &end, 10);
        if (entry.key().empty() || *end != '\0') {
            return where + ": a type code is a whole number";
        }
        const Shape* shape = nullptr;
        std::string known;
        for (const auto& candidate : kShapes) {
            known += (known.empty() ? "" : " ") + std::string(candidate.first);
            if (entry.value().is_string() && entry.value().get<std::string>() == candidate.first) {
                shape = &candidate.second;
            }
        }
        if (shape == nullptr) {
            return where + ": expected one of " + known;
        }
        types_[code] = {entry.value().get<std::string>(), *shape};
    }

    const Json* limits = VekValueJson::member(&json, "limits");
    if (limits == nullptr || !limits->is_array()) {
        return "limits: expected an array of {feature, message, field, min, max, unit}";
    }
    const VekMessageCatalog& catalog = VekMessageCatalog::shared();
    limits_.clear();
    for (size_t i = 0; i < limits->size(); ++i) {
        const Json& entry = (*limits)[i];
        const std::string where = "limits[" + std::to_string(i) + "]";
        Limit limit;
        const Json* texts[] = {VekValueJson::member(&entry, "feature"),
                               VekValueJson::member(&entry, "message"),
                               VekValueJson::member(&entry, "field")};
        for (const Json* text : texts) {
            if (text == nullptr || !text->is_string()) {
                return where + ": expected feature, message and field as strings";
            }
        }
        limit.feature = texts[0]->get<std::string>();
        limit.message = texts[1]->get<std::string>();
        limit.field = texts[2]->get<std::string>();
        const std::string what = where + " (" + limit.feature + ' ' + limit.message + ' ' +
                                 limit.field + ")";
        problem = unknownMember(
            entry, {"feature", "message", "field", "element", "min", "max", "unit"}, what + ": ");
        if (!problem.empty()) {
            return problem;
        }
        const VekMasterMessage* message = catalog.find(limit.feature, limit.message);
        if (message == nullptr) {
            return what + ": the catalogue has no message " + limit.feature + ' ' + limit.message;
        }
        const std::vector<VekFieldSignature::Slot>& slots = message->signature.slots();
        const size_t elements = elementsOf(slots, limit.field);
        std::string fields;
        bool isNumber = false;
        for (const VekFieldSignature::Slot& slot : slots) {
            fields += (fields.empty() ? "" : " ") + slot.name;
            isNumber = isNumber || (slot.name == limit.field && numeric(slot.base));
        }
        if (elements == 0) {
            return what + ": " + limit.message + " has no field " + limit.field + " (fields: " +
                   fields + ")";
        }
        if (!isNumber) {
            return what + ": " + limit.field + " is not a number";
        }
        const Json* min = VekValueJson::member(&entry, "min");
        const Json* max = VekValueJson::member(&entry, "max");
        if (min == nullptr || max == nullptr || !min->is_number() || !max->is_number() ||
            min->get<double>() > max->get<double>()) {
            return what + ": expected numbers min and max with min <= max";
        }
        limit.min = min->get<double>();
        limit.max = max->get<double>();
        const Json* unit = VekValueJson::member(&entry, "unit");
        if (unit != nullptr && !unit->is_string()) {
            return what + ": unit is a string (\"dB\", \"ms\", \"Hz\" or \"\")";
        }
        limit.unit = unit != nullptr ? unit->get<std::string>() : "";
        if (VekValueJson::member(&entry, "element") != nullptr &&
            !indexMember(entry, "element", 0, static_cast<int>(elements) - 1, limit.element)) {
            return what + ": element is an index from 0 to " + std::to_string(elements - 1);
        }
        const Limit* same = find(limit.feature, limit.message, limit.field, limit.element);
        if (same != nullptr && same->element == limit.element) {
            return what + ": a second range for the same value";
        }
        limits_.push_back(std::move(limit));
    }
    return "";
}

VekDeviceProfile::Shape VekDeviceProfile::shape(double code) const {
    // Beyond a long's range the cast below would be undefined; no type code is that large.
    if (!(std::fabs(code) < 1e9) || code != std::floor(code)) {
        return Shape::Off;
    }
    const auto found = types_.find(static_cast<long>(code));
    return found != types_.end() ? found->second.second : Shape::Off;
}

bool VekDeviceProfile::code(Shape wanted, long& out) const {
    for (const auto& entry : types_) {
        if (entry.second.second == wanted) {
            out = entry.first;
            return true;
        }
    }
    return false;
}

std::string VekDeviceProfile::typeNames() const {
    std::vector<std::string> names;
    for (const auto& entry : types_) {
        names.push_back(entry.second.first);
    }
    return VekNames::join(names);
}

const VekDeviceProfile::Limit* VekDeviceProfile::find(const std::string& feature,
                                                      const std::string& message,
                                                      const std::string& field,
                                                      int element) const {
    const Limit* whole = nullptr;
    for (const Limit& limit : limits_) {
        if (limit.feature != feature || limit.message != message || limit.field != field) {
            continue;
        }
        if (limit.element == element) {
            return &limit;
        }
        whole = limit.element < 0 ? &limit : whole;
    }
    return whole;
}

VekError VekDeviceProfile::check(const VekMasterMessage& message,
                                                 const vekprotocol::VekFields& args) const {
    // The values as the request carries them ("1.7" for an int goes as 1, -1 for a
    // uint as 4294967295): the payload block of the encoded frame.
    std::stringstream frame;
    if (!message.encode(args, 0, frame)) {
        return {};
    }
    const std::string text = frame.str();
    const size_t open = text.find('<');
    const size_t close = text.rfind('>');
    if (open == std::string::npos || close == std::string::npos || close < open) {
        return {};
    }
    std::vector<std::string> wire;
    std::stringstream payload(text.substr(open + 1, close - open - 1));
    for (std::string field; std::getline(payload, field, ':');) {
        wire.push_back(field);
    }
    std::vector<std::vector<std::string>> values;
    size_t next = 0;
    for (const VekFieldSignature::Slot& slot : message.signature.slots()) {
        const size_t count = slot.count == 0 ? wire.size() - std::min(next, wire.size()) : slot.count;
        std::vector<std::string> texts;
        for (size_t i = 0; i < count && next < wire.size(); ++i) {
            texts.push_back(wire[next++]);
        }
        values.push_back(std::move(texts));
    }
    return check(message.feature, message.name, message.signature.slots(), values);
}

VekError VekDeviceProfile::check(
    const std::string& feature, const std::string& message,
    const std::vector<VekFieldSignature::Slot>& slots,
    const std::vector<std::vector<std::string>>& values, int channel) const {
    size_t firstElement = 0;
    for (size_t i = 0; i < slots.size() && i < values.size(); ++i) {
        const VekFieldSignature::Slot& slot = slots[i];
        firstElement = i > 0 && slots[i - 1].name == slot.name ? firstElement + slots[i - 1].count : 0;
        if (!numeric(slot.base)) {
            continue;
        }
        const size_t elements = elementsOf(slots, slot.name);
        for (size_t j = 0; j < values[i].size(); ++j) {
            const int element = channel >= 0 ? channel : static_cast<int>(firstElement + j);
            const Limit* limit = find(feature, message, slot.name, element);
            if (limit == nullptr) {
                continue;
            }
            const std::string& text = values[i][j];
            const double value = std::strtod(text.c_str(), nullptr);
            if (value >= limit->min && value <= limit->max) {
                continue;
            }
            std::string label = slot.name;
            if (elements == VekSettingsTable::channels().size()) {
                label += '[' + VekSettingsTable::channels()[static_cast<size_t>(element)] + ']';
            } else if (elements > 1) {
                label += '[' + std::to_string(element) + ']';
            }
            VekError breach(VekError::Kind::Range, "");
            breach.text = feature + ' ' + message + ' ' + label + ' ' + text + " is outside " +
                             number(limit->min) + " to " + number(limit->max) +
                             (limit->unit.empty() ? "" : ' ' + limit->unit) + " (profile " +
                             name_ + ")";
            breach.field = slot.name;
            breach.min = limit->min;
            breach.max = limit->max;
            return breach;
        }
    }
    return {};
}

Json VekDeviceProfile::json() const {
    Json types = Json::object();
    for (const auto& entry : types_) {
        types[std::to_string(entry.first)] = entry.second.first;
    }
    Json limits = Json::array();
    for (const Limit& limit : limits_) {
        Json entry = {{"feature", limit.feature}, {"message", limit.message}, {"field", limit.field}};
        if (limit.element >= 0) {
            entry["element"] = limit.element;
        }
        entry["min"] = VekValueJson::number(limit.min, 6);
        entry["max"] = VekValueJson::number(limit.max, 6);
        entry["unit"] = limit.unit;
        limits.push_back(std::move(entry));
    }
    return Json{{"name", name_},
                {"source", source_},
                {"sampleRate", VekValueJson::number(sampleRate_, 3)},
                {"band",
                 {{"type", band_.type},
                  {"frequency", band_.frequency},
                  {"gain", band_.gain},
                  {"q", band_.q},
                  {"types", std::move(types)}}},
                {"limits", std::move(limits)}};
}

}  // namespace vekmaster
