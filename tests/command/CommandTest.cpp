#include "support/Latch.h"
#include <vort/bones/Library.h>
#include <vort/command/CommandTarget.h>
#include <vort/err/ErrorHolder.h>
#include <vort/err/ZQFErrorDescription.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using namespace VORT;

namespace {

const char kBadState[] = "Command not in an appropriate state for request.";
const char kTooFarBack[] = "We do not have undo information far enough back.";

// Logs its handler calls ("do 3") and its deletion ("~3"); `fails` makes every handler fail.
struct Logged : Command {
    Logged(std::vector<std::string> &log, int id, bool undoable, bool redoable)
        : log(log), id(id), undoable(undoable), redoable(redoable) {}
    ~Logged() override { log.push_back("~" + std::to_string(id)); }
    bool canUndo() override { return undoable; }
    bool canRedo() override { return redoable; }
    std::string shortDescription() const override { return "command " + std::to_string(id); }
    void handleDo(ErrorHolder &holder) override { run("do", holder); }
    void handleUndo(ErrorHolder &holder) override { run("undo", holder); }
    void handleRedo(ErrorHolder &holder) override { run("redo", holder); }
    void run(std::string const &step, ErrorHolder &holder) {
        log.push_back(step + " " + std::to_string(id));
        if (fails) {
            holder.setError(SimpleErrorDescription(CodeLocation("t", 1), step + " failed"));
        }
    }
    std::vector<std::string> &log;
    int id;
    bool undoable, redoable, fails = false;
};

// The actions of a step, run with one holder: "do N" (with "once": can't be undone; "final":
// can't be redone), "again N" (hand in command N once more), "undo", "stale" (the holder
// has an earlier error), "redo", "back to N" and "back below N" (to command N's level, or one
// under it), "depth N" and "clean". Command `fails` fails throughout the step. Then the log of
// the step, the commands on top of the two stacks, whether the target is dirty, the error.
struct Step {
    const char *actions;
    int fails;
    const char *log;
    int undoTop, redoTop;
    bool dirty;
    const char *error;
};
const Step kSession[] = {
    {"undo; redo; to 0", 0, "", 0, 0, false, ""},
    {"do 1; do 2; do 3; clean", 0, "do 1 do 2 do 3", 3, 0, false, ""},
    {"undo", 0, "undo 3", 2, 3, true, ""},
    {"redo", 0, "redo 3", 3, 0, false, ""},
    {"undo; do 4", 0, "undo 3 do 4 ~3", 4, 0, true, ""},
    {"do 5", 5, "do 5", 4, 0, true, "do failed"},
    {"again 4", 0, "", 4, 0, true, kBadState},
    {"undo", 4, "undo 4", 4, 0, true, "undo failed"},
    {"stale", 0, "undo 4", 4, 0, true, "earlier"},
    {"undo", 0, "undo 4", 2, 4, true, ""},
    {"redo", 4, "redo 4", 2, 4, true, "redo failed"},
    {"redo; do 6 final; do 7; undo", 0, "redo 4 do 6 do 7 undo 7", 6, 7, true, ""},
    {"undo", 0, "undo 6 ~7", 4, 0, true, ""},
    {"to 2", 0, "undo 4", 2, 4, true, ""},
    {"redo; to 1", 0, "redo 4 undo 4 undo 2", 1, 2, true, ""},
    {"below 1", 0, "", 1, 2, true, kTooFarBack},
    {"redo; redo", 0, "redo 2 redo 4", 4, 0, true, ""},
    {"to 1", 2, "undo 4 undo 2", 2, 4, true, "undo failed"},
    {"redo; depth 0", 0, "redo 4 ~1 ~2 ~4", 0, 0, true, ""},
    {"do 10", 0, "do 10 ~10", 0, 0, true, ""},
    {"depth 20; do 11; do 12; clean; do 13 once", 0, "do 11 do 12 do 13 ~12 ~11", 0, 0, true, ""},
    {"clean; do 15 once", 0, "do 15", 0, 0, false, ""},
    {"do 16; do 17; undo", 0, "do 16 do 17 undo 17", 16, 17, true, ""},
};

int topOf(std::string const &description) {
    return description.empty() ? 0 : std::stoi(description.substr(sizeof("command")));
}

}  // namespace

