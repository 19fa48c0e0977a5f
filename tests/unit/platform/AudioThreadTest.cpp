#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>

#include "AudioThread.h"
#include "PlatformLog.h"

namespace {

// Counts its loops until prepareStop clears the run flag.
class Looper : public AudioThread {
public:
    Looper() : AudioThread("LooperThreadWithALongName", -1) {}
    ~Looper() override { join(); }
    std::atomic<int> loops{0};
    std::atomic<bool> sawRunning{false};
    std::atomic<bool> finished{false};

protected:
    void run() override {
        sawRunning = isRunning();
        while (isRunning()) {
            ++loops;
            AudioSleepMs(1);
        }
        finished = true;
    }
};

// Returns at once, without polling.
class OneShot : public AudioThread {
public:
    OneShot() : AudioThread(nullptr, 0) {}
    ~OneShot() override { join(); }
    std::atomic<int> runs{0};

protected:
    void run() override { ++runs; }
};

TEST(AudioThreadTest, StartPrepareStopJoin) {
    Looper t;
    ASSERT_EQ(t.start(), 0);
    while (t.loops < 3) {
        AudioSleepMs(1);
    }
    EXPECT_TRUE(t.sawRunning) << "the flag is set before the body runs";
    EXPECT_EQ(t.start(), -1) << "a running thread cannot be started again";
    t.prepareStop();
    t.stop();
    t.join();
    EXPECT_TRUE(t.finished);
    t.join();  // a second join does nothing
}

TEST(AudioThreadTest, StopClearsTheFlagToo) {
    Looper t;
    ASSERT_EQ(t.start(), 0);
    t.stop();
    t.join();
    EXPECT_TRUE(t.finished);
}

TEST(AudioThreadTest, RunsOnceAndCanBeRestartedAfterJoin) {
    OneShot t;
    t.join();  // never started: nothing to join
    ASSERT_EQ(t.start(), 0);
    t.join();
    ASSERT_EQ(t.start(), 0);
    t.join();
    EXPECT_EQ(t.runs, 2);
}

TEST(AudioThreadTest, DestructorJoinsAForgottenThread) {
    auto* t = new OneShot;
    ASSERT_EQ(t->start(), 0);
    delete t;  // must neither leak the thread nor terminate
}

TEST(AudioThreadTest, SleepLastsAtLeastTheTime) {
    const auto before = std::chrono::steady_clock::now();
    AudioSleepMs(20);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(20));
    AudioSleepMs(0);
}

TEST(PlatformLogTest, WritesPriorityTagAndMessageToStandardError) {
    testing::internal::CaptureStderr();
    __android_log_print(6, "AS", "[%s][%u]sem_post failed", "signal", 7u);
    __android_log_print(3, "AS", "ends with a line feed\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "6 AS: [signal][7]sem_post failed\n3 AS: ends with a line feed\n");

    testing::internal::CaptureStderr();
    const std::string longText(10000, 'x');
    __android_log_print(4, "T", "%s", longText.c_str());
    const std::string out = testing::internal::GetCapturedStderr();
    EXPECT_EQ(out.size(), 4095u) << "cut, but still one line";
    EXPECT_EQ(out.substr(0, 6), "4 T: x");
    EXPECT_EQ(out.back(), '\n');
}

}  // namespace
