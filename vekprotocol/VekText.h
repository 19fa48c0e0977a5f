#pragma once

#include <cstdint>
#include <string>

namespace vekprotocol {

// Text forms of field values. Readers never throw: they return false when the
// text holds no number or one out of range for the type.
class VekText {
public:
    static void appendInt(std::string& out, int32_t value);
    static void appendUint(std::string& out, uint32_t value);
    // The stream's default float form: %g, six significant digits, no trailing zeros.
    static void appendFloat(std::string& out, float value);
    static void appendBool(std::string& out, bool value) { out += value ? '1' : '0'; }

    // Leading white space, optional sign, digits; text after the digits is ignored.
    static bool readInt(const std::string& text, int32_t& value);
    // As readInt; accepts -2147483648..4294967295 and keeps the low 32 bits.
    static bool readUint(const std::string& text, uint32_t& value);
    // Decimal or exponent form; text after the number is ignored.
    static bool readFloat(const std::string& text, float& value);
    // True exactly when the text reads as the integer 1 ("2" is false, "1x" is true).
    static bool readBool(const std::string& text, bool& value);
    // The C library's atoi without its undefined overflow: the low 32 bits of the
    // leading number, 0 when there is none or it does not fit 64 bits.
    static int32_t readLenient(const std::string& text);
};

}  // namespace vekprotocol
