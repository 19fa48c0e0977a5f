// vek_master serve against the line it serves: requests per second and latency with 1, 8
// and 64 concurrent HTTP clients on one line beside vek_master --script on the same line,
// the fan-out of an event to 100 WebSocket subscribers, and the server's memory over a
// long run. The daemon runs on a pseudo-terminal joined to the master's by a relay.
//
//   vek_serve_bench [--smoke]      prints one table; --smoke runs every part briefly

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <fstream>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "VekMasterSession.h"
#include "VekSerialLine.h"
#include "VirtualCable.h"

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using Clock = std::chrono::steady_clock;

namespace {

const char* const kGet = R"({"feature":"Gain","message":"GetMaster"})";

double micros(Clock::duration d) {
    return std::chrono::duration<double, std::micro>(d).count();
}

struct Figures {
    double perSecond = 0;
    double p50 = 0;  // microseconds
    double p99 = 0;
};

Figures figures(std::vector<double> latencies, Clock::duration total) {
    Figures f;
    if (latencies.empty()) {
        return f;
    }
    std::sort(latencies.begin(), latencies.end());
    f.perSecond = latencies.size() / std::chrono::duration<double>(total).count();
    f.p50 = latencies[latencies.size() / 2];
    f.p99 = latencies[std::min(latencies.size() - 1, latencies.size() * 99 / 100)];
    return f;
}

pid_t spawn(const std::vector<std::string>& words, const std::string& output) {
    const pid_t pid = fork();
    if (pid == 0) {
        if (!output.empty() && (!freopen(output.c_str(), "wb", stdout) ||
                                !freopen("/dev/null", "wb", stderr))) {
            _exit(126);
        }
        std::vector<char*> argv;
        for (const std::string& word : words) {
            argv.push_back(const_cast<char*>(word.c_str()));
        }
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    return pid;
}

std::string slurp(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

long rssKb(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::atol(line.c_str() + 6);
        }
    }
    return -1;
}

// One keep-alive HTTP connection.
class Client {
public:
    // A GET when body is empty: the server's own work without a line.
    Client(uint16_t port, const std::string& target = "/api/devices/0/request",
           const std::string& body = kGet)
        : stream_(io_) {
        stream_.connect(net::ip::tcp::endpoint(net::ip::make_address("127.0.0.1"), port));
        stream_.socket().set_option(net::ip::tcp::no_delay(true));
        request_ = {body.empty() ? http::verb::get : http::verb::post, target, 11};
        request_.set(http::field::host, "127.0.0.1:" + std::to_string(port));
        request_.body() = body;
        request_.prepare_payload();
    }
    bool get() {
        beast::error_code ec;
        http::write(stream_, request_, ec);
        http::response<http::string_body> response;
        http::read(stream_, buffer_, response, ec);
        return !ec && response.result_int() == 200;
    }

private:
    net::io_context io_;
    beast::tcp_stream stream_;
    beast::flat_buffer buffer_;
    http::request<http::string_body> request_;
};

Figures httpLoad(uint16_t port, int clients, int perClient,
                 const std::string& target = "/api/devices/0/request", const std::string& body = kGet) {
    std::vector<std::vector<double>> latencies(clients);
    std::atomic<int> failed{0};
    const auto start = Clock::now();
    std::vector<std::thread> threads;
    for (int c = 0; c < clients; ++c) {
        threads.emplace_back([&, c] {
            Client client(port, target, body);
            for (int i = 0; i < perClient; ++i) {
                const auto t0 = Clock::now();
                failed += client.get() ? 0 : 1;
                latencies[c].push_back(micros(Clock::now() - t0));
            }
        });
    }
    for (std::thread& t : threads) {
        t.join();
    }
    const auto total = Clock::now() - start;
    std::vector<double> all;
    for (const auto& l : latencies) {
        all.insert(all.end(), l.begin(), l.end());
    }
    if (failed > 0) {
        std::fprintf(stderr, "%d requests failed\n", failed.load());
    }
    return figures(all, total);
}

// The same requests on the line itself, through the session vek_master uses.
Figures direct(const std::string& path, int count) {
    vekmaster::VekSerialLine line;
    if (!line.open(path, 115200).empty()) {
        return Figures();
    }
    vekmaster::VekMasterSession session(line, 3000);
    std::vector<double> latencies;
    const auto start = Clock::now();
    for (int i = 0; i < count; ++i) {
        const auto t0 = Clock::now();
        session.request("Gain", "GetMaster", {});
        latencies.push_back(micros(Clock::now() - t0));
    }
    return figures(latencies, Clock::now() - start);
}

// vek_master --script of count GetMaster lines: its own --stats time per request.
double scriptMicros(const std::string& path, int count) {
    char name[] = "/tmp/vek_serve_bench_XXXXXX";
    const int fd = mkstemp(name);
    std::string script;
    for (int i = 0; i < count; ++i) {
        script += "Gain GetMaster\n";
    }
    if (fd < 0 || write(fd, script.data(), script.size()) != static_cast<ssize_t>(script.size())) {
        return 0;
    }
    close(fd);
    const std::string out = std::string(name) + ".err";
    const pid_t pid = fork();
    if (pid == 0) {
        if (!freopen("/dev/null", "wb", stdout) || !freopen(out.c_str(), "wb", stderr)) {
            _exit(126);
        }
        execl(VEK_MASTER_PATH, VEK_MASTER_PATH, ("--device=" + path).c_str(),
              (std::string("--script=") + name).c_str(), "--stats", nullptr);
        _exit(127);
    }
    waitpid(pid, nullptr, 0);
    const std::string stats = slurp(out);
    unlink(name);
    unlink(out.c_str());
    const size_t comma = stats.rfind(", ");
    return comma == std::string::npos ? 0 : std::atof(stats.c_str() + comma + 2) * 1000.0 / count;
}

// 100 subscribers; per request, the time from the first subscriber's copy of the response
// event to the last one's.
double fanOut(uint16_t port, int subscribers, int rounds) {
    net::io_context io;
    struct Sub {
        explicit Sub(net::io_context& io) : ws(io) {}
        websocket::stream<beast::tcp_stream> ws;
        beast::flat_buffer buffer;
    };
    std::vector<std::unique_ptr<Sub>> subs;
    std::mutex mutex;
    std::vector<Clock::time_point> first(rounds);
    std::vector<Clock::time_point> last(rounds);
    std::vector<int> seen(rounds);
    std::atomic<int> round{-1};
    for (int i = 0; i < subscribers; ++i) {
        subs.push_back(std::make_unique<Sub>(io));
        beast::get_lowest_layer(subs.back()->ws)
            .connect(net::ip::tcp::endpoint(net::ip::make_address("127.0.0.1"), port));
        subs.back()->ws.handshake("127.0.0.1:" + std::to_string(port), "/api/events");
    }
    std::function<void(Sub&)> read = [&](Sub& sub) {
        sub.ws.async_read(sub.buffer, [&, s = &sub](beast::error_code ec, size_t) {
            if (ec) {
                return;
            }
            const bool response =
                beast::buffers_to_string(s->buffer.data()).find("\"type\":\"response\"") !=
                std::string::npos;
            s->buffer.clear();
            const int r = round.load();
            if (response && r >= 0) {
                std::lock_guard<std::mutex> lock(mutex);
                last[r] = Clock::now();
                first[r] = seen[r] == 0 ? last[r] : first[r];
                ++seen[r];
            }
            read(*s);
        });
    };
    for (auto& sub : subs) {
        read(*sub);
    }
    std::thread runner([&] { io.run(); });
    Client client(port);
    std::vector<double> spans;
    for (int r = 0; r < rounds; ++r) {
        round = r;
        client.get();
        const auto deadline = Clock::now() + std::chrono::seconds(5);
        for (;;) {
            {
                std::lock_guard<std::mutex> lock(mutex);
                if (seen[r] == subscribers) {
                    spans.push_back(micros(last[r] - first[r]));
                    break;
                }
            }
            if (Clock::now() > deadline) {
                break;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
    }
    net::post(io, [&] {
        for (auto& sub : subs) {
            beast::get_lowest_layer(sub->ws).close();
        }
    });
    runner.join();
    std::sort(spans.begin(), spans.end());
    return spans.empty() ? -1 : spans[spans.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    const bool smoke = argc > 1 && std::strcmp(argv[1], "--smoke") == 0;
    signal(SIGPIPE, SIG_IGN);
    // Two daemons alike, each on a cable of its own: one behind the server, one for the
    // direct runs (a line has one master: the server reads its line between requests).
    VirtualCable served;
    VirtualCable plain;
    char log[] = "/tmp/vek_serve_bench_log_XXXXXX";
    close(mkstemp(log));
    const pid_t daemons[] = {spawn({VEK_TUNER_PATH, "--device=" + served.deviceEnd()}, log),
                             spawn({VEK_TUNER_PATH, "--device=" + plain.deviceEnd()}, log)};
    if (!served.ok() || !plain.ok() || !served.awaitGreeting(10000) || !plain.awaitGreeting(10000)) {
        std::fprintf(stderr, "the daemons did not greet\n");
        return 1;
    }
    const int n = smoke ? 200 : 5000;

    char out[] = "/tmp/vek_serve_bench_out_XXXXXX";
    close(mkstemp(out));
    const pid_t server = spawn({VEK_MASTER_PATH, "serve", "--device=" + served.masterEnd(),
                                "--listen=127.0.0.1:0", "--queue=256"},
                               out);
    uint16_t port = 0;
    for (int i = 0; i < 500 && port == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        const std::string text = slurp(out);
        const size_t at = text.find("connected");
        const size_t colon = text.find("127.0.0.1:");
        if (at != std::string::npos && colon != std::string::npos) {
            port = static_cast<uint16_t>(std::atoi(text.c_str() + colon + 10));
        }
    }
    if (port == 0) {
        std::fprintf(stderr, "the server did not start: %s\n", slurp(out).c_str());
        return 1;
    }

    // The machine's load comes and goes: direct runs and server runs take turns, and
    // each figure is the median of its rounds.
    const int rounds = smoke ? 1 : 5;
    std::vector<double> script;
    std::vector<Figures> session;
    std::vector<Figures> clients[3];
    std::vector<Figures> bare;
    const int counts[3] = {1, 8, 64};
    for (int r = 0; r < rounds; ++r) {
        script.push_back(scriptMicros(plain.masterEnd(), n / rounds));
        session.push_back(direct(plain.masterEnd(), n / rounds));
        bare.push_back(httpLoad(port, 1, n / rounds, "/api/devices", ""));
        for (int i = 0; i < 3; ++i) {
            clients[i].push_back(httpLoad(port, counts[i], std::max(1, n / rounds / counts[i])));
        }
    }
    const auto median = [](std::vector<Figures> f) {
        std::sort(f.begin(), f.end(),
                  [](const Figures& a, const Figures& b) { return a.perSecond < b.perSecond; });
        return f[f.size() / 2];
    };
    std::sort(script.begin(), script.end());
    const double scriptUs = script[script.size() / 2];
    std::printf("%-44s %10s %10s %10s\n", "run (median of rounds)", "req/s", "p50 us", "p99 us");
    std::printf("%-44s %10.0f %10s %10s\n", "vek_master --script (its --stats time)",
                1e6 / scriptUs, "-", "-");
    const Figures line = median(session);
    std::printf("%-44s %10.0f %10.1f %10.1f\n", "session on the line (what --script does)",
                line.perSecond, line.p50, line.p99);
    for (int i = 0; i < 3; ++i) {
        const Figures f = median(clients[i]);
        std::printf("%-44s %10.0f %10.1f %10.1f\n",
                    ("server, " + std::to_string(counts[i]) + " HTTP client" + (i > 0 ? "s" : ""))
                        .c_str(),
                    f.perSecond, f.p50, f.p99);
    }
    const Figures http = median(bare);
    std::printf("%-44s %10.0f %10.1f %10.1f\n", "server, 1 HTTP client, no line (/api/devices)",
                http.perSecond, http.p50, http.p99);
    const double oneUs = 1e6 / median(clients[0]).perSecond;
    std::printf("server over --script, 1 client: %+.1f%% per request (%+.0f us; target at most +20%%)\n",
                100.0 * (oneUs - scriptUs) / scriptUs, oneUs - scriptUs);
    std::printf("event to 100 subscribers, first to last copy (median): %.0f us\n",
                fanOut(port, 100, smoke ? 5 : 50));

    const long before = rssKb(server);
    const int total = smoke ? 2000 : 100000;
    long middle = 0;
    for (int done = 0; done < total; done += total / 4) {
        httpLoad(port, 4, total / 16);
        middle = done == total / 4 ? rssKb(server) : middle;
    }
    std::printf("server RSS over %d requests: %ld KiB before, %ld at half, %ld after\n", total,
                before, middle, rssKb(server));

    kill(server, SIGTERM);
    int status = 0;
    waitpid(server, &status, 0);
    for (const pid_t daemon : daemons) {
        kill(daemon, SIGUSR1);
        waitpid(daemon, nullptr, 0);
    }
    unlink(log);
    unlink(out);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 0 : 1;
}
