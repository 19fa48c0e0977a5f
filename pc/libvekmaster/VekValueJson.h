#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "VekFieldPrinter.h"

namespace vekmaster {

// Field values between their wire text and JSON, the one conversion behind --json,
// the tuning documents and everything that later speaks JSON.
class VekValueJson {
public:
    using Json = nlohmann::ordered_json;

    // A received value: a number as a JSON number (an integer when its text is one), a
    // boolean as true or false, a string as a string; a number that JSON cannot hold
    // (inf, nan) as null.
    static Json fromPart(const VekFieldPrinter::Part& part);
    // The wire text of a JSON value for a field of type base ("int", "uint", "float",
    // "bool", "string"); "" or what is wrong with the value, as "is not an integer".
    static std::string toWire(const std::string& base, const Json& value, std::string& text);
    // The member of that name of an object, or null (also when object is null or not one).
    static const Json* member(const Json* object, const std::string& name);
    // A computed number for people and pages: rounded to decimals places, and an
    // integer when it is a whole number (48000, not 48000.0).
    static Json number(double value, int decimals);
    // JSON text of a value, never throwing: bytes that are not UTF-8 are replaced.
    static std::string dump(const Json& value);
    // A document for people to read and to compare line by line: one member a line,
    // indented by two, but an array or object of plain values on one line
    // ([0, 0, 15], {"value1": 2, "value2": 1000, ...}).
    static std::string pretty(const Json& value);
};

}  // namespace vekmaster
