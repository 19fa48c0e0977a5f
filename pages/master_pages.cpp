// Writes vek_master(1) and its bash completion from vek_master's own help tables and
// message catalogue: master_pages man VERSION FILE | master_pages completion FILE.
#include <cctype>
#include <fstream>
#include <string>

#include "VekManPage.h"
#include "VekMasterCompletion.h"
#include "VekMasterHelp.h"
#include "VekMessageCatalog.h"

using vekmaster::VekMasterHelp;

namespace {

std::string manPage(const std::string& version) {
    const vekmaster::VekMessageCatalog& catalog = vekmaster::VekMessageCatalog::shared();
    VekManPage page("vek_master", 1, "vek_master " + version, "User Commands",
                    "master end of the audio tuning link: requests, tunings, traces and a "
                    "server for vek_tuner devices");
    page.heading("SYNOPSIS");
    for (const char* line : VekMasterHelp::synopsis()) {
        page.usage(line);
    }
    page.heading("DESCRIPTION");
    page.paragraph(VekMasterHelp::kDescription);
    for (const VekMasterHelp::Section& section : VekMasterHelp::sections()) {
        std::string title(section.title);
        const size_t cut = title.find_first_of(" :");
        std::string heading = title.substr(0, cut);
        for (char& c : heading) {
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        page.heading(heading);
        // "Options:" says no more than its heading.
        if (title[cut] != ':') {
            if (title.back() == ':') {
                title.pop_back();
            }
            page.paragraph(title + (title.back() == '.' ? "" : ".") + '\n');
        }
        if (*section.intro != '\0') {
            page.paragraph(section.intro);
        }
        for (const VekMasterHelp::Entry& entry : section.entries) {
            page.item(entry.term, VekMasterHelp::expand(entry.text));
        }
    }
    page.heading("MESSAGES");
    page.paragraph(VekMasterHelp::kMessagesTitle);
    page.verbatim(catalog.help());
    page.heading("EXIT STATUS");
    const std::string status = VekMasterHelp::kExitStatus;
    page.paragraph(status.substr(status.find(": ") + 2));
    page.heading("SEE ALSO");
    page.paragraph("vek_tuner(8)\n");
    return page.text();
}

}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    std::string text;
    if (what == "man" && argc == 4) {
        text = manPage(argv[2]);
    } else if (what == "completion" && argc == 3) {
        text = vekmaster::VekMasterCompletion::script(vekmaster::VekMessageCatalog::shared());
    } else {
        return 2;
    }
    std::ofstream out(argv[argc - 1], std::ios::binary);
    out << text;
    return out.good() ? 0 : 1;
}
