#include "VekValueJson.h"

#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "VekText.h"

namespace vekmaster {

using Kind = VekFieldPrinter::Kind;
using vekprotocol::VekText;

VekValueJson::Json VekValueJson::fromPart(const VekFieldPrinter::Part& part) {
    switch (part.kind) {
        case Kind::Bool:
            return part.text == "1";
        case Kind::Text:
            return part.text;
        case Kind::Number:
            break;
    }
    const char* text = part.text.c_str();
    char* end = nullptr;
    errno = 0;
    const long long integer = std::strtoll(text, &end, 10);
    if (end != text && *end == '\0' && errno == 0) {
        return integer;
    }
    errno = 0;
    const double real = std::strtod(text, &end);
    if (end != text && *end == '\0' && errno == 0 && std::isfinite(real)) {
        return real;
    }
    return nullptr;
}

std::string VekValueJson::toWire(const std::string& base, const Json& value, std::string& text) {
    text.clear();
    if (base == "bool") {
        if (!value.is_boolean()) {
            return "is not true or false";
        }
        VekText::appendBool(text, value.get<bool>());
        return "";
    }
    if (base == "string") {
        if (!value.is_string()) {
            return "is not a string";
        }
        text = value.get<std::string>();
        return !text.empty() && text.find_first_of(":\n") == std::string::npos
                   ? ""
                   : "cannot be sent (it is empty or holds ':' or a line feed)";
    }
    if (base == "float") {
        const double real = value.is_number() ? value.get<double>() : NAN;
        if (!std::isfinite(real) || std::fabs(real) > FLT_MAX) {
            return "is not a number a float can hold";
        }
        VekText::appendFloat(text, static_cast<float>(real));
        return "";
    }
    const bool isUint = base == "uint";
    const int64_t low = isUint ? 0 : INT32_MIN;
    const int64_t high = isUint ? int64_t{UINT32_MAX} : INT32_MAX;
    if (!value.is_number_integer()) {
        return "is not an integer";
    }
    // An integer above int64 is held unsigned; it is out of range either way.
    const bool fits = value.is_number_unsigned()
                          ? value.get<uint64_t>() <= uint64_t(high)
                          : value.get<int64_t>() >= low && value.get<int64_t>() <= high;
    if (!fits) {
        return "is out of range (" + std::to_string(low) + " to " + std::to_string(high) + ")";
    }
    const int64_t integer = value.get<int64_t>();
    if (isUint) {
        VekText::appendUint(text, static_cast<uint32_t>(integer));
    } else {
        VekText::appendInt(text, static_cast<int32_t>(integer));
    }
    return "";
}

const VekValueJson::Json* VekValueJson::member(const Json* object, const std::string& name) {
    if (object == nullptr || !object->is_object()) {
        return nullptr;
    }
    const auto found = object->find(name);
    return found != object->end() ? &*found : nullptr;
}

VekValueJson::Json VekValueJson::number(double value, int decimals) {
    const double scale = std::pow(10.0, decimals);
    const double rounded = std::round(value * scale) / scale;
    if (std::isfinite(rounded) && rounded == std::floor(rounded) && std::fabs(rounded) < 9e15) {
        return Json(static_cast<int64_t>(rounded));
    }
    return Json(rounded);
}

std::string VekValueJson::dump(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

namespace {

bool flat(const VekValueJson::Json& value) {
    for (const auto& element : value) {
        if (element.is_structured()) {
            return false;
        }
    }
    return true;
}

void layOut(const VekValueJson::Json& value, const std::string& indent, std::string& out) {
    if (!value.is_structured() || value.empty()) {
        out += VekValueJson::dump(value);
        return;
    }
    const bool object = value.is_object();
    if (flat(value)) {
        out += object ? '{' : '[';
        for (auto it = value.begin(); it != value.end(); ++it) {
            out += it != value.begin() ? ", " : "";
            out += object ? VekValueJson::dump(it.key()) + ": " : "";
            out += VekValueJson::dump(*it);
        }
        out += object ? '}' : ']';
        return;
    }
    const std::string inner = indent + "  ";
    out += object ? "{\n" : "[\n";
    size_t left = value.size();
    for (auto it = value.begin(); it != value.end(); ++it) {
        out += inner;
        if (object) {
            out += VekValueJson::dump(it.key()) + ": ";
        }
        layOut(*it, inner, out);
        out += --left > 0 ? ",\n" : "\n";
    }
    out += indent + (object ? "}" : "]");
}

}  // namespace

std::string VekValueJson::pretty(const Json& value) {
    std::string out;
    layOut(value, "", out);
    return out + '\n';
}

}  // namespace vekmaster
