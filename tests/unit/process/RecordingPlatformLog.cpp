#include <cstdarg>
#include <cstdio>

#include "PlatformLog.h"
#include "ProcessTestSupport.h"

std::vector<std::string>& platformLogRecords() {
    static std::vector<std::string> records;
    return records;
}

// Takes the place of the platform's log in this test program.
extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    char message[1024];
    va_list args;
    va_start(args, format);
    std::vsnprintf(message, sizeof(message), format, args);
    va_end(args);
    platformLogRecords().push_back(std::to_string(priority) + " " + tag + " " + message);
    return 0;
}
