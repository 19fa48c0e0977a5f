#include "VekTokenFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace vekhttp {

std::string VekTokenFile::read(const std::string& path, std::string& token) {
    token.clear();
    errno = 0;
    std::ifstream in(path);
    std::string line;
    if (!in || !std::getline(in, line)) {
        return "cannot read the token from " + path +
               (errno != 0 ? std::string(": ") + std::strerror(errno) : "");
    }
    const size_t first = line.find_first_not_of(" \t\r");
    const size_t last = line.find_last_not_of(" \t\r");
    const std::string found = first == std::string::npos ? "" : line.substr(first, last - first + 1);
    if (found.size() < kMinLength) {
        return path + " must hold a token of at least 16 characters on its first line";
    }
    token = found;
    return "";
}

}  // namespace vekhttp
