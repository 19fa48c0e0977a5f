#pragma once

#include <cstdint>
#include <memory>
#include <sstream>

#include "VekFrameHub.h"
#include "VekLog.h"
#include "VekRecordHead.h"
#include "VekSendResponse.h"
#include "VekTransport.h"

namespace vekserver {

// What every callback implementation shares: its endpoint (not owned), its adapter
// (owned), the transport (not owned), one reused output stream, and the request
// cycle: request line, adapter fills the response, endpoint encodes it, one write.
template <class CallbackItf, class Slave, class Platform>
class VekSlaveService : public CallbackItf {
public:
    VekSlaveService(Slave* endpoint, vekprotocol::VekFrameHub* hub,
                    vektransport::VekTransport* transport)
        : endpoint_(endpoint), platform_(std::make_unique<Platform>(hub)), transport_(transport) {}
    VekSlaveService(const VekSlaveService&) = delete;
    VekSlaveService& operator=(const VekSlaveService&) = delete;

protected:
    static void logRequest(const char* operation, const vekprotocol::VekRecordHead& request,
                           const char* end = "\n") {
        VekLog::info("%s, self=%d, peer=%d, fail=%d, rawDataLength=%d%s", operation,
                     static_cast<int>(request.self), static_cast<int>(request.peer),
                     request.fail ? 1 : 0, static_cast<int>(request.rawDataLength), end);
    }

    // Steps after the request line; exactly one response per request.
    template <class Request, class Response>
    void respond(Request& request, void (Platform::*pack)(Request&, Response&),
                 void (Slave::*encode)(std::stringstream&, const Response&)) {
        Response response;
        (platform_.get()->*pack)(request, response);
        (endpoint_->*encode)(out_, response);
        sendResponse(transport_, out_);
    }

    template <class Request, class Response>
    void serve(const char* operation, Request& request, void (Platform::*pack)(Request&, Response&),
               void (Slave::*encode)(std::stringstream&, const Response&)) {
        logRequest(operation, request);
        respond(request, pack, encode);
    }

private:
    Slave* endpoint_;
    std::unique_ptr<Platform> platform_;
    vektransport::VekTransport* transport_;
    std::stringstream out_;
};

}  // namespace vekserver
