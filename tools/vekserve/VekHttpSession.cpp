#include "VekHttpSession.h"

#include <boost/asio/post.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <chrono>

#include "VekEventsSession.h"
#include "VekValueJson.h"

namespace vekserve {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;

namespace {

// Longer than any request line with its headers that a client of ours sends.
constexpr uint32_t kHeaderLimit = 16 * 1024;
// How long a refused client may take to read its answer before the connection ends.
constexpr auto kLinger = std::chrono::seconds(2);

std::string header(const http::request<http::string_body>& request, http::field field) {
    const auto found = request.find(field);
    return found != request.end() ? std::string(found->value()) : "";
}

}  // namespace

VekHttpSession::VekHttpSession(net::ip::tcp::socket&& socket, VekHttpServer& server)
    : server_(server), stream_(std::move(socket)), deadline_(server.io()) {
    boost::system::error_code ec;
    // An answer goes out whole at once; Nagle's wait would only delay it.
    stream_.socket().set_option(net::ip::tcp::no_delay(true), ec);
    const net::ip::tcp::endpoint peer = stream_.socket().remote_endpoint(ec);
    client_ = ec ? "?" : peer.address().to_string() + ':' + std::to_string(peer.port());
}

void VekHttpSession::start() {
    server_.track(shared_from_this());
    read();
}

std::shared_ptr<VekHttpExchange> VekHttpSession::exchange() {
    std::shared_ptr<VekHttpSession> self = shared_from_this();
    net::io_context& io = server_.io();
    return std::shared_ptr<VekHttpExchange>(self.get(), [self, &io](VekHttpExchange*) mutable {
        net::post(io, [keep = std::move(self)]() {});
    });
}

void VekHttpSession::read() {
    parser_.emplace();
    parser_->body_limit(server_.config().bodyLimit);
    parser_->header_limit(kHeaderLimit);
    stream_.expires_never();
    reading_ = true;
    timedOut_ = false;
    answered_ = false;
    deadline_.expires_after(std::chrono::milliseconds(server_.config().clientTimeoutMs));
    deadline_.async_wait([self = shared_from_this()](beast::error_code ec) {
        if (ec || !self->reading_) {
            return;
        }
        self->timedOut_ = true;
        beast::error_code ignored;
        self->stream_.socket().cancel(ignored);
    });
    http::async_read(stream_, buffer_, *parser_,
                     [self = shared_from_this()](beast::error_code ec, size_t) { self->onRead(ec); });
}

void VekHttpSession::onRead(beast::error_code ec) {
    reading_ = false;
    deadline_.cancel();
    if (finished_) {
        return;
    }
    if (ec == http::error::body_limit) {
        refuse(413, "the body is larger than " + std::to_string(server_.config().bodyLimit) +
                        " bytes");
        return;
    }
    if (ec == http::error::header_limit) {
        refuse(431, "the request's header is larger than " + std::to_string(kHeaderLimit) +
                        " bytes");
        return;
    }
    if (timedOut_ && parser_->got_some()) {
        refuse(408, "the request did not come whole within " +
                        std::to_string(server_.config().clientTimeoutMs) + " ms");
        return;
    }
    if (ec && parser_->got_some() && ec != http::error::partial_message) {
        refuse(400, "not an HTTP request: " + ec.message());
        return;
    }
    if (ec) {
        // The client has gone, or stayed silent between requests.
        finish();
        return;
    }
    handle();
}

void VekHttpSession::handle() {
    const http::request<http::string_body>& message = parser_->get();
    request_ = VekHttpRequest();
    request_.method = std::string(message.method_string());
    request_.target = std::string(message.target());
    request_.body = message.body();
    request_.client = client_;
    request_.host = header(message, http::field::host);
    request_.origin = header(message, http::field::origin);
    request_.authorization = header(message, http::field::authorization);
    request_.upgrade = beast::websocket::is_upgrade(message);
    request_.splitTarget();
    keepAlive_ = message.keep_alive();
    busy_ = true;

    std::string why;
    const int denied = server_.guard().check(request_, why);
    if (denied != 0) {
        answer(denied, error(why),
               denied == 401 ? Headers{{"WWW-Authenticate", "Bearer"}} : Headers{});
        return;
    }
    if (request_.upgrade && request_.path == "/api/events") {
        std::make_shared<VekEventsSession>(stream_.release_socket(), server_)
            ->accept(parser_->release());
        finish();
        return;
    }
    VekRouteTable::Params params;
    std::string allowed;
    const VekRouteTable::Route* route =
        server_.routes().match(request_.method, request_.path, params, allowed);
    if (route != nullptr) {
        route->handler(exchange(), params);
        return;
    }
    const VekStaticAssets::Asset* asset = server_.assets().find(request_.path);
    if (asset != nullptr && request_.method == "GET") {
        answerBytes(200, asset->type, asset->bytes);
    } else if (!allowed.empty()) {
        answer(405, error(request_.method + " is not for " + request_.path + " (" + allowed + " is)"),
               {{"Allow", allowed}});
    } else {
        answer(404, error("no route " + request_.method + ' ' + request_.path +
                          " (GET /api lists them)"));
    }
}

void VekHttpSession::refuse(int status, const std::string& why) {
    keepAlive_ = false;
    linger_ = true;
    busy_ = true;
    answer(status, error(why));
}

void VekHttpSession::answer(int status, const Json& body, const Headers& headers) {
    answerBytes(status, "application/json", vekmaster::VekValueJson::dump(body) + '\n', headers);
}

void VekHttpSession::answerBytes(int status, const std::string& type, std::string body,
                                 const Headers& headers) {
    net::post(server_.io(), [self = shared_from_this(),
                             answer = Answer{status, type, std::move(body), headers}]() mutable {
        self->send(std::move(answer));
    });
}

void VekHttpSession::send(Answer answer) {
    if (finished_ || !busy_ || answered_) {
        return;
    }
    answered_ = true;
    plain_ = std::make_shared<http::response<http::string_body>>(
        static_cast<http::status>(answer.status), 11);
    plain_->set(http::field::server, "vek_master");
    plain_->set(http::field::content_type, answer.type);
    plain_->set(http::field::cache_control, "no-store");
    for (const auto& field : answer.headers) {
        plain_->set(field.first, field.second);
    }
    plain_->keep_alive(keepAlive_ && !closing_);
    plain_->body() = std::move(answer.body);
    plain_->prepare_payload();
    stream_.expires_after(std::chrono::milliseconds(server_.config().clientTimeoutMs));
    http::async_write(stream_, *plain_,
                      [self = shared_from_this()](beast::error_code ec, size_t) { self->sent(ec); });
}

std::shared_ptr<VekBodyStream> VekHttpSession::answerStream(int status, const std::string& type,
                                                            uint64_t length,
                                                            const Headers& headers) {
    std::weak_ptr<VekHttpSession> weak = shared_from_this();
    net::io_context& io = server_.io();
    // The line waits while a mebibyte is waiting to be sent.
    auto stream = std::make_shared<VekBodyStream>(1024 * 1024, [weak, &io] {
        net::post(io, [weak] {
            if (std::shared_ptr<VekHttpSession> self = weak.lock()) {
                self->pump();
            }
        });
    });
    net::post(io, [self = shared_from_this(), stream, status, type, length, headers] {
        if (self->finished_ || !self->busy_ || self->answered_) {
            stream->close();
            return;
        }
        self->answered_ = true;
        self->body_ = stream;
        self->sendHead(status, type, length, headers);
    });
    return stream;
}

void VekHttpSession::sendHead(int status, const std::string& type, uint64_t length,
                              const Headers& headers) {
    streamed_.emplace(static_cast<http::status>(status), 11);
    streamed_->set(http::field::server, "vek_master");
    streamed_->set(http::field::content_type, type);
    streamed_->set(http::field::cache_control, "no-store");
    for (const auto& field : headers) {
        streamed_->set(field.first, field.second);
    }
    streamed_->keep_alive(keepAlive_ && !closing_);
    streamed_->content_length(length);
    streamed_->body().data = nullptr;
    streamed_->body().more = true;
    serializer_.emplace(*streamed_);
    writing_ = true;
    stream_.expires_after(std::chrono::milliseconds(server_.config().clientTimeoutMs));
    http::async_write_header(stream_, *serializer_,
                             [self = shared_from_this()](beast::error_code ec, size_t) {
                                 self->writing_ = false;
                                 if (ec) {
                                     self->body_->close();
                                     self->finish();
                                     return;
                                 }
                                 self->pump();
                             });
}

void VekHttpSession::pump() {
    if (!body_ || writing_ || finished_) {
        return;
    }
    const VekBodyStream::Take took = body_->take(chunk_);
    if (took == VekBodyStream::Take::Empty) {
        return;
    }
    if (took == VekBodyStream::Take::Broken) {
        // The answer cannot be whole: a cut connection says so to the client.
        body_->close();
        finish();
        return;
    }
    const bool last = took == VekBodyStream::Take::End;
    streamed_->body().data = last ? nullptr : chunk_.data();
    streamed_->body().size = last ? 0 : chunk_.size();
    streamed_->body().more = !last;
    writing_ = true;
    stream_.expires_after(std::chrono::milliseconds(server_.config().clientTimeoutMs));
    http::async_write(stream_, *serializer_,
                      [self = shared_from_this(), last](beast::error_code ec, size_t) {
                          self->writing_ = false;
                          if (ec == http::error::need_buffer) {
                              ec = {};
                          }
                          if (ec) {
                              self->body_->close();
                              self->finish();
                              return;
                          }
                          if (last) {
                              self->body_.reset();
                              self->serializer_.reset();
                              self->streamed_.reset();
                              self->sent(ec);
                              return;
                          }
                          self->pump();
                      });
}

void VekHttpSession::sent(beast::error_code ec) {
    busy_ = false;
    plain_.reset();
    if (ec) {
        finish();
    } else if (linger_) {
        linger();
    } else if (!keepAlive_ || closing_) {
        finish();
    } else {
        read();
    }
}

void VekHttpSession::linger() {
    beast::error_code ec;
    stream_.socket().shutdown(net::ip::tcp::socket::shutdown_send, ec);
    if (ec) {
        finish();
        return;
    }
    stream_.expires_after(kLinger);
    drain();
}

void VekHttpSession::drain() {
    // Whatever the client still sends (the rest of a refused body) is read and dropped:
    // closing with it unread would reset the connection and could lose our answer.
    stream_.async_read_some(net::buffer(drain_),
                            [self = shared_from_this()](beast::error_code ec, size_t) {
                                if (ec) {
                                    self->finish();
                                } else {
                                    self->drain();
                                }
                            });
}

void VekHttpSession::shutdown() {
    closing_ = true;
    if (!busy_) {
        finish();
    }
}

void VekHttpSession::finish() {
    if (finished_) {
        return;
    }
    finished_ = true;
    if (body_) {
        body_->close();
    }
    beast::error_code ec;
    stream_.socket().shutdown(net::ip::tcp::socket::shutdown_both, ec);
    stream_.close();
    deadline_.cancel();
    server_.untrack();
}

}  // namespace vekserve
