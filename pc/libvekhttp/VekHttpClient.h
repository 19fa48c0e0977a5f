#pragma once

#include <functional>
#include <memory>
#include <string>

namespace vekhttp {

// The client end of `vek_master serve` for vek_master --connect: one connection, kept
// open from one request to the next, and answers of any size read piece by piece.
class VekHttpClient {
public:
    struct Response {
        int status = 0;
        std::string reply;  // the Vek-Reply header
        std::string body;   // unless a body function took it
    };
    // Given the status and the Vek-Reply header before the body; false stops reading.
    using Head = std::function<bool(const Response& response)>;
    // Given each piece of the body as it arrives; false stops reading.
    using Body = std::function<bool(const char* data, size_t size)>;

    // url: "http://HOST:PORT" (a trailing '/' is fine); token is sent with every request
    // when not empty. "" or what is wrong with url.
    std::string open(const std::string& url, const std::string& token);
    VekHttpClient();
    ~VekHttpClient();
    VekHttpClient(const VekHttpClient&) = delete;
    VekHttpClient& operator=(const VekHttpClient&) = delete;
    // Sends a request and reads its answer; "" or why no whole answer came.
    std::string exchange(const std::string& method, const std::string& target,
                         const std::string& body, Response& response, const Head& head = nullptr,
                         const Body& take = nullptr);
    const std::string& url() const { return url_; }

private:
    // The connection, kept out of this header: Beast is heavy to compile.
    struct Connection;

    std::string connect();

    std::unique_ptr<Connection> connection_;
    std::string url_;
    std::string name_;  // to resolve
    std::string host_;  // the Host header
    std::string port_;
    std::string token_;
};

}  // namespace vekhttp
