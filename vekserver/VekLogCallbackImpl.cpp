#include "VekLogCallbackImpl.h"

#include <cstring>

#include "VekLog.h"

namespace vekserver {

void VekLogCallbackImpl::onLog(const char* text) {
    VekLog::put(text, std::strlen(text));
}

}  // namespace vekserver
