#pragma once

#include <memory>
#include <string>

#include "VekHttpExchange.h"
#include "VekMasterSession.h"
#include "VekRawSink.h"

namespace vekserve {

// Raw data of an answer passed straight on to an HTTP client as the body of its answer,
// piece by piece as it comes off the line. The answer starts when the raw data does,
// with the reply (fields and header line) in the "Vek-Reply" header.
class VekStreamSink : public vekmaster::VekRawSink {
public:
    VekStreamSink(std::shared_ptr<VekHttpExchange> exchange,
                  const vekmaster::VekMasterSession& session, VekHttpExchange::Headers headers = {})
        : exchange_(std::move(exchange)), session_(session), headers_(std::move(headers)) {}

    // The Vek-Reply header of a reply: plain ASCII, since a header may hold no line feed
    // and should hold no other bytes.
    static std::string header(const vekmaster::VekMasterReply& reply);

    bool begin(int64_t length) override;
    bool write(const char* data, size_t size) override { return stream_->push(data, size); }
    bool end() override {
        stream_->finish(true);
        return true;
    }
    void abandon() override {
        if (stream_) {
            stream_->finish(false);
        }
    }
    // The answer has begun: nothing else may answer the exchange.
    bool started() const { return stream_ != nullptr; }

private:
    std::shared_ptr<VekHttpExchange> exchange_;
    const vekmaster::VekMasterSession& session_;
    VekHttpExchange::Headers headers_;
    std::shared_ptr<VekBodyStream> stream_;
};

}  // namespace vekserve
