#include <atomic>
#include <string>

#include "AudioThread.h"
#include "DVAudioSetting.h"
#include "PlatformLog.h"
#include "SimTest.h"

namespace {

// The daemon's shape: the library is used from a thread of its own while the test
// thread looks at the simulator (meant for ThreadSanitizer too).
class GainLoop : public AudioThread {
public:
    GainLoop() : AudioThread("GainLoopWithALongName", -1) {}
    ~GainLoop() override { join(); }
    std::atomic<int> rounds{0};
    std::atomic<bool> sawRunning{false}, finished{false};

protected:
    void run() override {
        sawRunning = isRunning();
        while (isRunning()) {
            audio::DVAudioSetting::Volume* v = audio::DVAudioSetting::createVolume();
            float gain = 0;
            v->setChannelGain(4, static_cast<float>(rounds % 7));
            v->getChannelGain(4, &gain);
            audio::DVAudioSetting::destroy(v);
            ++rounds;
        }
        finished = true;
    }
};

// Counts into the test's counter, so that it may be deleted without a join of its own.
class OneShot : public AudioThread {
public:
    explicit OneShot(std::atomic<int>& runs) : AudioThread(nullptr, 0), runs_(runs) {}

protected:
    void run() override { ++runs_; }

private:
    std::atomic<int>& runs_;
};

TEST_F(SimTest, ThreadRunsUntilPrepareStopAndIsJoined) {
    AudioSim::failForMask("getChannelGain", 4, 1);
    GainLoop t;
    ASSERT_EQ(t.start(), 0);
    while (t.rounds < 100) {
        AudioSim::setMasterGain(AudioSim::channelGain(4) + AudioSim::liveObjects());
        (void)AudioSim::calls().size();
    }
    EXPECT_TRUE(t.sawRunning) << "the flag is set before the body runs";
    EXPECT_EQ(t.start(), -1) << "a running thread cannot be started again";
    t.prepareStop();
    t.join();
    EXPECT_TRUE(t.finished);
    EXPECT_EQ(AudioSim::calls().size(), 2u * static_cast<size_t>(t.rounds.load()));
    t.join();
}

TEST(AudioThreadTest, DestructorJoinsAForgottenThread) {
    std::atomic<int> runs{0};
    auto* t = new OneShot(runs);
    t->join();  // never started: nothing to join
    ASSERT_EQ(t->start(), 0);
    while (runs < 1) {
        AudioSleepMs(1);
    }
    delete t;  // an unjoined std::thread would terminate the process
}

TEST(PlatformLogTest, WritesPriorityTagAndMessageAsOneLine) {
    testing::internal::CaptureStderr();
    __android_log_print(6, "AS", "[%s][%u]sem_post failed", "signal", 7u);
    __android_log_print(3, "AS", "ends with a line feed\n");
    __android_log_print(4, "T", "%s", std::string(10000, 'x').c_str());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "6 AS: [signal][7]sem_post failed\n3 AS: ends with a line feed\n4 T: " +
                  std::string(4089, 'x') + "\n")
        << "a long message is cut, but still one line";
}

}  // namespace
