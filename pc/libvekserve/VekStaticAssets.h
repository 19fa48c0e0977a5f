#pragma once

#include <map>
#include <string>

namespace vekserve {

// Files the server hands out as they are, compiled into the program: a browser panel's
// pages, scripts and styles. GET of a path that no API route has looks here ("/" is
// "/index.html").
class VekStaticAssets {
public:
    struct Asset {
        std::string type;  // "text/html; charset=utf-8"
        std::string bytes;
    };

    void add(const std::string& path, std::string type, std::string bytes) {
        assets_[path] = Asset{std::move(type), std::move(bytes)};
    }
    // The asset at path, or null.
    const Asset* find(const std::string& path) const {
        const auto found = assets_.find(path == "/" ? "/index.html" : path);
        return found != assets_.end() ? &found->second : nullptr;
    }

private:
    std::map<std::string, Asset> assets_;
};

}  // namespace vekserve
