#pragma once

#include <string>
#include <vector>

namespace vekmaster {

class VekMessageCatalog;

// vek_master's commands and options as --help prints them. The manual page and the
// shell completion are made from the same tables at build time, so none of the three
// can list what the others do not.
class VekMasterHelp {
public:
    // What an option's value or a command's operands are, for the completion: a file, a
    // document or the word device, a serial line, a program, a channel name.
    enum class Value { None, File, Document, Line, Program, Channel, Other };

    struct Entry {
        const char* term;  // "--device=PATH", "apply FILE"
        const char* text;  // its lines, each ending in a line feed
        Value value;
    };

    struct Section {
        const char* title;  // "Options:"
        const char* intro;  // lines before the entries, or ""
        size_t column;      // where the entries' texts start
        std::vector<Entry> entries;
    };

    // The usage lines, the first after "Usage: "; a line feed in one continues it.
    static const std::vector<const char*>& synopsis();
    // What vek_master does, after the usage lines.
    static constexpr const char* kDescription =
        "Sends requests to a vek_tuner slave over its serial line and prints the answers:\n"
        "the answer's fields as name=value lines, then OK or NG.\n";
    static const std::vector<Section>& sections();
    static constexpr const char* kMessagesTitle =
        "Messages and their ARGs, in wire order (a list takes every ARG left):";
    static constexpr const char* kExitStatus =
        "Exit status: 0 OK (snapshot complete, apply matched, diff equal), 1 NG (an answer\n"
        "NG, values missing, a value that did not take, tunings that differ), 2 no answer\n"
        "in time, 64 bad usage or a bad document (nothing sent), 65 a filter file that\n"
        "cannot be read or does not fit (nothing sent), 69 the launched daemon did\n"
        "not greet or did not exit with 0, 74 the line, a file or the pty failed. With\n"
        "several devices: the worst (largest) of their statuses.\n";

    // An entry's text with the line speeds filled in.
    static std::string expand(const char* text);
    // The whole --help text.
    static std::string text(const VekMessageCatalog& catalog);
};

}  // namespace vekmaster
