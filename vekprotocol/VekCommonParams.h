#pragma once

#include <string>
#include <vector>

#include "VekRecordHead.h"

namespace vekprotocol {

// Records of the Common feature. Each field list is written once and serves
// encoding and decoding on both sides.

struct VekParamCommonVersionRequest : VekRecordHead {
    static constexpr const char* kMessage = "VersionRequest";
    std::string version;
};
struct VekParamCommonVersionResponse : VekRecordHead {
    static constexpr const char* kMessage = "VersionResponse";
    std::string version;
};
struct VekParamCommonFeatureRequest : VekRecordHead {
    static constexpr const char* kMessage = "FeatureRequest";
};
struct VekParamCommonFeatureResponse : VekRecordHead {
    static constexpr const char* kMessage = "FeatureResponse";
    std::vector<std::string> features;
};
struct VekParamCommonFileListRequest : VekRecordHead {
    static constexpr const char* kMessage = "FileListRequest";
    std::string feature;
};
struct VekParamCommonFileListResponse : VekRecordHead {
    static constexpr const char* kMessage = "FileListResponse";
    std::string feature;
    std::vector<std::string> files;
};
struct VekParamCommonFileContentRequest : VekRecordHead {
    static constexpr const char* kMessage = "FileContentRequest";
    std::string path;
};
// The file's bytes travel as the frame's raw data.
struct VekParamCommonFileContentResponse : VekRecordHead {
    static constexpr const char* kMessage = "FileContentResponse";
    std::string path;
};
struct VekParamCommonGetBypassRequest : VekRecordHead {
    static constexpr const char* kMessage = "GetBypassRequest";
};
struct VekParamCommonGetBypassResponse : VekRecordHead {
    static constexpr const char* kMessage = "GetBypassResponse";
    bool enable = false;
};
struct VekParamCommonSetBypassRequest : VekRecordHead {
    static constexpr const char* kMessage = "SetBypassRequest";
    bool enable = false;
};
struct VekParamCommonSetBypassResponse : VekRecordHead {
    static constexpr const char* kMessage = "SetBypassResponse";
};

template <class F>
void fields(F& f, VekParamCommonVersionRequest& r) {
    f("version", r.version);
}
template <class F>
void fields(F& f, VekParamCommonVersionResponse& r) {
    f("version", r.version);
}
template <class F>
void fields(F& f, VekParamCommonFeatureResponse& r) {
    f("features", r.features);
}
template <class F>
void fields(F& f, VekParamCommonFileListRequest& r) {
    f("feature", r.feature);
}
template <class F>
void fields(F& f, VekParamCommonFileListResponse& r) {
    f("feature", r.feature);
    f("files", r.files);
}
template <class F>
void fields(F& f, VekParamCommonFileContentRequest& r) {
    f("path", r.path);
}
template <class F>
void fields(F& f, VekParamCommonFileContentResponse& r) {
    f("path", r.path);
}
template <class F>
void fields(F& f, VekParamCommonGetBypassResponse& r) {
    f("enable", r.enable);
}
template <class F>
void fields(F& f, VekParamCommonSetBypassRequest& r) {
    f("enable", r.enable);
}

}  // namespace vekprotocol
