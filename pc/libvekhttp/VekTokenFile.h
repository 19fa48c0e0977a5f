#pragma once

#include <string>

namespace vekhttp {

// The access token both ends of the HTTP API read from a file: the server to demand
// it, a client to bring it. Its first line, trimmed, at least 16 characters.
class VekTokenFile {
public:
    static constexpr size_t kMinLength = 16;

    // "" with token set, or why the file gives no token.
    static std::string read(const std::string& path, std::string& token);
};

}  // namespace vekhttp
