#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

// The effect parameter records that setEffectParam stored, and the answers that
// getEffectParam gives from them. Buffers are little-endian: u32 totalLength, then
// records of u16 paramId, u16 paramSize and the body.
//
// What is kept, one unit per key:
//   equalizer paramId 0 (layout): six 168-byte entries, each u32 channelMask first;
//       each entry is kept per mask.
//   equalizer paramId 1 (band): u32 channelMask, u32 entryCount, then 28-byte entries,
//       each u32 band first; each of the first entryCount entries is kept per
//       (mask, band).
//   any other record (hfe and vb paramId 0): a body that starts with u32 channelMask,
//       kept whole per mask.
class SimParamStore {
public:
    static constexpr uint32_t kNoBand = UINT32_MAX;
    static constexpr uint32_t kLayoutEntrySize = 168;
    static constexpr uint32_t kBandEntrySize = 28;
    // The largest buffer the daemon uses (an equaliser band buffer).
    static constexpr uint32_t kMaxBufferSize = 6796;

    // Bytes of a buffer as the records describe them: 4 + totalLength, never more
    // than the room the daemon gives such a buffer (kMaxBufferSize when unknown), so
    // a corrupt totalLength cannot make the simulator read or write past it.
    static uint32_t extent(const std::string& effect, const uint8_t* buffer);
    // Room the daemon gives a getEffectParam answer for this query: 1036 for an
    // equaliser layout, 6796 for a band, 148 for hfe, 508 for vb; 0 when unknown.
    static uint32_t capacity(const std::string& effect, const uint8_t* buffer);

    // Stores every record; -22 (and nothing stored) when a record overruns
    // totalLength or totalLength overruns kMaxBufferSize.
    int32_t store(const std::string& effect, const uint8_t* buffer);
    // Replaces the buffer's first record, the query, by the answer: the same paramId
    // and paramSize, the body filled from what is stored (zeros where nothing is),
    // totalLength 4 + paramSize. -22 when there is no well-formed first record.
    int32_t answer(const std::string& effect, uint8_t* buffer) const;

    // One stored unit (empty when none): a layout entry, a band entry, or a body.
    std::vector<uint8_t> unit(const std::string& effect, uint16_t paramId, uint32_t mask,
                              uint32_t band = kNoBand) const;
    void setUnit(const std::string& effect, uint16_t paramId, uint32_t mask, uint32_t band,
                 std::vector<uint8_t> bytes);
    void clear() { units_.clear(); }

private:
    using Key = std::tuple<std::string, uint16_t, uint32_t, uint32_t>;
    enum class Kind { Layout, Band, Masked };
    static Kind kindOf(const std::string& effect, uint16_t paramId);

    void storeRecord(const std::string& effect, uint16_t paramId, const uint8_t* body,
                     uint32_t size);
    // Copies the stored unit, or nothing, into slot (already zero) up to size bytes.
    void fill(const Key& key, uint8_t* slot, uint32_t size) const;

    std::map<Key, std::vector<uint8_t>> units_;
};
