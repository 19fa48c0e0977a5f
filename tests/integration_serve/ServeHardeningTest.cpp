// What an outsider may send the server: each case once ended it, stalled it or was
// taken further than it should be.

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "CabledDaemon.h"
#include "EventsClient.h"
#include "MasterRun.h"
#include "ServeRig.h"

// Named, not anonymous: the serve tests are compiled as one unit.
namespace hardening {

using Json = nlohmann::json;
using namespace std::chrono_literals;

std::string error(const std::string& text) {
    return Json{{"error", text}}.dump() + '\n';
}

// A loopback connection to the server, read with a time limit.
class Client {
public:
    explicit Client(uint16_t port) : fd_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (fd_ >= 0 && connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
            close(fd_);
            fd_ = -1;
        }
    }
    ~Client() {
        if (fd_ >= 0) {
            close(fd_);
        }
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    bool open() const { return fd_ >= 0; }
    // Waits until all of bytes is sent; false when the connection ended or stalled.
    bool send(const std::string& bytes) {
        for (size_t at = 0; at < bytes.size();) {
            pollfd ready{fd_, POLLOUT, 0};
            if (poll(&ready, 1, 10000) != 1) {
                return false;
            }
            const ssize_t n = ::send(fd_, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
            if (n <= 0) {
                return false;
            }
            at += static_cast<size_t>(n);
        }
        return true;
    }
    // One answer, from its status line to the end of its body; "" when none came.
    std::string answer(std::chrono::milliseconds limit = 10s) {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        for (;;) {
            const size_t head = held_.find("\r\n\r\n");
            if (head != std::string::npos) {
                const size_t length = held_.find("Content-Length: ");
                const size_t size =
                    length < head ? std::strtoul(held_.c_str() + length + 16, nullptr, 10) : 0;
                if (held_.size() >= head + 4 + size) {
                    const std::string whole = held_.substr(0, head + 4 + size);
                    held_.erase(0, whole.size());
                    return whole;
                }
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            pollfd ready{fd_, POLLIN, 0};
            char buffer[4096];
            if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) != 1) {
                return "";
            }
            const ssize_t n = recv(fd_, buffer, sizeof(buffer), 0);
            if (n <= 0) {
                return "";
            }
            held_.append(buffer, static_cast<size_t>(n));
        }
    }

private:
    int fd_;
    std::string held_;
};

int status(const std::string& answer) {
    return answer.size() > 12 ? std::atoi(answer.c_str() + 9) : 0;
}

std::string get(uint16_t port, const std::string& target) {
    return "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) + "\r\n\r\n";
}

// The CPU time a process has used (user and system), in clock ticks.
long cpuTicks(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    const std::string stat{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::istringstream fields(stat.substr(stat.rfind(')') + 2));
    std::string field;
    long ticks = 0;
    for (int i = 3; i <= 15 && fields >> field; ++i) {
        ticks += i >= 14 ? std::atol(field.c_str()) : 0;
    }
    return ticks;
}

size_t openDescriptors(pid_t pid) {
    size_t count = 0;
    for (int fd = 0; fd < 4096; ++fd) {
        count += access(("/proc/" + std::to_string(pid) + "/fd/" + std::to_string(fd)).c_str(),
                        F_OK) == 0
                     ? 1
                     : 0;
    }
    return count;
}

TEST(ServeHardeningTest, BodiesNestedTooDeepAreRefusedOnEveryRouteThatReadsOne) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    const auto nested = [](size_t depth) {
        return std::string(depth, '[') + std::string(depth, ']');
    };
    const std::string refused = error("the body nests arrays and objects deeper than 64 levels");
    for (const size_t depth : {64 + 1 - 2, 100000 - 2}) {  // inside the body's own object
        const std::string deep = nested(depth);
        const std::string document = R"({"format":"vek-tuning/1","settings":{"Gain":)" + deep + "}}";
        const std::pair<std::string, std::string> bodies[] = {
            {"/api/devices/0/request", R"({"feature":"Common","message":"Feature","args":[)" + deep + "]}"},
            {"/api/devices/0/snapshot", document},
            {"/api/devices/0/apply?dry_run=1", document},
            {"/api/diff", R"({"a":"device","b":)" + document + "}"},
            {"/api/curve", R"({"bands":[)" + deep + "]}"},
        };
        for (const auto& body : bodies) {
            const ServeRig::Reply reply = serve.call("POST", body.first, body.second);
            EXPECT_EQ(reply.status, 400) << body.first << " at depth " << depth;
            EXPECT_EQ(reply.body, refused) << body.first << " at depth " << depth;
        }
    }
    // The limit itself passes, and a bracket in a string is no nesting.
    EXPECT_EQ(serve.call("POST", "/api/curve", R"({"bands":[)" + nested(62) + "]}").body,
              error("bands[0] is not an array of six numbers"));
    EXPECT_EQ(serve.call("POST", "/api/devices/0/request",
                         R"({"feature":"Common","message":"Version","args":[")" +
                             std::string(100, '[') + "\"]}")
                  .status,
              200);
}

