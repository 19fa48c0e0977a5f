#include "VekText.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace vekprotocol {

namespace {

// strtoll over the whole text; false when no digit was read or it overflowed.
bool readLongLong(const std::string& text, long long& value) {
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    value = std::strtoll(begin, &end, 10);
    return end != begin && errno != ERANGE;
}

}  // namespace

void VekText::appendInt(std::string& out, int32_t value) {
    char text[16];
    out.append(text, std::to_chars(text, text + sizeof(text), value).ptr);
}

void VekText::appendUint(std::string& out, uint32_t value) {
    char text[16];
    out.append(text, std::to_chars(text, text + sizeof(text), value).ptr);
}

void VekText::appendFloat(std::string& out, float value) {
    char text[32];
    const int n = std::snprintf(text, sizeof(text), "%g", static_cast<double>(value));
    out.append(text, static_cast<size_t>(n));
}

bool VekText::readInt(const std::string& text, int32_t& value) {
    long long v = 0;
    if (!readLongLong(text, v) || v < INT32_MIN || v > INT32_MAX) {
        return false;
    }
    value = static_cast<int32_t>(v);
    return true;
}

bool VekText::readUint(const std::string& text, uint32_t& value) {
    long long v = 0;
    if (!readLongLong(text, v) || v < INT32_MIN || v > static_cast<long long>(UINT32_MAX)) {
        return false;
    }
    value = static_cast<uint32_t>(v);
    return true;
}

bool VekText::readFloat(const std::string& text, float& value) {
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    const float v = std::strtof(begin, &end);
    if (end == begin || errno == ERANGE) {
        return false;
    }
    value = v;
    return true;
}

bool VekText::readBool(const std::string& text, bool& value) {
    int32_t v = 0;
    if (!readInt(text, v)) {
        return false;
    }
    value = (v == 1);
    return true;
}

int32_t VekText::readLenient(const std::string& text) {
    long long v = 0;
    if (!readLongLong(text, v)) {
        return 0;
    }
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<unsigned long long>(v)));
}

}  // namespace vekprotocol
