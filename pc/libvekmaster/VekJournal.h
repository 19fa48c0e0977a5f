#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "VekSettingChange.h"
#include "VekValueJson.h"

struct sqlite3;

namespace vekmaster {

// Every change made to a device, and its named checkpoints, in one SQLite database. A
// step (a message, a batch, an apply, an undo...) is committed with all its changes in
// one transaction, synced to disk before record returns: an answer sent after it can
// never name a change that a crash or a power cut loses.
//
// Undo works on the device's newest step that is done; redo on its oldest undone one. A
// new step that is not itself an undo or a redo drops what could be redone. A device
// keeps its newest keepSteps steps; older ones go as new ones are recorded.
//
// Safe for several threads: one connection behind a lock.
class VekJournal {
public:
    using Json = VekValueJson::Json;

    static constexpr int64_t kKeepSteps = 10000;

    enum class State { Done = 0, Undone = 1, Dropped = 2 };
    struct Step {
        int64_t id = 0;
        std::string device;     // the line's path, or a virtual device's document
        std::string kind;       // "request", "batch", "apply", "undo", "redo", "checkpoint"
        std::string client;     // "127.0.0.1:41236"
        std::string requestId;  // the HTTP request it answered
        int64_t timeMs = 0;     // since the epoch; now when recorded with 0
        State state = State::Done;
        int64_t target = 0;  // the step an undo or redo acted on
        std::vector<VekSettingChange> changes;
    };
    struct Checkpoint {
        std::string name;
        int64_t timeMs = 0;
        Json document;
    };

    explicit VekJournal(int64_t keepSteps = kKeepSteps) : keepSteps_(keepSteps) {}
    ~VekJournal();
    VekJournal(const VekJournal&) = delete;
    VekJournal& operator=(const VekJournal&) = delete;

    // Opens (creating) the database file, and its directory; "" or why not.
    std::string open(const std::string& path);
    // $XDG_STATE_HOME/vek_tuner, or ~/.local/state/vek_tuner.
    static std::string defaultDirectory();

    // Records a step and its changes (an undo or redo also marks its target); false with
    // error() when it could not be committed. step gets its id and time.
    bool record(Step& step);
    // Newest first, from offset on, at most limit; total gets how many the device has.
    bool history(const std::string& device, int64_t offset, int64_t limit,
                 std::vector<Step>& steps, int64_t& total);
    // The step an undo would put back, or the one a redo would take again; false when
    // there is none (error() is then "").
    bool toUndo(const std::string& device, Step& step);
    bool toRedo(const std::string& device, Step& step);

    bool saveCheckpoint(const std::string& device, Checkpoint& checkpoint);
    // False when the device has no checkpoint of that name (error() is then "").
    bool checkpoint(const std::string& device, const std::string& name, Checkpoint& checkpoint);
    // Names and times, oldest first; documents left empty.
    bool checkpoints(const std::string& device, std::vector<Checkpoint>& list);

    const std::string& error() const { return error_; }
    static Json json(const Step& step);

private:
    bool exec(const char* sql);
    bool fail(const char* what);
    bool loadChanges(Step& step);
    bool oneStep(const char* sql, const std::string& device, Step& step);

    sqlite3* db_ = nullptr;
    int64_t keepSteps_;
    std::mutex mutex_;
    std::string error_;
};

}  // namespace vekmaster
