#include "VekJournal.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

namespace vekmaster {

namespace {

using Json = VekJournal::Json;

// A prepared statement, finalized on every path out.
class Statement {
public:
    Statement(sqlite3* db, const char* sql) {
        if (sqlite3_prepare_v2(db, sql, -1, &stmt_, nullptr) != SQLITE_OK) {
            stmt_ = nullptr;
        }
    }
    ~Statement() { sqlite3_finalize(stmt_); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    bool ok() const { return stmt_ != nullptr; }
    Statement& bind(int i, const std::string& text) {
        sqlite3_bind_text(stmt_, i, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
        return *this;
    }
    Statement& bind(int i, int64_t value) {
        sqlite3_bind_int64(stmt_, i, value);
        return *this;
    }
    // SQLITE_ROW, SQLITE_DONE or an error.
    int step() { return sqlite3_step(stmt_); }
    int64_t integer(int column) { return sqlite3_column_int64(stmt_, column); }
    std::string text(int column) {
        const unsigned char* t = sqlite3_column_text(stmt_, column);
        return t != nullptr ? std::string(reinterpret_cast<const char*>(t),
                                          static_cast<size_t>(sqlite3_column_bytes(stmt_, column)))
                            : std::string();
    }

private:
    sqlite3_stmt* stmt_ = nullptr;
};

// Items are stored as their JSON text; what we wrote parses back.
Json parsed(const std::string& text) {
    return text.empty() ? Json() : Json::parse(text, nullptr, false);
}

int64_t nowMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

bool makeDirectories(const std::string& path) {
    for (size_t at = path.find('/', 1); ; at = path.find('/', at + 1)) {
        const std::string part = path.substr(0, at);
        if (mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) {
            return false;
        }
        if (at == std::string::npos) {
            return true;
        }
    }
}

const char* const kSchema =
    "CREATE TABLE IF NOT EXISTS steps (id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " device TEXT NOT NULL, kind TEXT NOT NULL, client TEXT NOT NULL, request_id TEXT NOT NULL,"
    " time_ms INTEGER NOT NULL, state INTEGER NOT NULL, target INTEGER NOT NULL);"
    "CREATE INDEX IF NOT EXISTS steps_device ON steps (device, id);"
    "CREATE TABLE IF NOT EXISTS changes (step INTEGER NOT NULL REFERENCES steps (id)"
    " ON DELETE CASCADE, seq INTEGER NOT NULL, setting TEXT NOT NULL, channel TEXT NOT NULL,"
    " band INTEGER NOT NULL, before TEXT NOT NULL, after TEXT NOT NULL,"
    " PRIMARY KEY (step, seq));"
    "CREATE TABLE IF NOT EXISTS checkpoints (device TEXT NOT NULL, name TEXT NOT NULL,"
    " time_ms INTEGER NOT NULL, document TEXT NOT NULL, PRIMARY KEY (device, name));";

const char* const kStepColumns =
    "SELECT id, device, kind, client, request_id, time_ms, state, target FROM steps ";

void readStep(Statement& s, VekJournal::Step& step) {
    step.id = s.integer(0);
    step.device = s.text(1);
    step.kind = s.text(2);
    step.client = s.text(3);
    step.requestId = s.text(4);
    step.timeMs = s.integer(5);
    step.state = static_cast<VekJournal::State>(s.integer(6));
    step.target = s.integer(7);
}

}  // namespace

VekJournal::~VekJournal() {
    sqlite3_close(db_);
}

std::string VekJournal::defaultDirectory() {
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') {
        return std::string(state) + "/vek_tuner";
    }
    const char* home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + "/.local/state/vek_tuner";
}

std::string VekJournal::open(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0 && !makeDirectories(path.substr(0, slash))) {
        return "cannot make " + path.substr(0, slash) + ": " + std::strerror(errno);
    }
    if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                        nullptr) != SQLITE_OK) {
        const std::string why = db_ != nullptr ? sqlite3_errmsg(db_) : "out of memory";
        sqlite3_close(db_);
        db_ = nullptr;
        return "cannot open " + path + ": " + why;
    }
    sqlite3_busy_timeout(db_, 5000);
    // WAL with a sync at every commit: an answered change is on the disk, not only in
    // the OS's cache, which a power cut would lose (NORMAL syncs only at checkpoints).
    if (!exec("PRAGMA journal_mode=WAL") || !exec("PRAGMA synchronous=FULL") ||
        !exec("PRAGMA foreign_keys=ON") || !exec(kSchema)) {
        return "cannot use " + path + ": " + error_;
    }
    return "";
}

