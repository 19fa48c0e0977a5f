#include "VekHttpClient.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <optional>
#include <cstdint>
#include <limits>

#include "VekHostPort.h"

namespace vekhttp {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;

namespace {

// A header line of an answer may carry a reply whose header line is 40960 bytes.
constexpr uint32_t kAnswerHeaderLimit = 256 * 1024;

}  // namespace

struct VekHttpClient::Connection {
    net::io_context io;
    std::optional<beast::tcp_stream> stream;
    beast::flat_buffer buffer;
};

VekHttpClient::VekHttpClient() : connection_(std::make_unique<Connection>()) {}

VekHttpClient::~VekHttpClient() = default;

std::string VekHttpClient::open(const std::string& url, const std::string& token) {
    static const std::string kScheme = "http://";
    url_ = url;
    token_ = token;
    std::string rest = url.compare(0, kScheme.size(), kScheme) == 0 ? url.substr(kScheme.size()) : "";
    if (!rest.empty() && rest.back() == '/') {
        rest.pop_back();
    }
    VekHostPort parts;
    if (!VekHostPort::split(rest, parts) || parts.host.empty() || parts.port.empty() ||
        parts.port.find_first_not_of("0123456789") != std::string::npos) {
        return url + " is not http://HOST:PORT";
    }
    name_ = parts.host;
    port_ = parts.port;
    host_ = (parts.bracketed ? '[' + name_ + ']' : name_) + ':' + port_;
    return "";
}

std::string VekHttpClient::connect() {
    beast::error_code ec;
    net::ip::tcp::resolver resolver(connection_->io);
    const auto found = resolver.resolve(name_, port_, ec);
    if (!ec) {
        connection_->stream.emplace(connection_->io);
        connection_->stream->connect(found, ec);
    }
    if (!ec) {
        connection_->stream->socket().set_option(net::ip::tcp::no_delay(true), ec);
    }
    if (ec) {
        connection_->stream.reset();
        return "cannot reach " + url_ + ": " + ec.message();
    }
    connection_->buffer.clear();
    return "";
}

std::string VekHttpClient::exchange(const std::string& method, const std::string& target,
                                    const std::string& body, Response& response, const Head& head,
                                    const Body& take) {
    response = Response();
    // A kept connection the server has closed meanwhile (it lets idle ones go) takes no
    // request: the request is sent again, once, on a new one. The server only closes a
    // connection with no request under way, so nothing is done twice.
    const bool kept = connection_->stream.has_value();
    if (!kept) {
        const std::string problem = connect();
        if (!problem.empty()) {
            return problem;
        }
    }
    http::request<http::string_body> request(http::string_to_verb(method), target, 11);
    request.set(http::field::host, host_);
    request.set(http::field::user_agent, "vek_master");
    if (!token_.empty()) {
        request.set(http::field::authorization, "Bearer " + token_);
    }
    if (!body.empty()) {
        request.set(http::field::content_type, "application/json");
        request.body() = body;
    }
    request.keep_alive(true);
    request.prepare_payload();
    beast::error_code ec;
    http::write(*connection_->stream, request, ec);

    http::response_parser<http::buffer_body> parser;
    // Any size: the answer is streamed. (An empty limit reads as 0 in this Beast.)
    parser.body_limit(std::numeric_limits<std::uint64_t>::max());
    parser.header_limit(kAnswerHeaderLimit);
    if (!ec) {
        http::read_header(*connection_->stream, connection_->buffer, parser, ec);
    }
    if (ec && kept) {
        connection_->stream.reset();
        return exchange(method, target, body, response, head, take);
    }
    if (ec) {
        connection_->stream.reset();
        return "no answer from " + url_ + ": " + ec.message();
    }
    response.status = static_cast<int>(parser.get().result_int());
    const auto reply = parser.get().find("Vek-Reply");
    response.reply = reply != parser.get().end() ? std::string(reply->value()) : "";
    bool reading = !head || head(response);
    char piece[64 * 1024];
    while (reading && !parser.is_done()) {
        parser.get().body().data = piece;
        parser.get().body().size = sizeof(piece);
        http::read(*connection_->stream, connection_->buffer, parser, ec);
        if (ec == http::error::need_buffer) {
            ec = {};
        }
        if (ec) {
            connection_->stream.reset();
            return "the answer from " + url_ + " was cut short: " + ec.message();
        }
        const size_t n = sizeof(piece) - parser.get().body().size;
        if (take) {
            reading = take(piece, n);
        } else {
            response.body.append(piece, n);
        }
    }
    if (!parser.is_done() || !parser.keep_alive()) {
        connection_->stream.reset();
    }
    return "";
}

}  // namespace vekhttp
