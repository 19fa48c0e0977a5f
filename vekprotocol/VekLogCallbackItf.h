#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstdio>

namespace vekprotocol {

// Where the protocol library reports. The library never prints by itself.
class VekLogCallbackItf {
public:
    static constexpr int32_t kBufferSize = 20480;

    virtual ~VekLogCallbackItf() = default;
    virtual void onLog(const char* text) = 0;

    int32_t level = 0;
    char buffer[kBufferSize] = {};
};

// The one reporting rule: nothing is formatted unless the sink wants this level,
// and the text is cut to the sink's buffer.
__attribute__((format(printf, 3, 4))) inline void vekReport(VekLogCallbackItf* sink, int32_t level,
                                                            const char* format, ...) {
    if (sink == nullptr || sink->level < level) {
        return;
    }
    va_list args;
    va_start(args, format);
    std::vsnprintf(sink->buffer, sizeof(sink->buffer), format, args);
    va_end(args);
    sink->onLog(sink->buffer);
}

}  // namespace vekprotocol
