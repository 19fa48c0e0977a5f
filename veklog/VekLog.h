#pragma once

#include <cstdarg>
#include <cstddef>

// The daemon's own lines on standard output. Each line or dump is formatted whole and
// handed to standard output in one call, so that with line buffering it leaves the
// process in one write. Lines with a level start with "[AST][TAG]"; dumps and the
// crash report have no prefix.
class VekLog {
public:
    enum Level {
        kError,    // "[AST][ERR]"
        kWarning,  // "[AST][WRN]"
        kInfo,     // "[AST][INF]"
        kZip,      // "[AST][ZIP]": the outcome of a call into the audio settings library
        kPlain,    // no prefix
    };

    __attribute__((format(printf, 1, 2))) static void error(const char* format, ...);
    __attribute__((format(printf, 1, 2))) static void warn(const char* format, ...);
    __attribute__((format(printf, 1, 2))) static void info(const char* format, ...);
    __attribute__((format(printf, 1, 2))) static void zip(const char* format, ...);
    __attribute__((format(printf, 1, 2))) static void plain(const char* format, ...);
    // Text that is already whole, as it is.
    static void put(const char* text, size_t size);

    // For a signal handler: the same line, written to file descriptor 1 directly, past
    // the standard output lock that the interrupted thread may hold. Lines longer than
    // 511 bytes are cut. errno is left as it was.
    __attribute__((format(printf, 2, 3))) static void fromSignal(Level level, const char* format,
                                                                 ...);

private:
    static void emit(Level level, const char* format, va_list args);
};
