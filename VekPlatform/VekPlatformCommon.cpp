#include "VekPlatformCommon.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "VekLibrary.h"
#include "VekLog.h"

namespace vekserver {

using namespace vekprotocol;

namespace {

struct FeatureFile {
    const char* feature;
    const char* path;
};

// The audio server's setting files of each feature. Reverb has one, unnamed.
constexpr FeatureFile featureFiles[] = {
    {"Speaker", "/media/flash/nvm/mixhub/app_property.xml"},
    {"Gain", "/media/flash/nvm/mixhub/volume_property.xml"},
    {"Eq", "/media/flash/nvm/mixhub/app_property.xml"},
    {"EqV2", "/media/flash/nvm/mixhub/audio_effect_equalizer.xml"},
    {"Hfe", "/media/flash/nvm/mixhub/audio_effect_hfe.xml"},
    {"Vb", "/media/flash/nvm/mixhub/audio_effect_vb.xml"},
    {"Reverb", ""},
};

bool readable(mode_t mode) {
    return S_ISREG(mode) || S_ISDIR(mode);
}

// Reads the whole file into content; false with errno set when it cannot be opened.
// Only regular files (and directories, which read as empty) are read: a FIFO would
// block the serving thread in the open, a device such as /dev/zero never ends, and
// opening some devices does something by itself. Those count as not openable, with
// EINVAL. The type is checked before the open and again on the open descriptor, which
// is opened non-blocking in case the path changed in between.
bool readWholeFile(const std::string& path, std::string& content) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        return false;
    }
    if (!readable(st.st_mode)) {
        errno = EINVAL;
        return false;
    }
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        return false;
    }
    const bool typed = ::fstat(fd, &st) == 0;
    if (!typed || !readable(st.st_mode)) {
        const int error = typed ? EINVAL : errno;
        ::close(fd);
        errno = error;
        return false;
    }
    std::string bytes;
    char chunk[4096];
    for (;;) {
        const ssize_t n = ::read(fd, chunk, sizeof(chunk));
        if (n > 0) {
            bytes.append(chunk, static_cast<size_t>(n));
        } else if (n == 0 || errno != EINTR) {
            break;
        }
    }
    ::close(fd);
    content.swap(bytes);
    return true;
}

}  // namespace

void VekPlatformCommon::packVersionResponse(VekParamCommonVersionRequest&,
                                            VekParamCommonVersionResponse& response) {
    VekLibrary::begin(response, hub_);
    response.version = kSlaveVersion;
}

void VekPlatformCommon::packFeatureResponse(VekParamCommonFeatureRequest&,
                                            VekParamCommonFeatureResponse& response) {
    VekLibrary::begin(response, hub_);
    hub_->listFeatures(response.features);
}

void VekPlatformCommon::packFileListResponse(VekParamCommonFileListRequest& request,
                                             VekParamCommonFileListResponse& response) {
    VekLibrary::begin(response, hub_);
    response.feature = request.feature;
    for (const FeatureFile& row : featureFiles) {
        if (request.feature == row.feature) {
            response.files.emplace_back(row.path);
            break;
        }
    }
}

void VekPlatformCommon::packFileContentResponse(VekParamCommonFileContentRequest& request,
                                                VekParamCommonFileContentResponse& response) {
    VekLibrary::begin(response, hub_);
    response.path = request.path;
    if (readWholeFile(request.path, fileContent_)) {
        response.rawDataLength = static_cast<int32_t>(fileContent_.size());
        response.rawData = fileContent_.data();
        VekLog::info("Success to open file:%s, length=%d.\n", request.path.c_str(),
                     response.rawDataLength);
    } else {
        const int error = errno;
        VekLog::info("Fail to open file:%s, error(%d):%s.\n", request.path.c_str(), error,
                     std::strerror(error));
    }
}

void VekPlatformCommon::packGetBypassResponse(VekParamCommonGetBypassRequest&,
                                              VekParamCommonGetBypassResponse& response) {
    VekLibrary::begin(response, hub_);
    int enable = 0;
    const int32_t status = VekLibrary::with<VekLibrary::App>(
        [&](VekLibrary::App& app) { return app.getBypass(&enable); });
    VekLog::zip("%s to get bypass, ret=%d, enable=%d.\n", VekLibrary::outcome(status), status,
                enable);
    if (status == 0) {
        response.enable = (enable != 0);
    }
    response.fail = (status != 0);
}

void VekPlatformCommon::packSetBypassResponse(VekParamCommonSetBypassRequest& request,
                                              VekParamCommonSetBypassResponse& response) {
    VekLibrary::begin(response, hub_);
    const int32_t status = VekLibrary::with<VekLibrary::App>([&](VekLibrary::App& app) {
        return request.enable ? app.enableBypass() : app.disableBypass();
    });
    VekLog::zip("%s to set bypass, ret=%d, enable=%d.\n", VekLibrary::outcome(status), status,
                request.enable ? 1 : 0);
    response.fail = (status != 0);
}

}  // namespace vekserver
