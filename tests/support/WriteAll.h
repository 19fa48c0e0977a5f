#pragma once

#include <unistd.h>

#include <cstddef>
#include <string>

// Writes every byte to fd, resuming after short writes; stops at the first failure.
inline void writeAll(int fd, const std::string& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n <= 0) {
            return;
        }
        done += static_cast<size_t>(n);
    }
}
