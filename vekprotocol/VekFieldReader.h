#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "VekRecordHead.h"
#include "VekSerDes.h"
#include "VekText.h"

namespace vekprotocol {

// Visits a record's fields and fills them from payload fields 0, 1, ... in order.
// A missing or unreadable field marks the reader failed; extra fields are ignored.
class VekFieldReader {
public:
    explicit VekFieldReader(const VekFields& payload) : payload_(payload) {}

    // Every field is visited with its name; the wire does not carry names.
    template <class T>
    void operator()(const char*, T&& v) {
        (*this)(std::forward<T>(v));
    }

    void operator()(int32_t& v) { take(v, VekText::readInt); }
    void operator()(uint32_t& v) { take(v, VekText::readUint); }
    void operator()(float& v) { take(v, VekText::readFloat); }
    void operator()(bool& v) { take(v, VekText::readBool); }
    void operator()(std::string& v) {
        if (const std::string* text = next()) {
            v = *text;
        }
    }
    void operator()(VekAsUnsigned v) {
        uint32_t u = 0;
        take(u, VekText::readUint);
        v.value = static_cast<int32_t>(u);
    }
    template <class T, size_t N>
    void operator()(T (&items)[N]) {
        for (T& item : items) {
            (*this)(item);
        }
    }
    // A list takes every field that is left.
    void operator()(std::vector<std::string>& items) {
        items.assign(payload_.begin() + static_cast<std::ptrdiff_t>(index_), payload_.end());
        index_ = payload_.size();
    }

    bool ok() const { return ok_; }

private:
    const std::string* next() {
        if (!ok_ || index_ >= payload_.size()) {
            ok_ = false;
            return nullptr;
        }
        return &payload_[index_++];
    }

    template <class T>
    void take(T& v, bool (*read)(const std::string&, T&)) {
        const std::string* text = next();
        if (text != nullptr && !read(*text, v)) {
            ok_ = false;
        }
    }

    const VekFields& payload_;
    size_t index_ = 0;
    bool ok_ = true;
};

}  // namespace vekprotocol
