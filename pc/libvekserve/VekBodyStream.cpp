#include "VekBodyStream.h"

namespace vekserve {

bool VekBodyStream::push(const char* data, size_t size) {
    {
        std::unique_lock<std::mutex> lock(mutex_);
        room_.wait(lock, [this] { return closed_ || waiting_.size() < limit_; });
        if (closed_) {
            return false;
        }
        waiting_.append(data, size);
    }
    wake_();
    return true;
}

void VekBodyStream::finish(bool whole) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        finished_ = true;
        whole_ = whole;
    }
    wake_();
}

VekBodyStream::Take VekBodyStream::take(std::string& out) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!waiting_.empty()) {
        out.swap(waiting_);
        waiting_.clear();
        room_.notify_all();
        return Take::Data;
    }
    if (!finished_) {
        return Take::Empty;
    }
    return whole_ ? Take::End : Take::Broken;
}

void VekBodyStream::close() {
    std::lock_guard<std::mutex> lock(mutex_);
    closed_ = true;
    waiting_.clear();
    room_.notify_all();
}

}  // namespace vekserve