TEST(ServeHardeningTest, TwoHostsOrTwoOriginsAreRefused) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    const std::string host = "Host: 127.0.0.1:" + std::to_string(serve.port()) + "\r\n";
    const std::string origin = "Origin: http://127.0.0.1:" + std::to_string(serve.port()) + "\r\n";
    const ServeRig::Reply hosts =
        serve.raw("GET /api/devices HTTP/1.1\r\n" + host + "Host: evil.example\r\n\r\n");
    EXPECT_EQ(hosts.status, 400);
    EXPECT_EQ(hosts.body, error("the request has 2 Host headers; one is allowed"));
    const ServeRig::Reply origins = serve.raw("GET /api/devices HTTP/1.1\r\n" + host + origin +
                                              "Origin: http://evil.example\r\n\r\n");
    EXPECT_EQ(origins.status, 400);
    EXPECT_EQ(origins.body, error("the request has 2 Origin headers; one is allowed"));
    EXPECT_EQ(serve.raw("GET /api/devices HTTP/1.1\r\n" + host + origin + "\r\n").status, 200);
}

TEST(ServeHardeningTest, EveryAnswerForbidsFramingSniffingAndForeignContent) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    const std::map<std::string, std::string> secure{
        {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"},
        {"X-Frame-Options", "DENY"},
        {"X-Content-Type-Options", "nosniff"},
        {"Referrer-Policy", "no-referrer"},
    };
    for (const char* target : {"/", "/main.js", "/api/devices", "/api/nothing"}) {
        const ServeRig::Reply reply = serve.call("GET", target);
        for (const auto& header : secure) {
            ASSERT_EQ(reply.headers.count(header.first), 1u) << target << ": " << header.first;
            EXPECT_EQ(reply.headers.at(header.first), header.second) << target;
        }
    }
    // The request's id comes back, the client's own or one the server gives.
    EXPECT_EQ(serve.call("GET", "/api/devices", "", {{"Vek-Request-Id", "tab-7:12"}})
                  .headers.at("Vek-Request-Id"),
              "tab-7:12");
    const std::string given = serve.call("GET", "/api/devices").headers.at("Vek-Request-Id");
    EXPECT_EQ(given.find_first_not_of("0123456789"), std::string::npos) << given;
    const ServeRig::Reply bad = serve.call("GET", "/api/devices", "", {{"Vek-Request-Id", "a b"}});
    EXPECT_EQ(bad.status, 400);
}

TEST(ServeHardeningTest, WithATokenThePanelsFilesComeWithoutItAndNothingElseDoes) {
    CabledDaemon daemon;
    const std::string token = "a-token-for-these-tests";
    MasterRun::TempFile tokenFile(token + "\n");
    ServeRig serve({daemon.path()}, {"--token-file=" + tokenFile.path()}, token);
    ASSERT_TRUE(serve.ready()) << serve.output();
    const std::pair<const char*, const char*> files[] = {
        {"/", "text/html"},
        {"/main.js", "text/javascript"},
        {"/panel.css", "text/css"},
    };
    for (const auto& file : files) {
        const ServeRig::Reply reply = serve.call("GET", file.first);
        EXPECT_EQ(reply.status, 200) << file.first;
        EXPECT_EQ(reply.headers.at("Content-Type"), file.second) << file.first;
    }
    EXPECT_NE(serve.call("GET", "/").body.find("id=\"token-box\""), std::string::npos);
    const std::string needed = error("this server needs a token: Authorization: Bearer TOKEN");
    for (const char* target : {"/api", "/api/devices", "/api/profile", "/api/devices/0/snapshot",
                               "/nothing.js"}) {
        const ServeRig::Reply reply = serve.call("GET", target);
        EXPECT_EQ(reply.status, 401) << target;
        EXPECT_EQ(reply.body, needed) << target;
    }
    EXPECT_EQ(serve.call("GET", "/api/events", "",
                         {{"Connection", "Upgrade"}, {"Upgrade", "websocket"},
                          {"Sec-WebSocket-Version", "13"},
                          {"Sec-WebSocket-Key", "dGhlIHNhbXBsZSBub25jZQ=="}})
                  .status,
              401);
    EXPECT_EQ(serve.call("POST", "/", "{}").status, 401);
    // The Host check stays.
    EXPECT_EQ(serve.call("GET", "/", "", {{"Host", "evil.example:" + std::to_string(serve.port())}})
                  .status,
              403);
}

