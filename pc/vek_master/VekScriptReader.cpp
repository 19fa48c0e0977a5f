#include "VekScriptReader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace vekmaster {

std::string VekScriptReader::load(const std::string& path, std::string& text) {
    const bool standardInput = path == "-";
    std::FILE* file = standardInput ? stdin : std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return "cannot read " + path + ": " + std::strerror(errno);
    }
    char buffer[4096];
    size_t n = 0;
    while ((n = std::fread(buffer, 1, sizeof(buffer), file)) > 0) {
        text.append(buffer, n);
    }
    const bool failed = std::ferror(file) != 0;
    const int err = errno;
    if (!standardInput) {
        std::fclose(file);
    }
    return failed ? "cannot read " + path + ": " + std::strerror(err) : "";
}

std::vector<VekScriptReader::Line> VekScriptReader::split(const std::string& text) {
    std::vector<Line> lines;
    Line line{1, {}};
    std::string word;
    bool comment = false;
    auto endWord = [&]() {
        if (!word.empty()) {
            line.words.push_back(word);
            word.clear();
        }
    };
    for (size_t i = 0; i <= text.size(); ++i) {
        const char c = i < text.size() ? text[i] : '\n';
        if (c == '\n') {
            endWord();
            if (!line.words.empty()) {
                lines.push_back(line);
            }
            line = Line{line.number + 1, {}};
            comment = false;
        } else if (comment) {
            continue;
        } else if (c == ' ' || c == '\t' || c == '\r') {
            endWord();
        } else if (c == '#' && word.empty()) {
            comment = true;
        } else {
            word += c;
        }
    }
    return lines;
}

}  // namespace vekmaster
