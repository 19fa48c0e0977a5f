#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "VekRecordHead.h"

namespace vekmaster {

// Visits a request record's fields and notes what the command line has to give for
// them: one ARG per payload slot, in wire order; a list takes every ARG that is left.
class VekFieldSignature {
public:
    struct Slot {
        std::string name;
        std::string type;  // "int", "float[6]", "string..."
        std::string base;  // "int", "uint", "float", "bool" or "string"
        size_t count;      // ARGs it takes: 1, the array's length, or 0 for a list
    };

    template <class T>
    void operator()(const char* name, T&& value) {
        add(name, value);
    }

    const std::vector<Slot>& slots() const { return slots_; }
    // ARGs the fixed fields take; with a list, any number beyond them is fine too.
    size_t count() const { return count_; }
    bool open() const { return open_; }
    // "channel:string band:uint"; "" for a record without fields.
    std::string synopsis() const {
        std::string text;
        for (const Slot& slot : slots_) {
            text += (text.empty() ? "" : " ") + slot.name + ':' + slot.type;
        }
        return text;
    }

private:
    static const char* type(const int32_t&) { return "int"; }
    static const char* type(const uint32_t&) { return "uint"; }
    static const char* type(const float&) { return "float"; }
    static const char* type(const bool&) { return "bool"; }
    static const char* type(const std::string&) { return "string"; }
    static const char* type(const vekprotocol::VekAsUnsigned&) { return "uint"; }

    template <class T>
    void add(const char* name, const T& value) {
        slots_.push_back({name, type(value), type(value), 1});
        ++count_;
    }
    template <class T, size_t N>
    void add(const char* name, const T (&items)[N]) {
        slots_.push_back(
            {name, std::string(type(items[0])) + '[' + std::to_string(N) + ']', type(items[0]), N});
        count_ += N;
    }
    void add(const char* name, const std::vector<std::string>&) {
        slots_.push_back({name, "string...", "string", 0});
        open_ = true;
    }

    std::vector<Slot> slots_;
    size_t count_ = 0;
    bool open_ = false;
};

}  // namespace vekmaster
