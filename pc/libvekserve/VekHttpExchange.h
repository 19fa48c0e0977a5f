#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "VekBodyStream.h"
#include "VekHttpRequest.h"
#include "VekValueJson.h"

namespace vekserve {

// One request being answered, as a route handler holds it. It is answered exactly once,
// from any thread (a line thread answers when its job is done).
class VekHttpExchange {
public:
    using Json = vekmaster::VekValueJson::Json;
    using Headers = std::vector<std::pair<std::string, std::string>>;

    virtual ~VekHttpExchange() = default;

    virtual const VekHttpRequest& request() const = 0;
    // A JSON body on one line.
    virtual void answer(int status, const Json& body, const Headers& headers = {}) = 0;
    // Bytes of a type.
    virtual void answerBytes(int status, const std::string& type, std::string body,
                             const Headers& headers = {}) = 0;
    // A body of length bytes that arrives in pieces: push them to the stream returned.
    virtual std::shared_ptr<VekBodyStream> answerStream(int status, const std::string& type,
                                                        uint64_t length,
                                                        const Headers& headers = {}) = 0;

    // {"error": text}: every refusal's body.
    static Json error(const std::string& text) { return Json{{"error", text}}; }
};

}  // namespace vekserve
