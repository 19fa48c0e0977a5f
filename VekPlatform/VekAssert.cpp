// The C library declares its assertion hook only while assertions are compiled in;
// the daemon raises it in every build type.
#undef NDEBUG
#include <assert.h>

#include <cstdio>

#include "VekAssert.h"
#include "VekLog.h"

namespace vekserver {

void VekAssert::fail(const char* expression) const {
    VekLog::error("AST ASSERT, [%s][%d]\n", operation_, line_);
    // abort() does not flush stdio, and the line matters most when output is a file.
    std::fflush(stdout);
    __assert_fail(expression, file_, static_cast<unsigned int>(line_), signature_);
}

}  // namespace vekserver
