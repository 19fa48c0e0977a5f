#include "SimParamStore.h"

#include <algorithm>
#include <cstring>

#include "SimBytes.h"

namespace {

constexpr uint32_t kHead = 4;
constexpr int32_t kInvalid = -22;

// Calls visit(paramId, body, size) per record; false when a record overruns.
template <class Visit>
bool walk(const uint8_t* buffer, Visit&& visit) {
    const uint64_t end = kHead + static_cast<uint64_t>(SimBytes::u32(buffer));
    if (end > SimParamStore::kMaxBufferSize) {
        return false;
    }
    uint64_t at = kHead;
    while (at < end) {
        if (at + kHead > end) {
            return false;
        }
        const uint16_t size = SimBytes::u16(buffer + at + 2);
        if (at + kHead + size > end) {
            return false;
        }
        visit(SimBytes::u16(buffer + at), buffer + at + kHead, static_cast<uint32_t>(size));
        at += kHead + size;
    }
    return true;
}

uint32_t maskOf(const uint8_t* body, uint32_t size) {
    uint8_t word[4] = {};
    std::memcpy(word, body, std::min<uint32_t>(size, 4));
    return SimBytes::u32(word);
}

}  // namespace

uint32_t SimParamStore::extent(const std::string& effect, const uint8_t* buffer) {
    const uint64_t end = kHead + static_cast<uint64_t>(SimBytes::u32(buffer));
    const uint32_t room = capacity(effect, buffer);
    return static_cast<uint32_t>(std::min<uint64_t>(end, room != 0 ? room : kMaxBufferSize));
}

uint32_t SimParamStore::capacity(const std::string& effect, const uint8_t* buffer) {
    if (effect == "hfe") {
        return 148;
    }
    if (effect == "vb") {
        return 508;
    }
    if (effect == "equalizer" && SimBytes::u32(buffer) >= kHead) {
        const uint16_t paramId = SimBytes::u16(buffer + kHead);
        return paramId == 0 ? 1036 : (paramId == 1 ? kMaxBufferSize : 0);
    }
    return 0;
}

SimParamStore::Kind SimParamStore::kindOf(const std::string& effect, uint16_t paramId) {
    if (effect == "equalizer" && paramId == 0) {
        return Kind::Layout;
    }
    if (effect == "equalizer" && paramId == 1) {
        return Kind::Band;
    }
    return Kind::Masked;
}

int32_t SimParamStore::store(const std::string& effect, const uint8_t* buffer) {
    if (!walk(buffer, [](uint16_t, const uint8_t*, uint32_t) {})) {
        return kInvalid;
    }
    walk(buffer, [&](uint16_t paramId, const uint8_t* body, uint32_t size) {
        storeRecord(effect, paramId, body, size);
    });
    return 0;
}

void SimParamStore::storeRecord(const std::string& effect, uint16_t paramId, const uint8_t* body,
                                uint32_t size) {
    switch (kindOf(effect, paramId)) {
        case Kind::Layout:
            for (uint32_t at = 0; at + kLayoutEntrySize <= size; at += kLayoutEntrySize) {
                setUnit(effect, paramId, SimBytes::u32(body + at), kNoBand,
                        {body + at, body + at + kLayoutEntrySize});
            }
            break;
        case Kind::Band: {
            if (size < 8) {
                break;
            }
            const uint32_t mask = SimBytes::u32(body);
            const uint32_t count = std::min(SimBytes::u32(body + 4), (size - 8) / kBandEntrySize);
            for (uint32_t i = 0; i < count; ++i) {
                const uint8_t* entry = body + 8 + i * kBandEntrySize;
                setUnit(effect, paramId, mask, SimBytes::u32(entry),
                        {entry, entry + kBandEntrySize});
            }
            break;
        }
        case Kind::Masked:
            setUnit(effect, paramId, maskOf(body, size), kNoBand, {body, body + size});
            break;
    }
}

int32_t SimParamStore::answer(const std::string& effect, uint8_t* buffer) const {
    const uint32_t end = extent(effect, buffer);
    if (end < 2 * kHead || !walk(buffer, [](uint16_t, const uint8_t*, uint32_t) {})) {
        return kInvalid;
    }
    const uint16_t paramId = SimBytes::u16(buffer + kHead);
    const uint32_t size = SimBytes::u16(buffer + kHead + 2);
    uint8_t* body = buffer + 2 * kHead;
    // The query as it came in; the answer is built over it.
    const std::vector<uint8_t> query(body, body + size);
    std::memset(body, 0, end - 2 * kHead);
    SimBytes::putU32(buffer, kHead + size);

    switch (kindOf(effect, paramId)) {
        case Kind::Layout:
            for (uint32_t at = 0; at + kLayoutEntrySize <= size; at += kLayoutEntrySize) {
                const uint32_t mask = SimBytes::u32(query.data() + at);
                fill({effect, paramId, mask, kNoBand}, body + at, kLayoutEntrySize);
                SimBytes::putU32(body + at, mask);
            }
            break;
        case Kind::Band: {
            if (size < 8) {
                break;
            }
            const uint32_t mask = SimBytes::u32(query.data());
            const uint32_t count =
                std::min(SimBytes::u32(query.data() + 4), (size - 8) / kBandEntrySize);
            SimBytes::putU32(body, mask);
            SimBytes::putU32(body + 4, SimBytes::u32(query.data() + 4));
            for (uint32_t i = 0; i < count; ++i) {
                const uint32_t at = 8 + i * kBandEntrySize;
                const uint32_t band = SimBytes::u32(query.data() + at);
                fill({effect, paramId, mask, band}, body + at, kBandEntrySize);
                SimBytes::putU32(body + at, band);
            }
            break;
        }
        case Kind::Masked: {
            const uint32_t mask = maskOf(query.data(), size);
            fill({effect, paramId, mask, kNoBand}, body, size);
            std::memcpy(body, query.data(), std::min<uint32_t>(size, 4));
            break;
        }
    }
    return 0;
}

void SimParamStore::fill(const Key& key, uint8_t* slot, uint32_t size) const {
    auto found = units_.find(key);
    if (found != units_.end()) {
        std::memcpy(slot, found->second.data(), std::min<size_t>(size, found->second.size()));
    }
}

std::vector<uint8_t> SimParamStore::unit(const std::string& effect, uint16_t paramId, uint32_t mask,
                                         uint32_t band) const {
    auto found = units_.find({effect, paramId, mask, band});
    return found != units_.end() ? found->second : std::vector<uint8_t>{};
}

void SimParamStore::setUnit(const std::string& effect, uint16_t paramId, uint32_t mask,
                            uint32_t band, std::vector<uint8_t> bytes) {
    units_[{effect, paramId, mask, band}] = std::move(bytes);
}
