#include "PlatformLog.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>

// "<priority> <tag>: <message>\n" on standard error in one write(2), so that lines
// of different threads do not interleave. Longer messages are cut, as the platform
// log cuts them too.
extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    char line[4096];
    const size_t room = sizeof(line) - 1;  // keeps space for the line feed
    int head = std::snprintf(line, room, "%d %s: ", priority, tag != nullptr ? tag : "");
    size_t used = head < 0 ? 0 : (static_cast<size_t>(head) < room ? head : room - 1);
    if (format != nullptr && used < room) {
        va_list args;
        va_start(args, format);
        const int body = std::vsnprintf(line + used, room - used, format, args);
        va_end(args);
        if (body > 0) {
            used += static_cast<size_t>(body) < room - used ? body : room - used - 1;
        }
    }
    if (used == 0 || line[used - 1] != '\n') {
        line[used++] = '\n';
    }
    return static_cast<int>(write(STDERR_FILENO, line, used));
}
