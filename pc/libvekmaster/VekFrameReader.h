#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string>

#include "VekMasterReply.h"
#include "VekReplyDecoder.h"
#include "VekRawSink.h"

namespace vekmaster {

// The master's end of the frame layer. Unlike the device, which must hold a whole frame
// in its 40960-byte cache, the master reads the header line, decodes it at once and
// streams the raw data that follows to a sink, so an answer of any size (up to the
// 2 GiB a signed 32-bit length can announce) passes through in small pieces.
//
// A header line longer than kMaxHeaderLine bytes is not taken for one: the longest a
// device sends is a few hundred bytes (a feature list, a file path), and the bound keeps
// noise on the line from growing the buffer. Such a line, a header with fewer than six
// fields or an unreadable length is skipped, and the search for "AS" starts afresh.
class VekFrameReader {
public:
    static constexpr size_t kMaxHeaderLine = 40960;

    explicit VekFrameReader(VekReplyDecoder& decoder, VekMasterReply& reply)
        : decoder_(decoder), reply_(reply) {}

    // Told of every header line before it is decoded (the awaited answer may be chosen
    // then, with reply_.expect), and of every awaited answer once it is whole.
    using HeaderSeen = std::function<void(const vekprotocol::VekFields& header)>;
    using AnswerDone = std::function<void()>;
    void listen(HeaderSeen header, AnswerDone done) {
        headerSeen_ = std::move(header);
        answerDone_ = std::move(done);
    }

    // From now on, the raw data of the answer reply_ awaits goes to sink.
    void await(VekRawSink& sink);
    void feed(const char* data, size_t size);

    // The awaited answer has come whole.
    bool complete() const { return complete_; }
    // The sink refused the awaited answer's raw data.
    bool sinkFailed() const { return sinkFailed_; }
    // A frame has begun and is not complete yet.
    bool inFrame() const { return state_ != Search; }
    // The raw data length of the awaited answer in progress, and how much has come.
    int64_t announced() const { return awaitedRaw_ ? announced_ : 0; }
    int64_t arrived() const { return announced_ - rawLeft_; }

private:
    enum State { Search, Header, Raw };

    void headerDone();
    void frameDone();

    VekReplyDecoder& decoder_;
    VekMasterReply& reply_;
    VekRawSink* sink_ = nullptr;
    HeaderSeen headerSeen_;
    AnswerDone answerDone_;
    State state_ = Search;
    char previous_ = 0;
    std::string line_;
    std::stringstream frame_;  // the header line, as the endpoint reads it
    int64_t announced_ = 0;
    int64_t rawLeft_ = 0;
    bool awaitedFrame_ = false;  // the frame in progress is the awaited answer
    bool awaitedRaw_ = false;    // and its raw data goes to the sink
    bool complete_ = false;
    bool sinkFailed_ = false;
};

}  // namespace vekmaster
