#include "VekLog.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

const char* const kPrefixes[] = {"[AST][ERR]", "[AST][WRN]", "[AST][INF]", "[AST][ZIP]", ""};
constexpr size_t kPrefixSize = 10;

size_t prefixSize(VekLog::Level level) {
    return level == VekLog::kPlain ? 0 : kPrefixSize;
}

// Prefix and text into out (at most size bytes, terminated); the length the whole
// line needs, or -1 when the format fails.
int format(char* out, size_t size, VekLog::Level level, const char* format, va_list args) {
    const size_t prefix = prefixSize(level);
    std::memcpy(out, kPrefixes[level], prefix);
    const int n = std::vsnprintf(out + prefix, size - prefix, format, args);
    return n < 0 ? -1 : n + static_cast<int>(prefix);
}

}  // namespace

#define VEK_LOG_FORWARD(level) \
    va_list args;              \
    va_start(args, format);    \
    emit(level, format, args); \
    va_end(args)

void VekLog::error(const char* format, ...) {
    VEK_LOG_FORWARD(kError);
}
void VekLog::warn(const char* format, ...) {
    VEK_LOG_FORWARD(kWarning);
}
void VekLog::info(const char* format, ...) {
    VEK_LOG_FORWARD(kInfo);
}
void VekLog::zip(const char* format, ...) {
    VEK_LOG_FORWARD(kZip);
}
void VekLog::plain(const char* format, ...) {
    VEK_LOG_FORWARD(kPlain);
}

void VekLog::put(const char* text, size_t size) {
    std::fwrite(text, 1, size, stdout);
}

void VekLog::emit(Level level, const char* fmt, va_list args) {
    // Most lines fit on the stack; dumps of large frames take the heap.
    char line[2048];
    va_list again;
    va_copy(again, args);
    const int n = format(line, sizeof(line), level, fmt, args);
    if (n >= 0 && static_cast<size_t>(n) < sizeof(line)) {
        put(line, static_cast<size_t>(n));
    } else if (n >= 0) {
        std::string big(static_cast<size_t>(n) + 1, '\0');
        format(&big[0], big.size(), level, fmt, again);
        put(big.data(), static_cast<size_t>(n));
    }
    va_end(again);
}

void VekLog::fromSignal(Level level, const char* fmt, ...) {
    const int savedErrno = errno;
    char line[512];
    va_list args;
    va_start(args, fmt);
    const int n = format(line, sizeof(line), level, fmt, args);
    va_end(args);
    size_t left = n < 0 ? 0 : std::min(static_cast<size_t>(n), sizeof(line) - 1);
    const char* at = line;
    while (left > 0) {
        const ssize_t done = ::write(STDOUT_FILENO, at, left);
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done <= 0) {
            break;
        }
        at += done;
        left -= static_cast<size_t>(done);
    }
    errno = savedErrno;
}
