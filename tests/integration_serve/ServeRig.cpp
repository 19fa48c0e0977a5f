#include "ServeRig.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <cstdlib>
#include <thread>

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;

namespace {

// Long enough for a daemon under a sanitizer or an emulator to start and greet.
constexpr auto kStartLimit = std::chrono::seconds(30);

std::string between(const std::string& text, const std::string& from, const std::string& to) {
    const size_t start = text.find(from);
    if (start == std::string::npos) {
        return "";
    }
    const size_t end = text.find(to, start + from.size());
    return text.substr(start + from.size(), end == std::string::npos ? end : end - start - from.size());
}

ServeRig::Reply readReply(beast::tcp_stream& stream) {
    ServeRig::Reply reply;
    beast::flat_buffer buffer;
    http::response_parser<http::string_body> parser;
    parser.body_limit(64 * 1024 * 1024);
    beast::error_code ec;
    http::read(stream, buffer, parser, ec);
    if (ec) {
        return reply;
    }
    reply.status = static_cast<int>(parser.get().result_int());
    for (const auto& field : parser.get()) {
        reply.headers[std::string(field.name_string())] = std::string(field.value());
    }
    reply.body = parser.get().body();
    return reply;
}

}  // namespace

ServeRig::ServeRig(const std::vector<std::string>& devices, const std::vector<std::string>& extra,
                   const std::string& token) {
    if (!token.empty()) {
        bearer_["Authorization"] = "Bearer " + token;
    }
    std::vector<std::string> words{VEK_MASTER_PATH, "serve", "--listen=127.0.0.1:0"};
    for (const std::string& device : devices) {
        words.push_back("--device=" + device);
    }
    words.insert(words.end(), extra.begin(), extra.end());
    // The journal's reads around each change would alter the traffic the other tests
    // count; those that want it name where it goes.
    if (std::none_of(extra.begin(), extra.end(),
                     [](const std::string& w) { return w.rfind("--state-dir=", 0) == 0; })) {
        words.emplace_back("--no-journal");
    }
    std::vector<char*> argv = MasterRun::execArgs(words);
    pid_ = fork();
    if (pid_ == 0) {
        if (!freopen(log_.path().c_str(), "wb", stdout) || !freopen(log_.path().c_str(), "ab", stderr)) {
            _exit(126);
        }
        execv(argv[0], argv.data());
        _exit(127);
    }
    const auto deadline = std::chrono::steady_clock::now() + kStartLimit;
    while (port_ == 0 && std::chrono::steady_clock::now() < deadline) {
        const std::string port = between(output(), "listening on http://127.0.0.1:", "\n");
        if (!port.empty() && output().find("listening on http://127.0.0.1:" + port + '\n') !=
                                 std::string::npos) {
            port_ = static_cast<uint16_t>(std::atoi(port.c_str()));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ready_ = port_ != 0;
    for (size_t i = 0; ready_ && i < devices.size(); ++i) {
        ready_ = awaitState(static_cast<int>(i), "connected", kStartLimit);
    }
}

ServeRig::~ServeRig() {
    if (!stopped_ && pid_ > 0) {
        stop(SIGTERM);
    }
}

int ServeRig::stop(int signo) {
    stopped_ = true;
    return MasterRun::stop(pid_, signo, std::chrono::seconds(30));
}

bool ServeRig::awaitState(int index, const std::string& state, std::chrono::milliseconds limit) const {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    const std::string wanted = "\"index\":" + std::to_string(index) + ",";
    for (;;) {
        const std::string body = call("GET", "/api/devices", "", bearer_).body;
        const size_t at = body.find(wanted);
        if (at != std::string::npos &&
            between(body.substr(at), "\"state\":\"", "\"") == state) {
            return true;
        }
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

ServeRig::Reply ServeRig::call(const std::string& method, const std::string& target,
                               const std::string& body,
                               const std::map<std::string, std::string>& headers) const {
    net::io_context io;
    beast::tcp_stream stream(io);
    beast::error_code ec;
    stream.connect(net::ip::tcp::endpoint(net::ip::make_address("127.0.0.1"), port_), ec);
    if (ec) {
        return Reply();
    }
    http::request<http::string_body> request(http::string_to_verb(method), target, 11);
    request.set(http::field::host, "127.0.0.1:" + std::to_string(port_));
    for (const auto& header : headers) {
        request.set(header.first, header.second);
    }
    request.body() = body;
    request.prepare_payload();
    http::write(stream, request, ec);
    return ec ? Reply() : readReply(stream);
}

ServeRig::Reply ServeRig::raw(const std::string& bytes) const {
    net::io_context io;
    beast::tcp_stream stream(io);
    beast::error_code ec;
    stream.connect(net::ip::tcp::endpoint(net::ip::make_address("127.0.0.1"), port_), ec);
    if (!ec) {
        net::write(stream, net::buffer(bytes), ec);
    }
    return ec ? Reply() : readReply(stream);
}
