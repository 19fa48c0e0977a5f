#include "ServerTestSupport.h"
#include "VekEqSlaveCallbackImpl.h"
#include "VekEqV2SlaveCallbackImpl.h"
#include "VekHfeSlaveCallbackImpl.h"
#include "VekVbSlaveCallbackImpl.h"

using namespace vekprotocol;
using namespace vekserver;

namespace {

// The services that switch an effect of the front application, with the effect and
// the name their result lines give it.
template <class S, class I>
struct Service {
    using Slave = S;
    using Impl = I;
};
struct EqV2 : Service<VekEqV2Slave, VekEqV2SlaveCallbackImpl> {
    static constexpr const char *kEffect = "equalizer", *kLabel = "EQ";
};
struct Eq : Service<VekEqSlave, VekEqSlaveCallbackImpl> {
    static constexpr const char *kEffect = "equalizer", *kLabel = "EQ";
};
struct Hfe : Service<VekHfeSlave, VekHfeSlaveCallbackImpl> {
    static constexpr const char *kEffect = "hfe", *kLabel = "HFE";
};
struct Vb : Service<VekVbSlave, VekVbSlaveCallbackImpl> {
    static constexpr const char *kEffect = "vb", *kLabel = "VB";
};

template <class F>
using EffectEnableTest = ServiceTest<typename F::Slave, typename F::Impl>;
using Services = ::testing::Types<EqV2, Eq, Hfe, Vb>;
TYPED_TEST_SUITE(EffectEnableTest, Services);

TYPED_TEST(EffectEnableTest, SwitchReachesItsOwnEffectAndFailuresAnswerNg) {
    const auto frame = [](int self, const std::string& rest) {
        return "AS:" + std::to_string(self) + ":0:" + TypeParam::Slave::kFeature + ":" + rest +
               "\n";
    };
    const std::string label = TypeParam::kLabel;
    EXPECT_EQ(this->serve(frame(7, "SetEnableRequest:0:OK:<1>:")),
              "[AST][INF]onSetEnableRequest, self=7, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Success to set front " +
                  label + " enable state, ret=0.\n");
    EXPECT_EQ(this->response(), frame(1, "SetEnableResponse:0:OK:"));
    EXPECT_TRUE(AudioSim::effectEnabled(TypeParam::kEffect));

    this->serve(frame(8, "GetEnableRequest:0:OK:"));
    EXPECT_EQ(this->response(), frame(2, "GetEnableResponse:0:OK:<1>:"));

    // The state stays on, but a failed read answers it as off.
    AudioSim::failOn("getEffectEnable", 9);
    EXPECT_EQ(this->serve(frame(9, "GetEnableRequest:0:OK:")),
              "[AST][INF]onGetEnableRequest, self=9, peer=0, fail=0, rawDataLength=0\n"
              "[AST][ZIP]Fail to get front " +
                  label + " enable state, ret=9.\n");
    EXPECT_EQ(this->response(), frame(3, "GetEnableResponse:0:NG:<0>:"));
}

}  // namespace
