#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>

// printf into a std::string, for the call log and the set-up reports.
class SimText {
public:
    __attribute__((format(printf, 1, 2))) static std::string format(const char* fmt, ...) {
        char line[256];
        va_list args;
        va_start(args, fmt);
        const int n = std::vsnprintf(line, sizeof line, fmt, args);
        va_end(args);
        return std::string(line,
                           n < 0 ? 0 : (n < static_cast<int>(sizeof line) ? n : sizeof line - 1));
    }
    static const char* orNull(const char* text) { return text != nullptr ? text : "(null)"; }
};
