#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>

#include "VekBodyStream.h"

using namespace vekserve;

namespace {

// A body far larger than the stream's limit passes whole and in order between a
// producer and a consumer on threads of their own, however the pieces fall.
TEST(BodyStreamTest, ALargeBodyPassesWholeAndInOrderThroughASmallLimit) {
    std::atomic<int> wakes{0};
    VekBodyStream stream(64, [&] { ++wakes; });
    std::string sent;
    for (int i = 0; i < 20000; ++i) {
        sent += std::to_string(i) + ',';
    }
    std::thread producer([&] {
        for (size_t at = 0; at < sent.size(); at += 37) {
            ASSERT_TRUE(stream.push(sent.data() + at, std::min<size_t>(37, sent.size() - at)));
        }
        stream.finish(true);
    });
    std::string received;
    VekBodyStream::Take take = VekBodyStream::Take::Empty;
    while (take != VekBodyStream::Take::End && take != VekBodyStream::Take::Broken) {
        std::string piece;
        take = stream.take(piece);
        if (take == VekBodyStream::Take::Data) {
            EXPECT_LE(piece.size(), 64u + 37u);  // never more than the limit and one push
            received += piece;
        } else if (take == VekBodyStream::Take::Empty) {
            std::this_thread::yield();
        }
    }
    producer.join();
    EXPECT_EQ(take, VekBodyStream::Take::End);
    EXPECT_EQ(received, sent);
    EXPECT_GT(wakes, 0);
}

// A consumer that leaves while the producer is held drops what waits and frees it.
TEST(BodyStreamTest, ClosingDropsWhatWaitsAndEveryLaterPushFails) {
    VekBodyStream stream(4, [] {});
    EXPECT_TRUE(stream.push("abcd", 4));
    stream.close();
    EXPECT_FALSE(stream.push("e", 1));
    stream.finish(true);
    std::string out;
    EXPECT_EQ(stream.take(out), VekBodyStream::Take::End);
    EXPECT_EQ(out, "");
}

}  // namespace
