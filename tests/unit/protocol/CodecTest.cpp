#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "VekCodec.h"
#include "VekDecoder.h"
#include "VekText.h"

using namespace vekprotocol;

namespace {

TEST(TextTest, FloatsUseTheStreamDefaultForm) {
    const std::pair<float, const char*> cases[] = {
        {0.1f, "0.1"},       {0.1234567f, "0.123457"},
        {0.00001f, "1e-05"}, {-20.0f, "-20"},
        {0.5f, "0.5"},       {2.0f, "2"},
        {-3.25f, "-3.25"},   {1234567.0f, "1.23457e+06"},
        {0.0f, "0"},         {3.33333f, "3.33333"},
    };
    for (const auto& c : cases) {
        std::string text;
        VekText::appendFloat(text, c.first);
        EXPECT_EQ(text, c.second);
    }
}

TEST(TextTest, IntegerReadingFollowsStoiRules) {
    int32_t v = 7;
    EXPECT_TRUE(VekText::readInt(" \t-12abc", v));
    EXPECT_EQ(v, -12);
    EXPECT_TRUE(VekText::readInt("+2147483647", v));
    EXPECT_EQ(v, INT32_MAX);
    v = 7;
    EXPECT_FALSE(VekText::readInt("", v));
    EXPECT_FALSE(VekText::readInt("abc", v));
    EXPECT_FALSE(VekText::readInt("-", v));
    EXPECT_FALSE(VekText::readInt("2147483648", v));
    EXPECT_FALSE(VekText::readInt("-2147483649", v));
    EXPECT_FALSE(VekText::readInt("99999999999999999999", v));
    EXPECT_EQ(v, 7) << "a failed read leaves the value alone";

    uint32_t u = 0;
    EXPECT_TRUE(VekText::readUint("4294967295", u));
    EXPECT_EQ(u, UINT32_MAX);
    EXPECT_TRUE(VekText::readUint("-1", u));
    EXPECT_EQ(u, UINT32_MAX);
    EXPECT_FALSE(VekText::readUint("4294967296", u));
}

TEST(TextTest, FloatAndBoolReading) {
    float f = 0;
    EXPECT_TRUE(VekText::readFloat(" -3.5x", f));
    EXPECT_EQ(f, -3.5f);
    EXPECT_TRUE(VekText::readFloat("1e-05", f));
    EXPECT_EQ(f, 0.00001f);
    EXPECT_FALSE(VekText::readFloat("", f));
    EXPECT_FALSE(VekText::readFloat("x1", f));
    EXPECT_FALSE(VekText::readFloat("1e999", f));

    const std::pair<const char*, bool> bools[] = {
        {"1", true},  {" 1", true}, {"1x", true},  {"1.7", true},
        {"2", false}, {"0", false}, {"-1", false},
    };
    for (const auto& c : bools) {
        bool b = !c.second;
        EXPECT_TRUE(VekText::readBool(c.first, b)) << c.first;
        EXPECT_EQ(b, c.second) << c.first;
    }
    bool b = true;
    EXPECT_FALSE(VekText::readBool("yes", b));
}

TEST(TextTest, LenientReadingIsAtoi) {
    EXPECT_EQ(VekText::readLenient(" 42x"), 42);
    EXPECT_EQ(VekText::readLenient("abc"), 0);
    EXPECT_EQ(VekText::readLenient(""), 0);
    EXPECT_EQ(VekText::readLenient("-7"), -7);
    EXPECT_EQ(VekText::readLenient("4294967295"), -1);
}

// Test records covering every kind of field.
struct TestPlain : VekRecordHead {
    static constexpr const char* kMessage = "PlainRequest";
};
struct TestMixed : VekRecordHead {
    static constexpr const char* kMessage = "MixedResponse";
    std::string name;
    int32_t count = 0;
    uint32_t band = 0;
    float gain[2] = {};
    bool on = false;
    int32_t wide = 0;
};
template <class F>
void fields(F& f, TestMixed& r) {
    f("name", r.name);
    f("count", r.count);
    f("band", r.band);
    f("gain", r.gain);
    f("on", r.on);
    f("wide", VekAsUnsigned{r.wide});
}
struct TestList : VekRecordHead {
    static constexpr const char* kMessage = "ListResponse";
    std::string feature;
    std::vector<std::string> files;
};
template <class F>
void fields(F& f, TestList& r) {
    f("feature", r.feature);
    f("files", r.files);
}

template <class R>
std::string encoded(const R& record) {
    std::stringstream out("stale content that must go");
    vekEncode(out, "Test", record);
    return out.str();
}

TEST(EncodeTest, HeaderStatusAndBlock) {
    TestPlain plain;
    plain.self = 7;
    EXPECT_EQ(encoded(plain), "AS:7:0:Test:PlainRequest:0:OK:\n");
    plain.rawDataLength = 5;  // no bytes behind it: only the header says so
    EXPECT_EQ(encoded(plain), "AS:7:0:Test:PlainRequest:5:OK:\n");
    plain.fail = true;
    EXPECT_EQ(encoded(plain), "AS:7:0:Test:PlainRequest:0:NG:\n");
}

TEST(EncodeTest, AFailedRecordSendsNoRawData) {
    const std::string bytes("x\0y", 3);
    TestList list;
    list.feature = "Gain";
    list.rawData = bytes.data();
    list.rawDataLength = 3;
    EXPECT_EQ(encoded(list), std::string("AS:0:0:Test:ListResponse:3:OK:<Gain:>:\nx\0y", 42));
    list.fail = true;
    EXPECT_EQ(encoded(list), "AS:0:0:Test:ListResponse:0:NG:<Gain:>:\n");
}

class Callback {
public:
    void onPlain(TestPlain& r) { plain.push_back(r); }
    void onMixed(TestMixed& r) { mixed.push_back(r); }
    void onList(TestList& r) { list.push_back(r); }
    std::vector<TestPlain> plain;
    std::vector<TestMixed> mixed;
    std::vector<TestList> list;
};

void decode(Callback* cb, const VekFields& header, const VekFields& payload,
            const std::string& frameText = "", uint32_t rawOffset = 0) {
    std::stringstream frame(frameText);
    VekDecoder d(header, payload, frame, rawOffset);
    d.route(cb, &Callback::onPlain) || d.route(cb, &Callback::onMixed) ||
        d.route(cb, &Callback::onList);
}

TEST(DecodeTest, HeadIsReadLeniently) {
    Callback cb;
    decode(&cb, {" 12x", "abc", "Test", "PlainRequest", "0", "ok"}, {"ignored"});
    ASSERT_EQ(cb.plain.size(), 1u);
    EXPECT_EQ(cb.plain[0].self, 12u);
    EXPECT_EQ(cb.plain[0].peer, 0u);
    EXPECT_TRUE(cb.plain[0].fail);
    EXPECT_EQ(cb.plain[0].rawData, nullptr);
    decode(&cb, {"1", "0", "Test", "PlainRequest", "-3", "OK"}, {});
    EXPECT_FALSE(cb.plain[1].fail);
    EXPECT_EQ(cb.plain[1].rawDataLength, -3);
}

TEST(DecodeTest, FieldsAreReadInOrderAndExtrasIgnored) {
    Callback cb;
    decode(&cb, {"1", "0", "Test", "MixedResponse", "0", "OK"},
           {"LS", " 7", "4294967295", "-3.5", "0.707", "2", "4294967295", "extra"});
    ASSERT_EQ(cb.mixed.size(), 1u);
    const TestMixed& m = cb.mixed[0];
    EXPECT_EQ(m.name, "LS");
    EXPECT_EQ(m.count, 7);
    EXPECT_EQ(m.band, UINT32_MAX);
    EXPECT_EQ(m.gain[0], -3.5f);
    EXPECT_EQ(m.gain[1], 0.707f);
    EXPECT_FALSE(m.on);
    EXPECT_EQ(m.wide, -1);
}

TEST(DecodeTest, MissingOrUnreadableFieldsDropTheMessage) {
    Callback cb;
    const VekFields head{"1", "0", "Test", "MixedResponse", "0", "OK"};
    decode(&cb, head, {"LS", "7", "1", "0", "0", "1"});          // one short
    decode(&cb, head, {"LS", "x", "1", "0", "0", "1", "0"});     // count unreadable
    decode(&cb, head, {"LS", "7", "1", "0", "0", "true", "0"});  // bool unreadable
    decode(&cb, head, {"LS", "7", "1", "0", "1e99", "1", "0"});  // float out of range
    decode(&cb, head, {});
    EXPECT_TRUE(cb.mixed.empty());
    decode(&cb, head, {"", "7", "1", "0", "0", "1", "0"});  // an empty string is a value
    EXPECT_EQ(cb.mixed.size(), 1u);
}

TEST(DecodeTest, ListsTakeTheRestAndRawDataMustBeInTheFrame) {
    Callback cb;
    decode(&cb, {"1", "0", "Test", "ListResponse", "0", "OK"}, {"Gain", "/a", "", "/b"});
    ASSERT_EQ(cb.list.size(), 1u);
    EXPECT_EQ(cb.list[0].files, (std::vector<std::string>{"/a", "", "/b"}));
    // A header that promises more raw bytes than the frame holds is dropped.
    decode(&cb, {"1", "0", "Test", "ListResponse", "9", "OK"}, {"Gain"}, "AS:x\nab", 5);
    EXPECT_EQ(cb.list.size(), 1u);
}

TEST(DecodeTest, UnknownNamesShortHeadersAndMissingCallbackAreIgnored) {
    Callback cb;
    decode(&cb, {"1", "0", "Test", "PlainResponse", "0", "OK"}, {});
    decode(&cb, {"1", "0", "Test", "plainrequest", "0", "OK"}, {});
    decode(&cb, {"1", "0", "Test", "PlainRequest", "0"}, {});
    decode(nullptr, {"1", "0", "Test", "PlainRequest", "0", "OK"}, {});
    EXPECT_TRUE(cb.plain.empty());
}

}  // namespace
