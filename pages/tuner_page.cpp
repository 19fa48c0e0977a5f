// Writes vek_tuner(8) from the daemon's help table: tuner_page VERSION FILE.
#include <fstream>
#include <string>

#include "VekManPage.h"
#include "VekTunerHelp.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    VekManPage page(VekTunerHelp::kName, 8, std::string("vek_tuner ") + argv[1],
                    "System Administration", "slave end of the audio tuning link");
    page.heading("SYNOPSIS");
    page.usage(VekTunerHelp::kSynopsis);
    page.heading("DESCRIPTION");
    page.paragraph(VekTunerHelp::kDescription);
    page.paragraph(
        "vek_tuner serves a tuning tool on a PC (vek_master, the master) over a serial line,\n"
        "as a rule a USB-to-UART cable: it greets the master once with HELLO!, then\n"
        "answers every request it understands with one response, reading and changing\n"
        "the device's live audio settings. Every line of its log goes to standard\n"
        "output; an unknown argument is ignored without a message.\n");
    page.heading("OPTIONS");
    for (const VekTunerHelp::Option& option : VekTunerHelp::kOptions) {
        page.item(option.synopsis, option.text, true);
    }
    page.heading("SIGNALS");
    page.item("SIGUSR1", "stops the daemon in order; it then prints its ending line.\n");
    page.item("SIGTERM SIGINT SIGQUIT SIGSEGV SIGABRT SIGBUS",
              "print a crash report with a backtrace and end the process with status 255.\n");
    page.heading("EXIT STATUS");
    page.paragraph(VekTunerHelp::kExitStatus);
    page.paragraph("255 when the signal handlers cannot be installed or a fatal signal arrives.\n");
    page.heading("FILES");
    page.item("/etc/default/vek_tuner",
              "the options the systemd unit vek_tuner@TTY.service gives the daemon;\n"
              "/etc/default/vek_tuner.TTY, when there is one, overrides them for that line.\n");
    page.item("/lib/udev/rules.d/70-vek-tuner.rules",
              "starts the unit for a line when its USB-to-UART bridge is plugged in.\n");
    page.heading("SEE ALSO");
    page.paragraph("vek_master(1), systemctl(1), journalctl(1)\n");
    std::ofstream out(argv[2], std::ios::binary);
    out << page.text();
    return out.good() ? 0 : 1;
}
