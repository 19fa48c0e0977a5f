#include "VekTunerHelp.h"

namespace {

constexpr const char* kHelpTag = "[AST][INF]";

// Each line of text (the last one may lack its line feed) behind the tag and indent.
void addLines(std::string& out, const char* indent, const std::string& text) {
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        out.append(kHelpTag).append(indent).append(text, start, end - start).append("\n");
        start = end + 1;
    }
}

}  // namespace

std::string VekTunerHelp::text() {
    std::string out;
    addLines(out, "", "\nNAME\n");
    addLines(out, "    ", kName);
    addLines(out, "", "\nSYNOPSIS\n");
    addLines(out, "    ", kSynopsis);
    addLines(out, "", "\nDESCRIPTION\n");
    addLines(out, "    ", kDescription);
    addLines(out, "", "\n");
    for (const Option& option : kOptions) {
        addLines(out, "    ", option.synopsis);
        addLines(out, "      ", option.text);
    }
    addLines(out, "", "\n  EXIT STATUS\n");
    addLines(out, "    ", kExitStatus);
    addLines(out, "", "\n");
    return out;
}
