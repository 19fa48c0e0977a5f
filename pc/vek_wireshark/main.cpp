// Writes the dissector: its template with the message table made from the master's
// message catalogue, so that the fields it names are those vek_master sends and reads.
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "VekMasterReply.h"
#include "VekMessageCatalog.h"
#include "VekTraceFrame.h"

using namespace vekmaster;

namespace {

// {name, count}: count 1 a single field, N an array, 0 a list taking the rest.
std::string slots(const VekFieldSignature& signature) {
    std::string out = "{";
    for (const auto& slot : VekTraceFrame::slots(signature)) {
        out += " { \"" + slot.first + "\", " + std::to_string(slot.second) + " },";
    }
    return out + " }";
}

std::string table(const VekMessageCatalog& catalog) {
    std::string out = "local messages = {\n";
    std::string feature;
    for (const VekMasterMessage& m : catalog.messages()) {
        if (m.feature != feature) {
            out += (feature.empty() ? "" : "    },\n") + std::string("    [\"") + m.feature +
                   "\"] = {\n";
            feature = m.feature;
        }
        out += "        [\"" + m.name + "Request\"] = " + slots(m.signature) + ",\n";
        out += "        [\"" + m.response + "\"] = " + slots(m.answer) + ",\n";
    }
    return out + "    },\n}";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: vek_dissector TEMPLATE OUTPUT\n";
        return 64;
    }
    std::ifstream in(argv[1]);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string mark = "--@MESSAGES@";
    const size_t at = text.find(mark);
    if (!in || at == std::string::npos) {
        std::cerr << "vek_dissector: " << argv[1] << " has no " << mark << " line\n";
        return 74;
    }
    const VekMessageCatalog& catalog = VekMessageCatalog::shared();
    text.replace(at, mark.size(), table(catalog));
    std::ofstream out(argv[2], std::ios::trunc);
    out << text;
    out.flush();
    if (!out) {
        std::cerr << "vek_dissector: cannot write " << argv[2] << '\n';
        return 74;
    }
    return 0;
}
