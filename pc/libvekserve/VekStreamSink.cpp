#include "VekStreamSink.h"

#include "VekWireReply.h"

namespace vekserve {

std::string VekStreamSink::header(const vekmaster::VekMasterReply& reply) {
    using Json = vekmaster::VekValueJson::Json;
    return VekWireReply::of(reply).dump(-1, ' ', true, Json::error_handler_t::replace);
}

bool VekStreamSink::begin(int64_t length) {
    VekHttpExchange::Headers headers = headers_;
    headers.emplace_back("Vek-Reply", header(session_.reply()));
    stream_ = exchange_->answerStream(200, "application/octet-stream",
                                      static_cast<uint64_t>(length), headers);
    return true;
}

}  // namespace vekserve
