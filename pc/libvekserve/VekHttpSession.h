#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/buffer_body.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/serializer.hpp>
#include <boost/beast/http/string_body.hpp>
#include <memory>
#include <optional>
#include <string>

#include "VekConnection.h"
#include "VekHttpExchange.h"
#include "VekHttpServer.h"

namespace vekserve {

// One client's HTTP connection: reads a request (within the client timeout and the
// body limit), hands it to the dispatch (VekHttpDispatch) and writes the answer, then
// the next request. One request at a time; the answer may come from another thread.
class VekHttpSession : public VekHttpExchange,
                       public VekConnection,
                       public std::enable_shared_from_this<VekHttpSession> {
public:
    VekHttpSession(boost::asio::ip::tcp::socket&& socket, VekHttpServer& server);

    void start();
    void shutdown() override;

    const VekHttpRequest& request() const override { return request_; }
    void answer(int status, const Json& body, const Headers& headers = {}) override;
    void answerBytes(int status, const std::string& type, std::string body,
                     const Headers& headers = {}) override;
    std::shared_ptr<VekBodyStream> answerStream(int status, const std::string& type,
                                                uint64_t length,
                                                const Headers& headers = {}) override;

private:
    struct Answer {
        int status;
        std::string type;
        std::string body;
        Headers headers;
    };

    void read();
    void onRead(boost::beast::error_code ec);
    void handle();
    // An answer to a request that will not be read further: the connection ends after it.
    void refuse(int status, const std::string& why);
    void send(Answer answer);
    // The headers of every answer, then those of this one.
    void setHeaders(boost::beast::http::fields& fields, const std::string& type,
                    const Headers& headers) const;
    void sendHead(int status, const std::string& type, uint64_t length, const Headers& headers);
    void pump();
    void sent(boost::beast::error_code ec);
    // Stops sending, lets the client read what was sent, and ends.
    void linger();
    void drain();
    void finish();
    // The handle that route handlers get: its last copy, wherever dropped, lets go of
    // this session on the server's thread.
    std::shared_ptr<VekHttpExchange> exchange();

    enum class State {
        Reading,   // a request, within the deadline
        TimedOut,  // the deadline passed while reading: the read ends cancelled
        Handling,  // read whole and handed on; no answer yet
        Answering, // its answer is being written
        Lingering, // the answer is out; what the client still sends is read and dropped
        Finished,
    };
    // What follows the answer under way.
    enum class After {
        Next,    // the next request on this connection
        Close,   // the client asked for no more, or the server stops
        Linger,  // the request's body may be unread: let the client read the answer first
    };
    bool busy() const { return state_ == State::Handling || state_ == State::Answering; }

    VekHttpServer& server_;
    boost::beast::tcp_stream stream_;
    boost::beast::flat_buffer buffer_;
    std::optional<boost::beast::http::request_parser<boost::beast::http::string_body>> parser_;
    VekHttpRequest request_;
    std::string client_;
    State state_ = State::Reading;
    After after_ = After::Next;
    // The time a request has to come whole. Not the stream's own expiry, which would
    // close the socket before a 408 could say why.
    boost::asio::steady_timer deadline_;

    std::shared_ptr<boost::beast::http::response<boost::beast::http::string_body>> plain_;
    std::optional<boost::beast::http::response<boost::beast::http::buffer_body>> streamed_;
    std::optional<boost::beast::http::response_serializer<boost::beast::http::buffer_body>>
        serializer_;
    std::shared_ptr<VekBodyStream> body_;
    std::string chunk_;
    bool writing_ = false;
    char drain_[4096];
    size_t lingered_ = 0;
};

}  // namespace vekserve
