#include "VekRequestBody.h"

#include <sstream>

#include <cerrno>
#include <cstdlib>

#include "VekTuningDocument.h"

namespace vekserve {

using namespace vekmaster;

namespace {

using Json = VekRequestBody::Json;

// The text member of an object; false when it is absent or not text.
bool textMember(const Json& object, const char* name, std::string& text) {
    const Json* value = VekValueJson::member(&object, name);
    if (value == nullptr || !value->is_string()) {
        return false;
    }
    text = value->get<std::string>();
    return true;
}

std::string parseObject(const std::string& body, Json& json) {
    if (!VekRequestBody::shallow(body)) {
        return "the body nests arrays and objects deeper than " +
               std::to_string(VekRequestBody::kMaxDepth) + " levels";
    }
    const std::string problem = VekTuningDocument::parse(body, json);
    if (!problem.empty()) {
        return "the body is not JSON: " + problem;
    }
    return json.is_object() ? "" : "the body is not a JSON object";
}

std::string pointsRange() {
    return "points must be a whole number from " + std::to_string(VekResponseCurve::kMinPoints) +
           " to " + std::to_string(VekResponseCurve::kMaxPoints);
}

std::string checkDocument(const VekSettingsTable& table, const Json& document,
                          const std::string& where) {
    const std::string problem = VekTuningDocument::check(table, document);
    return problem.empty() ? "" : where + problem;
}

}  // namespace

bool VekRequestBody::shallow(const std::string& text) {
    size_t depth = 0;
    bool quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                quoted = false;
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == '[' || c == '{') {
            if (++depth > kMaxDepth) {
                return false;
            }
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return true;
}

VekError VekRequestBody::message(const VekMessageCatalog& catalog, const VekDeviceProfile* limits,
                                 const std::string& body, VekCheckedRequest& checked) {
    Json json;
    const std::string problem = parseObject(body, json);
    return problem.empty() ? VekRequestBody::message(catalog, limits, json, checked)
                           : VekError(VekError::Kind::Usage, problem);
}

std::string VekRequestBody::messages(const std::string& body, std::vector<Json>& list) {
    Json json;
    const std::string problem = parseObject(body, json);
    if (!problem.empty()) {
        return problem;
    }
    const Json* given = VekValueJson::member(&json, "messages");
    if (given == nullptr || !given->is_array() || given->empty()) {
        return "expected {\"messages\": [{\"feature\", \"message\", \"args\"}, ...]}";
    }
    if (given->size() > kMaxMessages) {
        return "at most " + std::to_string(kMaxMessages) + " messages a batch";
    }
    list.assign(given->begin(), given->end());
    return "";
}

VekError VekRequestBody::message(const VekMessageCatalog& catalog, const VekDeviceProfile* limits,
                                 const Json& json, VekCheckedRequest& checked) {
    const auto usage = [](std::string why) { return VekError(VekError::Kind::Usage, std::move(why)); };
    std::string feature;
    std::string name;
    if (!json.is_object() || !textMember(json, "feature", feature) ||
        !textMember(json, "message", name)) {
        return usage("expected {\"feature\": FEATURE, \"message\": MESSAGE, \"args\": [ARG...]}");
    }
    const VekMasterMessage* message = nullptr;
    const VekError unknown = catalog.lookup({feature, name}, message);
    if (unknown) {
        return unknown;
    }
    const Json* given = VekValueJson::member(&json, "args");
    if (given != nullptr && !given->is_array()) {
        return usage("args must be an array");
    }
    std::vector<const Json*> flat;
    if (given != nullptr) {
        for (const Json& arg : *given) {
            if (arg.is_array()) {
                for (const Json& element : arg) {
                    flat.push_back(&element);
                }
            } else {
                flat.push_back(&arg);
            }
        }
    }
    // Each ARG's field, in wire order; a list takes every ARG left.
    std::vector<const VekFieldSignature::Slot*> slotOf;
    for (const VekFieldSignature::Slot& slot : message->signature.slots()) {
        const size_t count = slot.count == 0 ? flat.size() : slot.count;
        for (size_t i = 0; i < count && slotOf.size() < flat.size(); ++i) {
            slotOf.push_back(&slot);
        }
    }
    vekprotocol::VekFields args;
    for (size_t i = 0; i < flat.size(); ++i) {
        std::string text;
        if (flat[i]->is_string()) {
            text = flat[i]->get<std::string>();
        } else if (i < slotOf.size()) {
            const std::string problem = VekValueJson::toWire(slotOf[i]->base, *flat[i], text);
            if (!problem.empty()) {
                return usage(message->feature + ' ' + message->name + ": argument " +
                             std::to_string(i + 1) + " (" + slotOf[i]->name + ':' +
                             slotOf[i]->type + ") " + problem);
            }
        } else {
            text = VekValueJson::dump(*flat[i]);
        }
        args.push_back(std::move(text));
    }
    return catalog.check(*message, args, limits, checked);
}

std::string VekRequestBody::object(const std::string& body, Json& json) {
    if (body.find_first_not_of(" \t\r\n") == std::string::npos) {
        json = Json::object();
        return "";
    }
    return parseObject(body, json);
}

std::string VekRequestBody::settingList(const std::string& body,
                                        std::vector<std::vector<std::string>>& addresses) {
    Json json;
    const std::string problem = parseObject(body, json);
    if (!problem.empty()) {
        return problem;
    }
    const Json* given = VekValueJson::member(&json, "settings");
    const std::string expected = "expected {\"settings\": [\"FEATURE/SETTING[/CHANNEL[/BAND]]\", ...]}";
    if (given == nullptr || !given->is_array() || given->empty()) {
        return expected;
    }
    if (given->size() > kMaxMessages) {
        return "at most " + std::to_string(kMaxMessages) + " settings a read";
    }
    addresses.clear();
    for (const Json& address : *given) {
        if (!address.is_string()) {
            return expected;
        }
        std::vector<std::string> segments;
        std::stringstream text(address.get<std::string>());
        for (std::string segment; std::getline(text, segment, '/');) {
            segments.push_back(segment);
        }
        if (segments.size() < 2 || segments.size() > 4) {
            return expected;
        }
        addresses.push_back(std::move(segments));
    }
    return "";
}

std::string VekRequestBody::settingValue(const std::string& body, Json& value) {
    Json json;
    const std::string problem = parseObject(body, json);
    if (!problem.empty()) {
        return problem;
    }
    const Json* given = VekValueJson::member(&json, "value");
    if (given == nullptr || json.size() != 1) {
        return "the body is not {\"value\": VALUE}";
    }
    value = *given;
    return "";
}

std::string VekRequestBody::document(const VekSettingsTable& table, const std::string& body,
                                     Json& document) {
    const std::string problem = parseObject(body, document);
    return problem.empty() ? checkDocument(table, document, "") : problem;
}

std::string VekRequestBody::diff(const VekSettingsTable& table, const std::string& body,
                                 Diff& diff) {
    Json json;
    std::string problem = parseObject(body, json);
    if (!problem.empty()) {
        return problem;
    }
    const char* const names[2] = {"a", "b"};
    for (int side = 0; side < 2; ++side) {
        const Json* value = VekValueJson::member(&json, names[side]);
        if (value != nullptr && value->is_string() && value->get<std::string>() == "device") {
            diff.device[side] = true;
        } else if (value != nullptr && value->is_object()) {
            diff.documents[side] = *value;
            problem = checkDocument(table, *value, std::string(names[side]) + ": ");
            if (!problem.empty()) {
                return problem;
            }
        } else {
            return std::string("expected {\"a\": A, \"b\": B}, each a tuning document or "
                               "\"device\"; ") +
                   names[side] + " is neither";
        }
    }
    if (diff.device[0] && diff.device[1]) {
        return "diff compares the device with a document, or two documents";
    }
    const Json* device = VekValueJson::member(&json, "device");
    if (device != nullptr) {
        if (!device->is_number_unsigned() || device->get<uint64_t>() > 1000000) {
            return "device must be a device index (0, 1, ...)";
        }
        diff.index = static_cast<int>(device->get<uint64_t>());
    }
    return "";
}

std::string VekRequestBody::curve(const std::string& body,
                                  std::vector<VekResponseCurve::Band>& bands, size_t& count) {
    Json json;
    std::string problem = parseObject(body, json);
    const Json* list = VekValueJson::member(&json, "bands");
    if (problem.empty() && (list == nullptr || !list->is_array())) {
        problem = "expected {\"bands\": [[six numbers], ...], \"points\": N}";
    }
    if (problem.empty() && list->size() > VekSettingsTable::kMaxBands) {
        problem = "at most " + std::to_string(VekSettingsTable::kMaxBands) + " bands";
    }
    bands.clear();
    for (size_t i = 0; problem.empty() && i < list->size(); ++i) {
        const Json& band = (*list)[i];
        VekResponseCurve::Band values{};
        bool ok = band.is_array() && band.size() == values.size();
        for (size_t k = 0; ok && k < values.size(); ++k) {
            ok = band[k].is_number();
            values[k] = ok ? band[k].get<double>() : 0;
        }
        if (!ok) {
            problem = "bands[" + std::to_string(i) + "] is not an array of six numbers";
        }
        bands.push_back(values);
    }
    const Json* given = VekValueJson::member(&json, "points");
    count = VekResponseCurve::kDefaultPoints;
    if (!problem.empty() || given == nullptr) {
        return problem;
    }
    const uint64_t value = given->is_number_unsigned() ? given->get<uint64_t>() : 0;
    if (value < VekResponseCurve::kMinPoints || value > VekResponseCurve::kMaxPoints) {
        return pointsRange();
    }
    count = static_cast<size_t>(value);
    return "";
}

std::string VekRequestBody::points(const std::string& text, size_t& points) {
    points = VekResponseCurve::kDefaultPoints;
    if (text.empty()) {
        return "";
    }
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (text.find_first_not_of("0123456789") != std::string::npos || *end != '\0' || errno != 0 ||
        value < static_cast<long>(VekResponseCurve::kMinPoints) ||
        value > static_cast<long>(VekResponseCurve::kMaxPoints)) {
        return pointsRange();
    }
    points = static_cast<size_t>(value);
    return "";
}

int VekRequestBody::index(const std::string& text, size_t count) {
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text.c_str(), &end, 10);
    const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    return digits && *end == '\0' && errno == 0 && value >= 0 && static_cast<size_t>(value) < count
               ? static_cast<int>(value)
               : -1;
}

}  // namespace vekserve
