#include "VekLogCallbackImpl.h"

#include <cstdio>

namespace vekserver {

void VekLogCallbackImpl::onLog(const char* text) {
    std::fputs(text, stdout);
}

}  // namespace vekserver
