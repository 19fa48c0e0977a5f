#pragma once

#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "VekLogCallbackItf.h"
#include "VekSerDes.h"

namespace vekprotocol {

// Turns the received byte stream back into frames and routes each complete frame to
// the endpoint registered under its feature name. Fed by one thread only.
class VekFrameHub {
public:
    static constexpr uint32_t kCacheSize = 40960;

    enum State : int32_t {
        SearchMagic = 0,
        ReadHeader = 1,
        ParseHeader = 2,
        ReadRawData = 3,
        FrameComplete = 4,
    };

    // Registers common under "Common" at once. Neither pointer is owned.
    VekFrameHub(VekSerDes* common, VekLogCallbackItf* log);
    VekFrameHub(const VekFrameHub&) = delete;
    VekFrameHub& operator=(const VekFrameHub&) = delete;

    void registerEndpoint(const std::string& feature, VekSerDes* endpoint);
    void feed(const char* data, uint32_t size);
    // 1, 2, ... 65535, then 1 again; never 0.
    uint32_t nextSequence();
    // Appends the registered feature names in ascending byte order.
    void listFeatures(std::vector<std::string>& features) const;

    State state() const { return state_; }
    uint32_t cachedLength() const { return cachedLength_; }
    // While in ReadRawData: the raw bytes still missing.
    int32_t rawDataLength() const { return rawDataLength_; }
    // The last response number handed out (65535 before the first).
    uint32_t sequence() const { return sequence_; }

private:
    static constexpr int32_t kNoFrame = -1;

    // Where one feed call has got to in the cache.
    struct Scan {
        uint32_t cur;
        uint32_t end;
        uint32_t consumed;  // end of the last frame dispatched or dropped in this call; 0: none
    };

    // False when the chunk is not to be taken; see the rule in the source.
    bool makeRoom(uint32_t size);
    bool canStillComplete() const;
    // One step per state; each returns false when it needs more bytes.
    bool searchMagic(Scan& scan);
    bool readHeader(Scan& scan);
    bool parseHeader(Scan& scan);
    bool readRawData(Scan& scan);
    bool completeFrame(Scan& scan);
    // Drops what the call consumed from the front of the cache.
    void compact(const Scan& scan);
    // Cuts the header line [frameStart_, lf] into header and payload fields.
    void cutHeader(uint32_t lf);
    bool readLength();
    void dispatch();
    void resetFrame();

    VekLogCallbackItf* log_;
    State state_ = SearchMagic;
    int32_t rawDataLength_ = 0;
    int32_t frameStart_ = kNoFrame;
    uint32_t frameEnd_ = 0;
    uint32_t cachedLength_ = 0;
    uint32_t rawOffset_ = 0;
    uint32_t sequence_ = 65535;
    bool droppedLast_ = false;  // the previous chunk did not fit and was dropped
    VekFields headerFields_;
    VekFields payloadFields_;
    // The frame handed to the endpoint; one stream reused, as building a stream (its
    // locale and facets) costs more than decoding most frames.
    std::stringstream frame_;
    std::map<std::string, VekSerDes*> registry_;
    char cache_[kCacheSize];
};

}  // namespace vekprotocol
