#pragma once

// The platform log. Priorities as the platform numbers them (3 debug, 6 error).
extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
