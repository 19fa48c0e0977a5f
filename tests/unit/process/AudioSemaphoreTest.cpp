#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "AudioSemaphore.h"
#include "ProcessTestSupport.h"

namespace {

using namespace std::chrono_literals;

class AudioSemaphoreTest : public ::testing::Test {
protected:
    void SetUp() override { platformLogRecords().clear(); }
};

TEST_F(AudioSemaphoreTest, RepeatedSignalsHoldOneCount) {
    AudioSemaphore semaphore;
    semaphore.signal();
    semaphore.signal();
    semaphore.wait();

    // Had the second signal counted, this wait would return at once.
    std::atomic<bool> woke{false};
    std::thread waiter([&] {
        semaphore.wait();
        woke = true;
    });
    std::this_thread::sleep_for(200ms);
    EXPECT_FALSE(woke);
    semaphore.signal();
    waiter.join();
    EXPECT_TRUE(woke);
    EXPECT_TRUE(platformLogRecords().empty());
}

void ignoreAlarm(int) {}

TEST_F(AudioSemaphoreTest, InterruptedWaitLogsAndReturns) {
    struct sigaction action {};
    struct sigaction saved {};
    action.sa_handler = ignoreAlarm;
    sigemptyset(&action.sa_mask);
    ASSERT_EQ(sigaction(SIGALRM, &action, &saved), 0);
    itimerval timer{};
    timer.it_value.tv_usec = 100000;
    ASSERT_EQ(setitimer(ITIMER_REAL, &timer, nullptr), 0);

    AudioSemaphore semaphore;
    semaphore.wait();
    sigaction(SIGALRM, &saved, nullptr);

    EXPECT_EQ(platformLogRecords(),
              std::vector<std::string>{"6 AS [wait][64]sem wait failed:Interrupted system call\n"});
}

}  // namespace
