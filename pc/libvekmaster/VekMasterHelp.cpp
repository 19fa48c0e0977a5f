#include "VekMasterHelp.h"

#include "VekLineSettings.h"
#include "VekMessageCatalog.h"

namespace vekmaster {

namespace {

using Value = VekMasterHelp::Value;

constexpr const char* kRates = "{rates}";
// Usage lines continued on the next line start under the first one's operands.
constexpr const char* kContinued = "                        ";

}  // namespace

const std::vector<const char*>& VekMasterHelp::synopsis() {
    static const std::vector<const char*> lines{
        "vek_master [OPTION...] FEATURE MESSAGE [ARG...]",
        "vek_master [OPTION...] snapshot [--output=FILE]",
        "vek_master [OPTION...] apply FILE [--dry-run] [--bypass]",
        "vek_master [OPTION...] diff A B",
        "vek_master [OPTION...] curve CHANNEL [--svg=FILE | --csv] [--document=FILE]",
        "vek_master [OPTION...] eq import FILE --channel=CH[,CH...] [--fit] [--dry-run]\n"
        "[--preamp=channel|master|ignore] [--document=FILE]",
        "vek_master [OPTION...] eq export CHANNEL [--format=apo|rew] [--document=FILE]",
        "vek_master [OPTION...] --script=FILE [--keep-going]",
        "vek_master serve [--device=PATH...] [--virtual=FILE...] [--listen=HOST:PORT]\n"
        "[--token-file=FILE] [--profile=FILE] [--state-dir=DIR]",
        "vek_master trace show FILE [--json]",
        "vek_master trace from-log LOG --output=FILE",
        "vek_master trace replay FILE (--launch=DAEMON [-- ARGS] | --device=PATH)\n"
        "[--timing=original]",
    };
    return lines;
}

const std::vector<VekMasterHelp::Section>& VekMasterHelp::sections() {
    static const std::vector<Section> table{
        {"Tunings (JSON documents of format vek-tuning/1):", "", 18,
         {
             {"snapshot",
              "read every setting the device reports into a document\n"
              "(standard output, or --output=FILE)\n",
              Value::None},
             {"apply FILE",
              "check the document, then set what differs on the device and\n"
              "read it back; each value set is printed as setting: old -> new\n",
              Value::File},
             {"diff A B",
              "print the values that differ, one per line as\n"
              "feature.setting[channel/band]: a -> b; A and B are each a\n"
              "document or the word device (the connected device)\n",
              Value::Document},
             {"curve CHANNEL",
              "the equaliser response of a channel (LF RF LS RS CF L1) from\n"
              "its bands on the device, or in a document with --document=FILE:\n"
              "its lowest and highest point; --svg=FILE draws it, --csv prints\n"
              "frequency,total,band0,...; --points=N (16 to 2048, default 256)\n",
              Value::Channel},
             {"eq import FILE",
              "parametric filters (APO configuration text or a Filter Settings\n"
              "file) onto the channels of --channel=CH[,CH...]: checked against\n"
              "the profile (types, band count, ranges) and refused with every\n"
              "problem listed, or with --fit clamped and dropped (the least\n"
              "audible first) with every change listed; the Preamp goes onto the\n"
              "channel's gain (--preamp=master: the master gain; ignore: not at\n"
              "all); prints the largest difference from the file's curve and\n"
              "applies it as apply does; --document=FILE: into that document\n",
              Value::File},
             {"eq export CH",
              "the channel's bands as filter text, --format=apo (default) or rew\n"
              "(a Filter Settings file), from the device or --document=FILE\n",
              Value::Channel},
         }},
        {"Options:", "", 18,
         {
             {"--device=PATH",
              "serial line to the slave (default /dev/ttyUSB0); given several\n"
              "times, every command runs on every line at once, and each line\n"
              "prints one result line, its path first\n",
              Value::Line},
             {"--devices=FILE", "the lines to use, one path a line ('#' starts a comment)\n",
              Value::File},
             {"--baudRate=N", "line speed (default 115200), one of\n{rates}\n", Value::Other},
             {"--timeout=MS", "how long to wait for an answer (default 3000)\n", Value::Other},
             {"--window=N",
              "requests a snapshot, apply, diff or curve keeps on the line at\n"
              "once (1 to 64, default 32; 1: each waits for the answer before)\n",
              Value::Other},
             {"--json", "print each answer, apply result and diff as one JSON object\n",
              Value::None},
             {"--output=FILE",
              "write the answer's raw data (Common FileContent, any size) or the\n"
              "snapshot's document to FILE; with several devices a snapshot\n"
              "goes to one file per device in the directory FILE\n",
              Value::File},
             {"--dry-run", "with apply: print the requests it would send, send none\n",
              Value::None},
             {"--bypass",
              "with apply: hold the audio bypass on while applying, then\n"
              "restore it (to the document's value if it has one)\n",
              Value::None},
             {"--script=FILE",
              "run the commands in FILE (- for standard input), one per line,\n"
              "over one connection; '#' starts a comment; a line may carry\n"
              "--output=FILE, --dry-run and --bypass for its command\n",
              Value::File},
             {"--keep-going", "with --script: go on after a command that failed\n", Value::None},
             {"--launch=PATH",
              "start the daemon PATH on a pseudo-terminal, run the commands\n"
              "against it and stop it; arguments after -- go to the daemon\n",
              Value::Program},
             {"--log=FILE", "with --launch: append the daemon's output to FILE\n", Value::File},
             {"--virtual=FILE",
              "a simulated device holding the tuning document FILE (the daemon\n"
              "beside vek_master, or --launch=PATH); FILE is not changed; with\n"
              "serve: repeatable, beside --device, and POST\n"
              "/api/devices/{n}/save writes it back (FILE.bak the old one)\n",
              Value::File},
             {"--stats", "at the end, print the requests and bytes sent and received\n",
              Value::None},
             {"--connect=URL",
              "run the commands through a running vek_master serve\n"
              "(http://HOST:PORT) instead of opening a line\n",
              Value::Other},
             {"--device-index=N", "with --connect: the server's device N (default 0)\n",
              Value::Other},
             {"--token-file=FILE", "the token a server needs (serve: the one it asks for)\n",
              Value::File},
         }},
        {"Serving (vek_master serve): keeps every line open and serves an HTTP and",
         "WebSocket API on them until SIGINT or SIGTERM, so that the panel, scripts and\n"
         "vek_master --connect share the devices. GET /api lists the routes.\n",
         18,
         {
             {"--listen=HOST:PORT",
              "where to listen (default 127.0.0.1:8741; another than a\n"
              "loopback address needs --token-file)\n",
              Value::Other},
             {"--queue=N", "requests that may wait per line (default 64; more get 503)\n",
              Value::Other},
             {"--client-timeout=MS",
              "for a client to send a request or take an answer\n"
              "(default 15000)\n",
              Value::Other},
             {"--state-dir=DIR",
              "where the journal of changes and the checkpoints are kept\n"
              "(default $XDG_STATE_HOME/vek_tuner)\n",
              Value::Other},
             {"--no-journal",
              "keep no journal: a set message costs no reads before and after\n"
              "it, and there is no history, undo or checkpoint\n",
              Value::None},
             {"--max-clients=N",
              "connections open at once, WebSockets included (default\n"
              "256; more are answered 503 and closed)\n",
              Value::Other},
             {"--profile=FILE",
              "the device profile: what band values mean and the range of\n"
              "every value (default: the built-in profile); a value outside\n"
              "its range is refused with status 64 and nothing is sent\n",
              Value::File},
             {"--force",
              "send a message's value outside the profile's range anyway (it\n"
              "says so on standard error)\n",
              Value::None},
             {"--trace=FILE",
              "write every frame each way on every line, and every stray\n"
              "byte, to the capture file FILE (pcapng; serve too)\n",
              Value::File},
             {"--help", "print this text\n", Value::None},
         }},
        {"Traces (pcapng capture files):", "", 24,
         {
             {"trace show FILE",
              "print each packet: time (UTC), line, -> to the device or\n"
              "<- to the master, the frame; --json: one object a packet\n",
              Value::File},
             {"trace from-log LOG",
              "the daemon's receive and send dumps in LOG (its output,\n"
              "or journalctl -o short-iso-precise) as a trace, --output=FILE\n",
              Value::File},
             {"trace replay FILE",
              "send the master's frames again and compare every answer\n"
              "with the recorded one (not the numbers, times or paths);\n"
              "--timing=original keeps the recorded gaps; exit 1 on a\n"
              "difference\n",
              Value::File},
         }},
    };
    return table;
}

std::string VekMasterHelp::expand(const char* text) {
    std::string out(text);
    const size_t at = out.find(kRates);
    if (at != std::string::npos) {
        out.replace(at, std::char_traits<char>::length(kRates),
                    vektransport::VekLineSettings::rates());
    }
    return out;
}

std::string VekMasterHelp::text(const VekMessageCatalog& catalog) {
    std::string out;
    const char* lead = "Usage: ";
    for (const char* line : synopsis()) {
        out += lead;
        for (const char* c = line; *c != '\0'; ++c) {
            out += *c;
            if (*c == '\n') {
                out += kContinued;
            }
        }
        out += '\n';
        lead = "       ";
    }
    out += kDescription;
    for (const Section& section : sections()) {
        out.append("\n").append(section.title).append("\n").append(section.intro);
        for (const Entry& entry : section.entries) {
            std::string line = std::string("  ") + entry.term;
            line.append(line.size() + 1 < section.column ? section.column - line.size() : 2, ' ');
            for (const char c : expand(entry.text)) {
                line += c;
                if (c == '\n') {
                    out += line;
                    line.assign(section.column, ' ');
                }
            }
        }
    }
    out.append("\n").append(kMessagesTitle).append("\n").append(catalog.help());
    out.append("\n").append(kExitStatus);
    return out;
}

}  // namespace vekmaster
