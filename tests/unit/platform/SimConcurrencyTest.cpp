#include <atomic>

#include "AudioThread.h"
#include "PlatformTestSupport.h"

namespace {

// The daemon's shape: the library is used from a server thread while the test
// thread looks at the simulator. Meant to be run under ThreadSanitizer too.
class GainWriter : public AudioThread {
public:
    GainWriter() : AudioThread("GainWriter", -1) {}
    ~GainWriter() override { join(); }
    std::atomic<int> rounds{0};

protected:
    void run() override {
        while (isRunning()) {
            audio::DVAudioSetting::Volume* v = audio::DVAudioSetting::createVolume();
            v->setChannelGain(4, static_cast<float>(rounds % 7));
            float gain = 0;
            v->getChannelGain(4, &gain);
            audio::DVAudioSetting::destroy(v);
            ++rounds;
        }
    }
};

TEST_F(SimTest, StateMayBeReadWhileTheServerThreadCalls) {
    AudioSim::failForMask("getChannelGain", 4, 1);
    GainWriter writer;
    ASSERT_EQ(writer.start(), 0);
    float seen = 0;
    while (writer.rounds < 200) {
        seen += AudioSim::channelGain(4);
        AudioSim::setMasterGain(seen);
        (void)AudioSim::calls().size();
        (void)AudioSim::liveObjects();
    }
    writer.prepareStop();
    writer.join();
    const size_t calls = AudioSim::calls().size();
    EXPECT_EQ(calls, 2u * static_cast<size_t>(writer.rounds.load()));
}

}  // namespace
