#include "VekHttpSession.h"

#include <boost/asio/post.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <chrono>

#include "VekEventsSession.h"
#include "VekHttpDispatch.h"
#include "VekValueJson.h"

namespace vekserve {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;

namespace {

// Longer than any request line with its headers that a client of ours sends.
constexpr uint32_t kHeaderLimit = 16 * 1024;
// How long a refused client may take to read its answer before the connection ends,
// and how much more of what it sends is read meanwhile.
constexpr auto kLinger = std::chrono::seconds(2);
constexpr size_t kLingerBytes = 64 * 1024;
constexpr const char* kRequestId = VekHttpRequest::kIdHeader;

template <typename Field>
std::string header(const http::request<http::string_body>& request, Field field) {
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
    request_ = VekHttpRequest();
    parser_.emplace();
    parser_->body_limit(server_.config().bodyLimit);
    parser_->header_limit(kHeaderLimit);
    stream_.expires_never();
    state_ = State::Reading;
    deadline_.expires_after(std::chrono::milliseconds(server_.config().clientTimeoutMs));
    deadline_.async_wait([self = shared_from_this()](beast::error_code ec) {
        if (ec || self->state_ != State::Reading) {
            return;
        }
        self->state_ = State::TimedOut;
        beast::error_code ignored;
        self->stream_.socket().cancel(ignored);
    });
    http::async_read(stream_, buffer_, *parser_,
                     [self = shared_from_this()](beast::error_code ec, size_t) { self->onRead(ec); });
}

void VekHttpSession::onRead(beast::error_code ec) {
    deadline_.cancel();
    if (state_ == State::Finished) {
        return;
    }
    const bool timedOut = state_ == State::TimedOut;
    state_ = State::Handling;
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
    if (timedOut && parser_->got_some()) {
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
    request_.id = header(message, kRequestId);
    request_.splitTarget();
    if (after_ == After::Next && !message.keep_alive()) {
        after_ = After::Close;
    }

    // A proxy in front and this server could each take a different one of two: take none.
    for (const http::field field : {http::field::host, http::field::origin}) {
        if (message.count(field) > 1) {
            const std::string name(http::to_string(field));
            refuse(400, "the request has " + std::to_string(message.count(field)) + ' ' + name +
                            " headers; one is allowed");
            return;
        }
    }
    if (VekHttpDispatch(server_).dispatch(request_, exchange()) ==
        VekHttpDispatch::Verdict::Upgrade) {
        std::make_shared<VekEventsSession>(stream_.release_socket(), server_)
            ->accept(parser_->release());
        finish();
    }
}

void VekHttpSession::refuse(int status, const std::string& why) {
    after_ = After::Linger;
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

void VekHttpSession::setHeaders(http::fields& fields, const std::string& type,
                                const Headers& headers) const {
    fields.set(http::field::server, "vek_master");
    fields.set(http::field::content_type, type);
    fields.set(http::field::cache_control, "no-store");
    for (const auto& field : VekHttpServer::securityHeaders()) {
        fields.set(field.first, field.second);
    }
    if (!request_.id.empty()) {
        fields.set(kRequestId, request_.id);
    }
    for (const auto& field : headers) {
        fields.set(field.first, field.second);
    }
}

void VekHttpSession::send(Answer answer) {
    if (state_ != State::Handling) {
        return;
    }
    state_ = State::Answering;
    plain_ = std::make_shared<http::response<http::string_body>>(
        static_cast<http::status>(answer.status), 11);
    setHeaders(*plain_, answer.type, answer.headers);
    plain_->keep_alive(after_ == After::Next);
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
        if (self->state_ != State::Handling) {
            stream->close();
            return;
        }
        self->state_ = State::Answering;
        self->body_ = stream;
        self->sendHead(status, type, length, headers);
    });
    return stream;
}

void VekHttpSession::sendHead(int status, const std::string& type, uint64_t length,
                              const Headers& headers) {
    streamed_.emplace(static_cast<http::status>(status), 11);
    setHeaders(*streamed_, type, headers);
    streamed_->keep_alive(after_ == After::Next);
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
    if (!body_ || writing_ || state_ == State::Finished) {
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
    plain_.reset();
    if (ec || after_ == After::Close) {
        finish();
    } else if (after_ == After::Linger) {
        linger();
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
    state_ = State::Lingering;
    // A deadline of our own: the stream's expiry is not enforced against a client that
    // keeps the reads coming.
    stream_.expires_never();
    deadline_.expires_after(kLinger);
    deadline_.async_wait([self = shared_from_this()](beast::error_code e) {
        if (!e) {
            self->finish();
        }
    });
    lingered_ = 0;
    drain();
}

void VekHttpSession::drain() {
    // What the client sends meanwhile (the rest of a refused body) is read and dropped
    // for a moment: closing on unread bytes resets the connection, which could lose our
    // answer before the client reads it. A client that keeps sending is cut off.
    stream_.async_read_some(net::buffer(drain_),
                            [self = shared_from_this()](beast::error_code ec, size_t n) {
                                self->lingered_ += n;
                                if (ec || self->lingered_ >= kLingerBytes) {
                                    self->finish();
                                } else {
                                    self->drain();
                                }
                            });
}

void VekHttpSession::shutdown() {
    if (after_ == After::Next) {
        after_ = After::Close;
    }
    if (!busy()) {
        finish();
    }
}

void VekHttpSession::finish() {
    if (state_ == State::Finished) {
        return;
    }
    state_ = State::Finished;
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