bool VekJournal::exec(const char* sql) {
    char* message = nullptr;
    if (sqlite3_exec(db_, sql, nullptr, nullptr, &message) != SQLITE_OK) {
        error_ = message != nullptr ? message : "failed";
        sqlite3_free(message);
        return false;
    }
    return true;
}

bool VekJournal::fail(const char* what) {
    error_ = std::string(what) + ": " + sqlite3_errmsg(db_);
    exec("ROLLBACK");
    return false;
}

bool VekJournal::record(Step& step) {
    std::lock_guard<std::mutex> lock(mutex_);
    error_.clear();
    if (db_ == nullptr) {
        error_ = "the journal is not open";
        return false;
    }
    if (step.timeMs == 0) {
        step.timeMs = nowMs();
    }
    if (!exec("BEGIN IMMEDIATE")) {
        return false;
    }
    const bool undoing = step.kind == "undo" || step.kind == "redo";
    if (!undoing) {
        Statement drop(db_, "UPDATE steps SET state = 2 WHERE device = ?1 AND state = 1");
        if (!drop.ok() || drop.bind(1, step.device).step() != SQLITE_DONE) {
            return fail("cannot drop the redo steps");
        }
    } else {
        Statement mark(db_, "UPDATE steps SET state = ?1 WHERE id = ?2");
        const int64_t state = static_cast<int64_t>(step.kind == "undo" ? State::Undone : State::Done);
        if (!mark.ok() || mark.bind(1, state).bind(2, step.target).step() != SQLITE_DONE) {
            return fail("cannot mark the step");
        }
    }
    Statement insert(db_,
                     "INSERT INTO steps (device, kind, client, request_id, time_ms, state, target)"
                     " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
    // An undo or redo is history, not a step to undo in turn.
    step.state = undoing ? State::Dropped : State::Done;
    if (!insert.ok() || insert.bind(1, step.device)
                                .bind(2, step.kind)
                                .bind(3, step.client)
                                .bind(4, step.requestId)
                                .bind(5, step.timeMs)
                                .bind(6, static_cast<int64_t>(step.state))
                                .bind(7, step.target)
                                .step() != SQLITE_DONE) {
        return fail("cannot record the step");
    }
    step.id = sqlite3_last_insert_rowid(db_);
    for (size_t i = 0; i < step.changes.size(); ++i) {
        const VekSettingChange& c = step.changes[i];
        Statement change(db_,
                         "INSERT INTO changes (step, seq, setting, channel, band, before, after)"
                         " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
        if (!change.ok() || change.bind(1, step.id)
                                .bind(2, static_cast<int64_t>(i))
                                .bind(3, c.setting)
                                .bind(4, c.channel)
                                .bind(5, static_cast<int64_t>(c.band))
                                .bind(6, c.before.is_null() ? "" : VekValueJson::dump(c.before))
                                .bind(7, c.after.is_null() ? "" : VekValueJson::dump(c.after))
                                .step() != SQLITE_DONE) {
            return fail("cannot record a change");
        }
    }
    Statement prune(db_,
                    "DELETE FROM steps WHERE device = ?1 AND id <= (SELECT id FROM steps WHERE"
                    " device = ?1 ORDER BY id DESC LIMIT 1 OFFSET ?2)");
    if (!prune.ok() || prune.bind(1, step.device).bind(2, keepSteps_).step() != SQLITE_DONE) {
        return fail("cannot prune");
    }
    if (!exec("COMMIT")) {
        return fail("cannot commit");
    }
    return true;
}

bool VekJournal::loadChanges(Step& step) {
    Statement s(db_,
                "SELECT setting, channel, band, before, after FROM changes WHERE step = ?1"
                " ORDER BY seq");
    if (!s.ok()) {
        return fail("cannot read changes");
    }
    s.bind(1, step.id);
    step.changes.clear();
    while (s.step() == SQLITE_ROW) {
        step.changes.push_back({s.text(0), s.text(1), static_cast<int>(s.integer(2)),
                                parsed(s.text(3)), parsed(s.text(4))});
    }
    return true;
}

bool VekJournal::history(const std::string& device, int64_t offset, int64_t limit,
                         std::vector<Step>& steps, int64_t& total) {
    std::lock_guard<std::mutex> lock(mutex_);
    error_.clear();
    Statement count(db_, "SELECT count(*) FROM steps WHERE device = ?1");
    if (!count.ok() || count.bind(1, device).step() != SQLITE_ROW) {
        return fail("cannot count");
    }
    total = count.integer(0);
    Statement s(db_, (std::string(kStepColumns) +
                      "WHERE device = ?1 ORDER BY id DESC LIMIT ?2 OFFSET ?3").c_str());
    if (!s.ok()) {
        return fail("cannot read the history");
    }
    s.bind(1, device).bind(2, limit).bind(3, offset);
    steps.clear();
    while (s.step() == SQLITE_ROW) {
        steps.emplace_back();
        readStep(s, steps.back());
    }
    for (Step& step : steps) {
        if (!loadChanges(step)) {
            return false;
        }
    }
    return true;
}

bool VekJournal::oneStep(const char* sql, const std::string& device, Step& step) {
    std::lock_guard<std::mutex> lock(mutex_);
    error_.clear();
    Statement s(db_, (std::string(kStepColumns) + sql).c_str());
    if (!s.ok()) {
        return fail("cannot read the history");
    }
    if (s.bind(1, device).step() != SQLITE_ROW) {
        return false;
    }
    readStep(s, step);
    return loadChanges(step);
}

bool VekJournal::toUndo(const std::string& device, Step& step) {
    return oneStep("WHERE device = ?1 AND state = 0 ORDER BY id DESC LIMIT 1", device, step);
}

bool VekJournal::toRedo(const std::string& device, Step& step) {
    return oneStep("WHERE device = ?1 AND state = 1 ORDER BY id ASC LIMIT 1", device, step);
}

bool VekJournal::saveCheckpoint(const std::string& device, Checkpoint& checkpoint) {
    std::lock_guard<std::mutex> lock(mutex_);
    error_.clear();
    if (checkpoint.timeMs == 0) {
        checkpoint.timeMs = nowMs();
    }
    Statement s(db_,
                "INSERT OR REPLACE INTO checkpoints (device, name, time_ms, document)"
                " VALUES (?1, ?2, ?3, ?4)");
    if (!s.ok() || s.bind(1, device)
                           .bind(2, checkpoint.name)
                           .bind(3, checkpoint.timeMs)
                           .bind(4, VekValueJson::dump(checkpoint.document))
                           .step() != SQLITE_DONE) {
        return fail("cannot keep the checkpoint");
    }
    return true;
}

bool VekJournal::checkpoint(const std::string& device, const std::string& name,
                            Checkpoint& checkpoint) {
    std::lock_guard<std::mutex> lock(mutex_);
    error_.clear();
    Statement s(db_, "SELECT time_ms, document FROM checkpoints WHERE device = ?1 AND name = ?2");
    if (!s.ok()) {
        return fail("cannot read the checkpoint");
    }
    if (s.bind(1, device).bind(2, name).step() != SQLITE_ROW) {
        return false;
    }
    checkpoint.name = name;
    checkpoint.timeMs = s.integer(0);
    checkpoint.document = parsed(s.text(1));
    return true;
}

bool VekJournal::checkpoints(const std::string& device, std::vector<Checkpoint>& list) {
    std::lock_guard<std::mutex> lock(mutex_);
    error_.clear();
    Statement s(db_, "SELECT name, time_ms FROM checkpoints WHERE device = ?1 ORDER BY time_ms, name");
    if (!s.ok()) {
        return fail("cannot list the checkpoints");
    }
    s.bind(1, device);
    list.clear();
    while (s.step() == SQLITE_ROW) {
        list.push_back({s.text(0), s.integer(1), Json()});
    }
    return true;
}

VekJournal::Json VekJournal::json(const Step& step) {
    Json changes = Json::array();
    for (const VekSettingChange& c : step.changes) {
        Json change = {{"setting", c.setting}};
        if (!c.channel.empty()) {
            change["channel"] = c.channel;
        }
        if (c.band >= 0) {
            change["band"] = c.band;
        }
        change["old"] = c.before;
        change["new"] = c.after;
        changes.push_back(std::move(change));
    }
    Json out = {{"id", step.id},        {"kind", step.kind},
                {"client", step.client}, {"requestId", step.requestId},
                {"timeMs", step.timeMs}};
    out["state"] = step.state == State::Done     ? "done"
                   : step.state == State::Undone ? "undone"
                                                 : "final";
    if (step.target != 0) {
        out["target"] = step.target;
    }
    out["changes"] = std::move(changes);
    return out;
}

}  // namespace vekmaster
