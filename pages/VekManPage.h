#pragma once

#include <string>

// A manual page in the man macros, written piece by piece. Terms are set the way man
// pages set them: options and commands bold, operands (words in capitals) italic.
class VekManPage {
public:
    // .TH and the NAME section: "vek_tuner", 8, "vek_tuner 2.1", "System Administration".
    VekManPage(const std::string& name, int section, const std::string& source,
               const std::string& manual, const std::string& summary);

    void heading(const std::string& title);
    // A filled paragraph of text whose line feeds are spaces.
    void paragraph(const std::string& text);
    // One usage line of term words, its wrapped part indented.
    void usage(const std::string& words);
    // A term with its description below it; lines: each line of text kept on a line of
    // its own (a list of values), else the lines are filled.
    void item(const std::string& term, const std::string& text, bool lines = false);
    // Lines kept as they are, in a fixed-width block.
    void verbatim(const std::string& lines);

    const std::string& text() const { return out_; }

private:
    // minus: every '-' a minus sign (in names, which must not break there), not only
    // the dashes that start an option.
    static std::string escape(const std::string& text, bool minus = false);
    static std::string fill(const std::string& text, const char* join = " ");
    static std::string term(const std::string& words);

    std::string out_;
};
