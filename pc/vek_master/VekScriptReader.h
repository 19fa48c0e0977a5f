#pragma once

#include <string>
#include <vector>

namespace vekmaster {

// A tuning session to replay: one command per line, words separated by blanks, '#'
// at the start of a word comments out the rest of the line.
class VekScriptReader {
public:
    struct Line {
        int number;
        std::vector<std::string> words;
    };

    // The whole script; path "-" reads standard input. "" or the reason it failed.
    static std::string load(const std::string& path, std::string& text);
    // The lines that hold a command, with their line numbers.
    static std::vector<Line> split(const std::string& text);
};

}  // namespace vekmaster