TEST(ServeHardeningTest, AClientThatKeepsSendingARefusedBodyIsCutOff) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    Client client(serve.port());
    ASSERT_TRUE(client.open());
    ASSERT_TRUE(client.send("POST /api/devices/0/request HTTP/1.1\r\nHost: 127.0.0.1:" +
                            std::to_string(serve.port()) +
                            "\r\nTransfer-Encoding: chunked\r\n\r\n"));
    // Far more than the server reads after its answer, far less than a drain takes in.
    constexpr size_t kGiveUp = 512u << 20;
    std::atomic<size_t> sent{0};
    std::thread sender([&] {
        std::ostringstream chunk;
        chunk << std::hex << 65536 << "\r\n" << std::string(65536, 'x') << "\r\n";
        while (sent < kGiveUp && client.send(chunk.str())) {
            sent += chunk.str().size();
        }
    });
    const std::string answer = client.answer();
    sender.join();
    EXPECT_EQ(status(answer), 413) << answer;
    EXPECT_NE(answer.find("Connection: close\r\n"), std::string::npos) << answer;
    EXPECT_LT(sent, kGiveUp);
    std::printf("sent before the connection ended: %zu bytes\n", sent.load());
    EXPECT_EQ(serve.call("GET", "/api/devices").status, 200);
}

TEST(ServeHardeningTest, ClientsPastTheLimitAreTurnedAwayAndTheOthersServed) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()}, {"--max-clients=8"});
    ASSERT_TRUE(serve.ready()) << serve.output();
    std::vector<std::unique_ptr<Client>> idle;
    for (int i = 0; i < 10; ++i) {
        idle.push_back(std::make_unique<Client>(serve.port()));
        ASSERT_TRUE(idle.back()->open());
    }
    const ServeRig::Reply busy = serve.call("GET", "/api/devices");
    EXPECT_EQ(busy.status, 503);
    EXPECT_EQ(busy.body, error("the server has 8 clients already; try again later"));
    EXPECT_EQ(status(idle.back()->answer()), 503);
    idle.clear();
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    int again = 0;
    while (again != 200 && std::chrono::steady_clock::now() < deadline) {
        again = serve.call("GET", "/api/devices").status;
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_EQ(again, 200);
    // Subscribers count too: they stay for as long as they like. (The connections
    // closed above may take the server a moment to end.)
    const auto subscribe = [&serve] {
        for (int tries = 0; tries < 40; ++tries) {
            auto subscriber = std::make_unique<EventsClient>(serve.port());
            if (subscriber->open()) {
                return subscriber;
            }
            std::this_thread::sleep_for(50ms);
        }
        return std::unique_ptr<EventsClient>();
    };
    std::vector<std::unique_ptr<EventsClient>> subscribers;
    for (int i = 0; i < 8; ++i) {
        subscribers.push_back(subscribe());
        ASSERT_TRUE(subscribers.back()) << i;
    }
    EXPECT_EQ(serve.call("GET", "/api/devices").status, 503);
    EXPECT_FALSE(EventsClient(serve.port()).open());
}

TEST(ServeHardeningTest, OutOfDescriptorsTheServerWaitsAndServesItsClients) {
    CabledDaemon daemon;
    ServeRig serve({daemon.path()});
    ASSERT_TRUE(serve.ready()) << serve.output();
    Client kept(serve.port());
    ASSERT_TRUE(kept.send(get(serve.port(), "/api/devices")));
    ASSERT_EQ(status(kept.answer()), 200);
    // Room for a few connections more than it has now.
    const rlimit low{openDescriptors(serve.pid()) + 8, openDescriptors(serve.pid()) + 8};
    ASSERT_EQ(prlimit(serve.pid(), RLIMIT_NOFILE, &low, nullptr), 0);
    std::vector<std::unique_ptr<Client>> idle;
    for (int i = 0; i < 40; ++i) {
        idle.push_back(std::make_unique<Client>(serve.port()));
    }
    std::this_thread::sleep_for(300ms);
    const long before = cpuTicks(serve.pid());
    std::this_thread::sleep_for(1s);
    // A loop retrying accept takes the whole second; waiting between tries, next to none.
    const long used = cpuTicks(serve.pid()) - before;
    EXPECT_LT(used, sysconf(_SC_CLK_TCK) / 4);
    std::printf("CPU while out of descriptors: %ld ticks of %ld a second\n", used,
                sysconf(_SC_CLK_TCK));
    ASSERT_TRUE(kept.send(get(serve.port(), "/api/devices")));
    EXPECT_EQ(status(kept.answer()), 200);
    idle.clear();
    EXPECT_EQ(serve.call("GET", "/api/devices").status, 200);
}

}  // namespace hardening
