#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <functional>
#include <optional>
#include <string>

namespace vekserve {

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
    // Sends a request and reads its answer; "" or why no whole answer came.
    std::string exchange(const std::string& method, const std::string& target,
                         const std::string& body, Response& response, const Head& head = nullptr,
                         const Body& take = nullptr);
    const std::string& url() const { return url_; }

private:
    std::string connect();

    boost::asio::io_context io_;
    std::optional<boost::beast::tcp_stream> stream_;
    boost::beast::flat_buffer buffer_;
    std::string url_;
    std::string name_;  // to resolve
    std::string host_;  // the Host header
    std::string port_;
    std::string token_;
};

}  // namespace vekserve
