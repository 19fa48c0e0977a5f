#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "VekRecordHead.h"
#include "VekText.h"

namespace vekmaster {

// Visits a response record's fields and keeps each value in its wire text. Arrays,
// lists and a field visited in several consecutive slots under one name become one
// field of several parts, as they stand together on the wire.
class VekFieldPrinter {
public:
    enum class Kind { Number, Bool, Text };
    struct Part {
        Kind kind;
        std::string text;
    };
    struct Field {
        std::string name;
        std::vector<Part> parts;
        bool many = false;  // an array in JSON, even with one part
    };

    template <class T>
    void operator()(const char* name, T&& value) {
        if (!fields_.empty() && fields_.back().name == name) {
            fields_.back().many = true;
        } else {
            fields_.push_back(Field{name, {}, false});
        }
        put(fields_.back(), value);
    }

    std::vector<Field> take() { return std::move(fields_); }

private:
    using Text = vekprotocol::VekText;

    template <class T>
    static void number(Field& field, T value, void (*append)(std::string&, T)) {
        std::string text;
        append(text, value);
        field.parts.push_back({Kind::Number, std::move(text)});
    }
    static void put(Field& f, int32_t v) { number(f, v, Text::appendInt); }
    static void put(Field& f, uint32_t v) { number(f, v, Text::appendUint); }
    static void put(Field& f, float v) { number(f, v, Text::appendFloat); }
    static void put(Field& f, const vekprotocol::VekAsUnsigned& v) {
        number(f, static_cast<uint32_t>(v.value), Text::appendUint);
    }
    static void put(Field& f, bool v) { f.parts.push_back({Kind::Bool, v ? "1" : "0"}); }
    static void put(Field& f, const std::string& v) { f.parts.push_back({Kind::Text, v}); }
    template <class T, size_t N>
    static void put(Field& f, const T (&items)[N]) {
        f.many = true;
        for (const T& item : items) {
            put(f, item);
        }
    }
    static void put(Field& f, const std::vector<std::string>& items) {
        f.many = true;
        for (const std::string& item : items) {
            put(f, item);
        }
    }

    std::vector<Field> fields_;
};

}  // namespace vekmaster
