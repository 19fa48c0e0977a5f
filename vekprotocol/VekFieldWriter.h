#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "VekRecordHead.h"
#include "VekText.h"

namespace vekprotocol {

// Visits a record's fields and writes its payload block: each field is one slot,
// slots and list elements are separated by ':'. No slot visited, no block.
class VekFieldWriter {
public:
    explicit VekFieldWriter(std::string& out) : out_(out) {}

    // Every field is visited with its name; the wire does not carry names.
    template <class T>
    void operator()(const char*, const T& value) {
        slot();
        put(value);
    }

    // Closes the block if one was opened.
    void finish() {
        if (slots_ > 0) {
            out_ += '>';
        }
    }

private:
    void slot() { out_ += (slots_++ == 0) ? ":<" : ":"; }

    void put(int32_t v) { VekText::appendInt(out_, v); }
    void put(uint32_t v) { VekText::appendUint(out_, v); }
    void put(float v) { VekText::appendFloat(out_, v); }
    void put(bool v) { VekText::appendBool(out_, v); }
    void put(const std::string& v) { out_ += v; }
    void put(const VekAsUnsigned& v) { VekText::appendUint(out_, static_cast<uint32_t>(v.value)); }

    template <class T>
    void putAll(const T* items, size_t count) {
        for (size_t i = 0; i < count; ++i) {
            if (i > 0) {
                out_ += ':';
            }
            put(items[i]);
        }
    }
    template <class T, size_t N>
    void put(const T (&items)[N]) {
        putAll(items, N);
    }
    void put(const std::vector<std::string>& items) { putAll(items.data(), items.size()); }

    std::string& out_;
    int slots_ = 0;
};

}  // namespace vekprotocol
