#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>

namespace vekserve {

// The body of an answer that a line thread produces while the HTTP side sends it: a
// setting file of any size passes through without being held whole. The producer waits
// while limit bytes are waiting to be sent, so a slow client slows the line instead of
// filling memory; a client that has gone (or timed out) releases it at once.
class VekBodyStream {
public:
    enum class Take { Data, Empty, End, Broken };

    // wake is called on the producer's thread whenever there is something new to take.
    VekBodyStream(size_t limit, std::function<void()> wake) : limit_(limit), wake_(std::move(wake)) {}

    // Producer: false once the consumer has gone.
    bool push(const char* data, size_t size);
    // Producer: the body is complete (whole) or cut short.
    void finish(bool whole);

    // Consumer: everything waiting (Data), nothing yet (Empty), the end (End, after the
    // last Data), or the body was cut short (Broken).
    Take take(std::string& out);
    // Consumer: it will take nothing more.
    void close();

private:
    const size_t limit_;
    std::function<void()> wake_;
    std::mutex mutex_;
    std::condition_variable room_;
    std::string waiting_;
    bool finished_ = false;
    bool whole_ = false;
    bool closed_ = false;
};

}  // namespace vekserve
