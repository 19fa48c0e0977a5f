#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "VekJournal.h"

using vekmaster::VekJournal;

namespace {

class JournalTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = std::filesystem::temp_directory_path().string() + "/vek-journal-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    // A step on device "d" setting Gain.master from old to now.
    static VekJournal::Step change(const std::string& kind, int old, int now, int64_t target = 0) {
        VekJournal::Step step;
        step.device = "d";
        step.kind = kind;
        step.client = "c";
        step.target = target;
        step.changes.push_back({"Gain.master", "", -1, old, now});
        return step;
    }
    std::string path() const { return folder_ + "/state/journal.sqlite"; }

    std::string folder_;
};

TEST_F(JournalTest, UndoTakesTheNewestDoneStepRedoTheOldestUndoneAndANewStepDropsTheRedo) {
    VekJournal journal;
    ASSERT_EQ(journal.open(path()), "");
    VekJournal::Step first = change("request", -7, -3);
    VekJournal::Step second = change("apply", -3, -1);
    ASSERT_TRUE(journal.record(first));
    ASSERT_TRUE(journal.record(second));

    VekJournal::Step step;
    ASSERT_TRUE(journal.toUndo("d", step));
    EXPECT_EQ(step.id, second.id);
    VekJournal::Step undo = change("undo", -1, -3, second.id);
    ASSERT_TRUE(journal.record(undo));
    ASSERT_TRUE(journal.toUndo("d", step));
    EXPECT_EQ(step.id, first.id);
    VekJournal::Step undoFirst = change("undo", -3, -7, first.id);
    ASSERT_TRUE(journal.record(undoFirst));
    EXPECT_FALSE(journal.toUndo("d", step));
    EXPECT_EQ(journal.error(), "");

    // Undone last, redone first.
    ASSERT_TRUE(journal.toRedo("d", step));
    EXPECT_EQ(step.id, first.id);
    EXPECT_EQ(step.changes.front().before, -7);
    EXPECT_EQ(step.changes.front().after, -3);
    VekJournal::Step redo = change("redo", -7, -3, first.id);
    ASSERT_TRUE(journal.record(redo));
    ASSERT_TRUE(journal.toRedo("d", step));
    EXPECT_EQ(step.id, second.id);

    VekJournal::Step fresh = change("request", -3, -10);
    ASSERT_TRUE(journal.record(fresh));
    EXPECT_FALSE(journal.toRedo("d", step));
    ASSERT_TRUE(journal.toUndo("d", step));
    EXPECT_EQ(step.id, fresh.id);
    EXPECT_FALSE(journal.toUndo("other", step));
}

TEST_F(JournalTest, ADeviceKeepsItsNewestStepsAndTheyOutliveTheJournalObject) {
    {
        VekJournal journal(3);
        ASSERT_EQ(journal.open(path()), "");
        for (int i = 0; i < 5; ++i) {
            VekJournal::Step step = change("request", i, i + 1);
            ASSERT_TRUE(journal.record(step));
        }
        VekJournal::Step elsewhere = change("request", 0, 1);
        elsewhere.device = "e";
        ASSERT_TRUE(journal.record(elsewhere));
        VekJournal::Checkpoint a{"A", 0, {{"format", "vek-tuning/1"}}};
        ASSERT_TRUE(journal.saveCheckpoint("d", a));
    }
    VekJournal journal(3);
    ASSERT_EQ(journal.open(path()), "");
    std::vector<VekJournal::Step> steps;
    int64_t total = 0;
    ASSERT_TRUE(journal.history("d", 0, 10, steps, total));
    ASSERT_EQ(total, 3);
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[0].changes.front().after, 5);
    EXPECT_EQ(steps[2].changes.front().after, 3);
    ASSERT_TRUE(journal.history("d", 2, 10, steps, total));
    ASSERT_EQ(steps.size(), 1u);
    EXPECT_EQ(VekJournal::json(steps[0]).dump(),
              R"({"id":3,"kind":"request","client":"c","requestId":"","timeMs":)" +
                  std::to_string(steps[0].timeMs) +
                  R"(,"state":"done","changes":[{"setting":"Gain.master","old":2,"new":3}]})");
    ASSERT_TRUE(journal.history("e", 0, 10, steps, total));
    EXPECT_EQ(total, 1);

    VekJournal::Checkpoint got;
    ASSERT_TRUE(journal.checkpoint("d", "A", got));
    EXPECT_EQ(got.document.dump(), R"({"format":"vek-tuning/1"})");
    EXPECT_FALSE(journal.checkpoint("e", "A", got));
}

TEST_F(JournalTest, AFolderThatCannotBeMadeIsSaid) {
    VekJournal journal;
    EXPECT_EQ(journal.open("/proc/vek/journal.sqlite").rfind("cannot make /proc/vek: ", 0), 0u);
}

}  // namespace
