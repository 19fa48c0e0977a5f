#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vekmaster {

// vek_master's command line. Options may stand anywhere before "--"; everything else is
// FEATURE MESSAGE ARG..., or a verb with its operands (a negative number is an ARG:
// options start with "--").
struct VekMasterOptions {
    static constexpr const char* kDefaultDevice = "/dev/ttyUSB0";

    std::vector<std::string> devices;  // --device=, as often as given, and --devices=FILE
    std::string devicesFile;
    int32_t baudRate = 115200;
    int timeoutMs = 3000;
    long window = 0;  // requests on the line at once; 0 for the session's default
    bool json = false;
    bool help = false;
    bool stats = false;
    std::string script;  // a file, or "-" for standard input
    bool keepGoing = false;
    std::string launch;                   // the daemon to start on a pseudo-terminal
    std::vector<std::string> virtuals;    // --virtual=FILE: devices made from documents
    std::string stateDir;                 // serve: where the journal is kept
    bool noJournal = false;               // serve: keep none (no history, undo, checkpoints)
    std::string log;                      // where the launched daemon's output goes
    std::string output;                   // where the answer's raw data or a document goes
    bool dryRun = false;                  // apply: list the requests, set nothing
    bool bypass = false;                  // apply: hold the audio bypass on meanwhile
    std::string trace;                    // the capture file every line's frames go to
    std::string timing;                   // trace replay: "original" keeps the recorded gaps
    // serve: where to listen, the token clients must bring, the limits per client.
    std::string listen;
    std::string tokenFile;  // also for --connect
    long queue = 0;
    long clientTimeoutMs = 0;
    long maxClients = 0;
    // --connect: the server to ask instead of a line, and which of its devices.
    std::string connect;
    int deviceIndex = 0;
    bool lineTuned = false;  // --baudRate or --timeout given
    std::string profile;     // the device profile file; the built-in one when empty
    bool force = false;      // send values outside the profile's ranges anyway
    // curve: the channel's response as an SVG file or CSV, from a document, on N points.
    std::string svg;
    bool csv = false;
    std::string document;
    long points = 0;
    // eq: the channels to import into, whether to fit, where the preamp goes, the form.
    std::string channel;
    bool fit = false;
    std::string preamp;
    std::string format;
    std::vector<std::string> words;       // FEATURE MESSAGE ARG..., or a verb
    std::vector<std::string> daemonArgs;  // after "--"

    // "" or what is wrong with the command line.
    std::string parse(int argc, char** argv);
    // The command is `serve`.
    bool serving() const { return !words.empty() && words[0] == "serve"; }
    // The command is `trace ...`.
    bool tracing() const { return !words.empty() && words[0] == "trace"; }
    // An option of curve or eq is given.
    bool curving() const {
        return !svg.empty() || csv || !document.empty() || points != 0 || !channel.empty() ||
               fit || !preamp.empty() || !format.empty();
    }
    // "" or why the options of serve and --connect do not go together.
    std::string checkServing() const;
    // Adds the lines of --devices=FILE to devices, and the default device when there is
    // none; "" or why the list cannot be used (unreadable: the file could not be read).
    std::string resolveDevices(bool& unreadable);
};

}  // namespace vekmaster