TEST(UndoRedoCommandTarget, FollowsASessionOfEveryKindOfStep) {
    initialize_vort_util();
    std::vector<std::string> log;
    std::map<int, Logged *> commands;
    {
        UndoRedoCommandTarget target;
        for (const Step &step : kSession) {
            SCOPED_TRACE(step.actions);
            const size_t logged = log.size();
            ErrorHolder holder;
            std::istringstream actions(step.actions);
            for (std::string action; std::getline(actions >> std::ws, action, ';');) {
                std::istringstream words(action);
                std::string verb, how;
                int id = 0;
                words >> verb >> id >> how;
                if (verb == "do") {
                    commands[id] = new Logged(log, id, how != "once", how != "final");
                }
                for (auto &entry : commands) {
                    entry.second->fails = entry.first == step.fails;
                }
                if (verb == "do" || verb == "again") {
                    target.processCommand(commands[id], holder);
                } else if (verb == "undo" || verb == "stale") {
                    if (verb == "stale") {
                        holder.setError(SimpleErrorDescription(CodeLocation("x", 1), "earlier"));
                    }
                    target.undo(holder);
                } else if (verb == "redo") {
                    target.redo(holder);
                } else if (verb == "to" || verb == "below") {
                    const ChangeLevel level = id ? commands[id]->getChangeLevel() : ChangeLevel();
                    target.undoToChangeLevel(level.value() - (verb == "below"), holder);
                } else if (verb == "depth") {
                    target.setMaxUndoDepth(id);
                } else {
                    ASSERT_EQ(verb, "clean");
                    target.markClean();
                }
            }
            std::string done;
            for (size_t i = logged; i < log.size(); ++i) {
                done += (done.empty() ? "" : " ") + log[i];
            }
            EXPECT_EQ(done, step.log);
            EXPECT_EQ(topOf(target.undoLongDescription()), step.undoTop);
            EXPECT_EQ(topOf(target.redoLongDescription()), step.redoTop);
            EXPECT_EQ(target.isDirty(), step.dirty);
            EXPECT_EQ(holder.what(), step.error);
        }
        log.clear();
    }
    // The target deletes its redo stack, then its undo stack; the rest are still the caller's.
    EXPECT_EQ(log, (std::vector<std::string>{"~17", "~16"}));
    for (int id : {5, 6, 13, 15}) {
        delete commands[id];
    }
}

TEST(Command, DefaultsRefuseRequestsOutOfStateAndCopyTheState) {
    initialize_vort_util();
    struct Bare : Command {
        std::string shortDescription() const override { return "bare"; }
        void handleDo(ErrorHolder &) override {}
    } bare;
    EXPECT_FALSE(bare.canUndo() || bare.canRedo());
    EXPECT_EQ(bare.longDescription(), "bare");
    ErrorHolder refused, fine;
    bare.undo(refused);
    EXPECT_EQ(refused.what(), kBadState);
    const auto *zqf = dynamic_cast<ZQFErrorDescription *>(refused.description());
    EXPECT_EQ(zqf ? zqf->where().file() : "", ".\\command\\Command");
    bare.doIt(fine);
    const ChangeLevel level = bare.getChangeLevel();
    bare.undo(fine);  // the default undo and redo handlers do nothing and succeed
    bare.redo(fine);
    EXPECT_TRUE(!fine.hasError() && level != ChangeLevel());
    Bare copy(bare);
    EXPECT_TRUE(copy.getState() == Command::Done && copy.getChangeLevel() == level);
    EXPECT_TRUE(ChangeLevel(1) < ChangeLevel(0x80000000UL) && ChangeLevel(0x100000005UL) == 5UL);
}

TEST(ChangeLevelConcurrency, NextHandsOutOneUnbrokenRunAcrossThreads) {
    constexpr int kThreads = 4, kDraws = 5000;
    std::vector<std::vector<unsigned long>> drawn(kThreads);
    vort_test::runTogether(kThreads, [&](int t) {
        for (int i = 0; i < kDraws; ++i) {
            drawn[t].push_back(ChangeLevel::next().value());
        }
    });
    std::vector<unsigned long> all;
    for (auto const &own : drawn) {
        EXPECT_TRUE(std::is_sorted(own.begin(), own.end()));
        all.insert(all.end(), own.begin(), own.end());
    }
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
    EXPECT_EQ(all.back() - all.front(), static_cast<unsigned long>(kThreads * kDraws - 1));
}
