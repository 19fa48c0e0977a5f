#include "VekFrameReader.h"

#include <algorithm>
#include <cstring>
#include <sstream>

#include "VekHeaderLine.h"

namespace vekmaster {

using vekprotocol::VekFields;
using vekprotocol::VekHeaderLine;

void VekFrameReader::await(VekRawSink& sink) {
    sink_ = &sink;
    complete_ = false;
    sinkFailed_ = false;
    // A frame still coming in answers an earlier request that was given up.
    awaitedFrame_ = false;
    awaitedRaw_ = false;
}

void VekFrameReader::feed(const char* data, size_t size) {
    while (size > 0) {
        size_t n = size;
        if (state_ == Search) {
            for (size_t i = 0; i < size; ++i) {
                if (previous_ == 'A' && data[i] == 'S') {
                    state_ = Header;
                    line_ = "AS";
                    n = i + 1;
                    break;
                }
                previous_ = data[i];
            }
        } else if (state_ == Header) {
            const void* lf = std::memchr(data, '\n', size);
            n = lf != nullptr ? static_cast<size_t>(static_cast<const char*>(lf) - data) + 1 : size;
            if (line_.size() + n > kMaxHeaderLine) {
                // Not a header: look for the next frame from here on.
                state_ = Search;
                previous_ = 0;
                n = 0;
            } else {
                line_.append(data, n);
                if (lf != nullptr) {
                    headerDone();
                }
            }
        } else {
            n = static_cast<size_t>(std::min<int64_t>(static_cast<int64_t>(size), rawLeft_));
            rawLeft_ -= static_cast<int64_t>(n);
            if (awaitedRaw_ && !sinkFailed_) {
                sinkFailed_ = !sink_->write(data, n);
            }
            if (rawLeft_ == 0) {
                frameDone();
            }
        }
        data += n;
        size -= n;
    }
}

void VekFrameReader::headerDone() {
    previous_ = 0;
    state_ = Search;
    VekFields header;
    VekFields payload;
    uint32_t rawOffset = 0;
    VekHeaderLine::cut(line_.data(), static_cast<int32_t>(line_.size() - 1), header, payload,
                       rawOffset);
    int32_t length = 0;
    if (!VekHeaderLine::readLength(header, length)) {
        return;
    }
    announced_ = std::max(length, 0);
    rawLeft_ = announced_;
    awaitedFrame_ = false;
    awaitedRaw_ = false;
    if (headerSeen_) {
        headerSeen_(header);
    }
    vekprotocol::VekSerDes* endpoint = decoder_.endpoint(header[2]);
    if (endpoint != nullptr) {
        // The endpoint decodes the fields only: the raw data does not pass through it
        // but goes to the sink, so the length it sees is 0.
        header[4] = "0";
        frame_.str(line_);
        frame_.clear();
        const bool before = reply_.received;
        endpoint->decode(header, payload, frame_, rawOffset);
        awaitedFrame_ = !before && reply_.received;
    }
    if (awaitedFrame_) {
        reply_.frame.assign(line_, 0, line_.size() - 1);
        reply_.rawDataLength = length;
        awaitedRaw_ = !reply_.fail;
        sinkFailed_ = awaitedRaw_ && !sink_->begin(announced_);
    }
    if (rawLeft_ > 0) {
        state_ = Raw;
    } else {
        frameDone();
    }
}

void VekFrameReader::frameDone() {
    state_ = Search;
    if (!awaitedFrame_) {
        return;
    }
    if (awaitedRaw_ && !sinkFailed_) {
        sinkFailed_ = !sink_->end();
    }
    awaitedFrame_ = false;
    awaitedRaw_ = false;
    complete_ = true;
    if (answerDone_) {
        answerDone_();
    }
}

}  // namespace vekmaster
