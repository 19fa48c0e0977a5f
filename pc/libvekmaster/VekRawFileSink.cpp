#include "VekRawFileSink.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace vekmaster {

VekRawFileSink::~VekRawFileSink() {
    if (file_ != nullptr) {
        std::fclose(file_);
    }
}

bool VekRawFileSink::fail() {
    problem_ = "cannot write " + path_ + ": " + std::strerror(errno);
    abandon();
    return false;
}

bool VekRawFileSink::begin(int64_t) {
    problem_.clear();
    file_ = std::fopen(path_.c_str(), "wb");
    return file_ != nullptr || fail();
}

bool VekRawFileSink::write(const char* data, size_t size) {
    return (file_ != nullptr && std::fwrite(data, 1, size, file_) == size) || fail();
}

bool VekRawFileSink::end() {
    if (file_ == nullptr) {
        return false;  // begin failed and said why
    }
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!closed) {
        problem_ = "cannot write " + path_ + ": " + std::strerror(errno);
        ::unlink(path_.c_str());
    }
    return closed;
}

void VekRawFileSink::abandon() {
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
        ::unlink(path_.c_str());
    }
}

}  // namespace vekmaster
