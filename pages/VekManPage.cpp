#include "VekManPage.h"

#include <cctype>

namespace {

bool isOperand(const std::string& word) {
    bool letter = false;
    for (const char c : word) {
        if (std::islower(static_cast<unsigned char>(c)) != 0) {
            return false;
        }
        letter = letter || std::isupper(static_cast<unsigned char>(c)) != 0;
    }
    return letter;
}

}  // namespace

VekManPage::VekManPage(const std::string& name, int section, const std::string& source,
                       const std::string& manual, const std::string& summary) {
    std::string upper;
    for (const char c : name) {
        upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    out_ = ".TH " + upper + ' ' + std::to_string(section) + " \"\" \"" + source + "\" \"" +
           manual + "\"\n";
    // Option names neither hyphenated nor stretched, so that they can be searched for.
    out_ += ".nh\n.ad l\n";
    heading("NAME");
    out_ += escape(name) + " \\- " + escape(summary) + '\n';
}

void VekManPage::heading(const std::string& title) {
    out_ += ".SH \"" + title + "\"\n";
}

void VekManPage::paragraph(const std::string& text) {
    out_ += ".PP\n" + fill(text) + '\n';
}

void VekManPage::usage(const std::string& words) {
    out_ += ".PP\n.in +4n\n.ti -4n\n" + term(words) + "\n.in\n";
}

void VekManPage::item(const std::string& termWords, const std::string& text, bool lines) {
    out_ += ".TP\n" + term(termWords) + '\n' + fill(text, lines ? "\n.br\n" : " ") + '\n';
}

void VekManPage::verbatim(const std::string& lines) {
    out_ += ".PP\n.nf\n.in +2n\n";
    for (char c : lines) {
        // Leading blanks are the block's own indent, not the text's.
        if (c == ' ' && (out_.empty() || out_.back() == '\n')) {
            continue;
        }
        out_ += c;
    }
    out_ += ".in\n.fi\n";
}

// Roff's own characters made plain; a line that would start a request is guarded.
std::string VekManPage::escape(const std::string& text, bool minus) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool lineStart = i == 0 || text[i - 1] == '\n';
        if (lineStart && (c == '.' || c == '\'')) {
            out += "\\&";
        }
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-' && (minus || i == 0 || text[i - 1] == ' ' || text[i - 1] == '-' ||
                                text[i - 1] == '(' || text[i - 1] == '[')) {
            // An option's dashes, not a hyphen within a word.
            out += "\\-";
        } else {
            out += c;
        }
    }
    return out;
}

// Line feeds become join, a space as a rule: the formatter fills the lines again to the
// page's width.
std::string VekManPage::fill(const std::string& text, const char* join) {
    std::string escaped = escape(text);
    while (!escaped.empty() && escaped.back() == '\n') {
        escaped.pop_back();
    }
    std::string out;
    for (const char c : escaped) {
        if (c == '\n') {
            out += join;
        } else {
            out += c;
        }
    }
    return out;
}

// "--device=PATH" as bold "--device=" and italic "PATH"; "apply FILE" as bold "apply"
// and italic "FILE"; brackets, bars and "default=..." roman.
std::string VekManPage::term(const std::string& words) {
    std::string out;
    size_t start = 0;
    while (start < words.size()) {
        size_t end = words.find_first_of(" \n", start);
        if (end == std::string::npos) {
            end = words.size();
        }
        std::string word = words.substr(start, end - start);
        start = end + 1;
        if (word.empty()) {
            continue;
        }
        const size_t first = word.find_first_not_of("[(");
        const size_t last = word.find_last_not_of("]).");
        out += out.empty() ? "" : " ";
        if (first == std::string::npos || last == std::string::npos || first > last) {
            out += escape(word);
            continue;
        }
        const std::string core = word.substr(first, last + 1 - first);
        const size_t equals = core.find('=');
        out += escape(word.substr(0, first));
        if (core[0] == '-' && equals != std::string::npos) {
            out += "\\fB" + escape(core.substr(0, equals + 1), true) + "\\fI" +
                   escape(core.substr(equals + 1)) + "\\fR";
        } else if (isOperand(core)) {
            out += "\\fI" + escape(core) + "\\fR";
        } else if (core == "|" || (core[0] != '-' && equals != std::string::npos)) {
            out += escape(core);
        } else {
            out += "\\fB" + escape(core, true) + "\\fR";
        }
        // "...", "]" and ")" after the word, and "..." within "PATH...]".
        out += escape(word.substr(last + 1));
    }
    return out;
}
