#include "VekTraceFile.h"

#include <cerrno>
#include <cstring>

#include "VekPcapng.h"

namespace vekmaster {

VekTraceFile::~VekTraceFile() {
    if (file_ != nullptr) {
        std::fclose(file_);
    }
}

std::string VekTraceFile::open(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    path_ = path;
    file_ = std::fopen(path.c_str(), "wb");
    if (file_ == nullptr) {
        return "cannot write the trace " + path + ": " + std::strerror(errno);
    }
    write(VekPcapng::sectionHeader());
    return problem_;
}

void VekTraceFile::write(const std::string& bytes) {
    if (file_ == nullptr || !problem_.empty()) {
        return;
    }
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size() ||
        std::fflush(file_) != 0) {
        problem_ = "cannot write the trace " + path_ + ": " + std::strerror(errno);
    }
}

void VekTraceFile::record(const std::string& path, const VekTracePacket& packet) {
    std::lock_guard<std::mutex> lock(mutex_);
    size_t line = 0;
    while (line < lines_.size() && lines_[line] != path) {
        ++line;
    }
    if (line == lines_.size()) {
        lines_.push_back(path);
        write(VekPcapng::interfaceDescription(path));
    }
    VekTracePacket numbered = packet;
    numbered.line = static_cast<uint32_t>(line);
    write(VekPcapng::packet(numbered));
}

std::string VekTraceFile::problem() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return problem_;
}

}  // namespace vekmaster
