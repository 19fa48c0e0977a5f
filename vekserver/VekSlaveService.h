#pragma once

#include <cstdint>
#include <cstdio>
#include <sstream>

#include "VekFrameHub.h"
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
        : endpoint(endpoint), platform(new Platform(hub)), transport(transport) {}
    ~VekSlaveService() override { delete platform; }
    VekSlaveService(const VekSlaveService&) = delete;
    VekSlaveService& operator=(const VekSlaveService&) = delete;

protected:
    static void logRequest(const char* operation, const vekprotocol::VekRecordHead& request,
                           const char* end = "\n") {
        std::printf("[AST][INF]%s, self=%d, peer=%d, fail=%d, rawDataLength=%d%s", operation,
                    static_cast<int>(request.self), static_cast<int>(request.peer),
                    request.fail ? 1 : 0, static_cast<int>(request.rawDataLength), end);
    }

    // Steps after the request line; exactly one response per request.
    template <class Request, class Response>
    void respond(Request& request, void (Platform::*pack)(Request&, Response&),
                 void (Slave::*encode)(std::stringstream&, const Response&)) {
        Response response;
        (platform->*pack)(request, response);
        (endpoint->*encode)(out, response);
        sendResponse(transport, out);
    }

    template <class Request, class Response>
    void serve(const char* operation, Request& request, void (Platform::*pack)(Request&, Response&),
               void (Slave::*encode)(std::stringstream&, const Response&)) {
        logRequest(operation, request);
        respond(request, pack, encode);
    }

    Slave* endpoint;
    Platform* platform;
    vektransport::VekTransport* transport;
    std::stringstream out;
};

}  // namespace vekserver
