#include <gtest/gtest.h>

#include <string>

#include "FeatureTestSupport.h"

using namespace vektest;

namespace {

const char* const kVolumeXml = "/media/flash/nvm/mixhub/volume_property.xml";

// 612 bytes of file content, with the bytes a header would choke on.
const std::string& fileBytes() {
    static const std::string bytes = [] {
        std::string b;
        for (int i = 0; i < 612; ++i) {
            b += static_cast<char>((i * 37) % 256);
        }
        return b;
    }();
    return bytes;
}

// Every example of Parts 2.2 and 3.1, then what they leave out.
TEST(CommonMessages, EveryMessageTravelsBothWays) {
    using S = VekCommonSlave;
    using M = VekCommonMaster;
    const std::vector<Row> rows = {
        row(&M::encodeVersionRequest, 1, "AS:1:0:Common:VersionRequest:0:OK:<M1.0>:\n",
            [](auto& r) { r.version = "M1.0"; }),
        row(&S::encodeVersionResponse, 1, "AS:1:0:Common:VersionResponse:0:OK:<A00020001>:\n",
            [](auto& r) { r.version = "A00020001"; }),
        row(&M::encodeFeatureRequest, 2, "AS:2:0:Common:FeatureRequest:0:OK:\n"),
        row(&S::encodeFeatureResponse, 2,
            "AS:2:0:Common:FeatureResponse:0:OK:<Common:EqV2:Gain:Hfe:Speaker:Vb>:\n",
            [](auto& r) { r.features = {"Common", "EqV2", "Gain", "Hfe", "Speaker", "Vb"}; }),
        row(&M::encodeFileListRequest, 3, "AS:3:0:Common:FileListRequest:0:OK:<Gain>:\n",
            [](auto& r) { r.feature = "Gain"; }),
        row(&S::encodeFileListResponse, 3,
            "AS:3:0:Common:FileListResponse:0:OK:<Gain:" + std::string(kVolumeXml) + ">:\n",
            [](auto& r) {
                r.feature = "Gain";
                r.files = {kVolumeXml};
            }),
        row(&M::encodeFileContentRequest, 4,
            "AS:4:0:Common:FileContentRequest:0:OK:<" + std::string(kVolumeXml) + ">:\n",
            [](auto& r) { r.path = kVolumeXml; }),
        row(&S::encodeFileContentResponse, 4,
            "AS:4:0:Common:FileContentResponse:612:OK:<" + std::string(kVolumeXml) + ">:\n" +
                fileBytes(),
            [](auto& r) {
                r.path = kVolumeXml;
                r.rawData = fileBytes().data();
                r.rawDataLength = 612;
            }),
        row(&M::encodeGetBypassRequest, 5, "AS:5:0:Common:GetBypassRequest:0:OK:\n"),
        row(&S::encodeGetBypassResponse, 5, "AS:5:0:Common:GetBypassResponse:0:OK:<0>:\n"),
        row(&M::encodeSetBypassRequest, 6, "AS:6:0:Common:SetBypassRequest:0:OK:<1>:\n",
            [](auto& r) { r.enable = true; }),
        row(&S::encodeSetBypassResponse, 6, "AS:6:0:Common:SetBypassResponse:0:OK:\n"),
        row(&M::encodeGetBypassRequest, 7, "AS:7:0:Common:GetBypassRequest:0:OK:\n"),
        row(&S::encodeGetBypassResponse, 12, "AS:12:0:Common:GetBypassResponse:0:NG:<0>:\n",
            [](auto& r) { r.fail = true; }),
        // An empty list is an empty block; an empty file list leaves the name and ':'.
        row(&S::encodeFeatureResponse, 13, "AS:13:0:Common:FeatureResponse:0:OK:<>:\n"),
        row(&S::encodeFileListResponse, 14, "AS:14:0:Common:FileListResponse:0:OK:<Reverb:>:\n",
            [](auto& r) { r.feature = "Reverb"; }),
        row(&S::encodeFileListResponse, 15,
            "AS:15:0:Common:FileListResponse:0:OK:<EqV2:/a.xml:/b.xml>:\n",
            [](auto& r) {
                r.feature = "EqV2";
                r.files = {"/a.xml", "/b.xml"};
            }),
        row(&S::encodeFileContentResponse, 16,
            "AS:16:0:Common:FileContentResponse:0:OK:</empty>:\n",
            [](auto& r) { r.path = "/empty"; }),
        row(&M::encodeSetBypassRequest, 17, "AS:17:3:Common:SetBypassRequest:0:NG:<0>:\n",
            [](auto& r) {
                r.peer = 3;
                r.fail = true;
            }),
    };
    expectRows(rows, 12);
}

TEST(CommonMessages, ExtraFieldsAreIgnoredAndOnlyOneIsTrue) {
    FeatureLink link;
    EXPECT_EQ(
        link.toSlave("AS:3:0:Common:FileListRequest:0:OK:<Gain:Hfe>:\n"),
        arrives<VekParamCommonFileListRequest>("Common", 3, [](auto& r) { r.feature = "Gain"; }));
    for (const char* field : {"0", "2", "-1"}) {
        EXPECT_EQ(
            link.toSlave(std::string("AS:6:0:Common:SetBypassRequest:0:OK:<") + field + ">:\n"),
            arrives<VekParamCommonSetBypassRequest>("Common", 6))
            << field;
    }
}

TEST(CommonMessages, RequestsWithoutTheirFieldsAreDropped) {
    expectDropped({
        {"AS:1:0:Common:VersionRequest:0:OK:<M1.0>:\n", "AS:1:0:Common:VersionRequest:0:OK:\n"},
        {"AS:3:0:Common:FileListRequest:0:OK:<Gain>:\n", "AS:3:0:Common:FileListRequest:0:OK:\n"},
        {"AS:4:0:Common:FileContentRequest:0:OK:</a>:\n",
         "AS:4:0:Common:FileContentRequest:0:OK:<>:\n"},
        {"AS:6:0:Common:SetBypassRequest:0:OK:<1>:\n",
         "AS:6:0:Common:SetBypassRequest:0:OK:<on>:\n"},
    });
}

}  // namespace
