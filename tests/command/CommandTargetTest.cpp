#include "command/TestCommands.h"
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

using VORT::ChangeLevel;
using VORT::ErrorHolder;
using VORT::UndoRedoCommandTarget;
using vort_test::Outcome;
using vort_test::TestCommand;

namespace {

// One step of a session with a target: what is done, what the commands then log ("do 3",
// "~3" for its deletion), the commands left on top of the two stacks, whether the target is
// dirty, and what the holder says.
struct Step {
    const char *action;
    const char *log;
    int undoTop, redoTop;
    bool dirty;
    const char *error;
};

const char kBadState[] = "Command not in an appropriate state for request.";
const char kTooFarBack[] = "We do not have undo information far enough back.";

// The actions: "do N" (with "once": can't be undone; "final": can't be redone; "fails"),
// "again N" (hand in command N, already done, once more), "undo", "stale undo" (the holder has
// an earlier error), "redo", "fail N" and "heal N" (command N's handlers fail, or no longer),
// "back to N" and "back below N" (to command N's level, or one under it; 0 is no level), "gap"
// and "back to gap" (a level drawn outside the target), "depth N", "clean", "clear undo" and
// "clear redo".
const Step kSession[] = {
    {"undo", "", 0, 0, false, ""},
    {"redo", "", 0, 0, false, ""},
    {"back to 0", "", 0, 0, false, ""},
    {"do 1", "do 1", 1, 0, true, ""},
    {"do 2", "do 2", 2, 0, true, ""},
    {"do 3", "do 3", 3, 0, true, ""},
    {"clean", "", 3, 0, false, ""},
    {"undo", "undo 3", 2, 3, true, ""},
    {"undo", "undo 2", 1, 2, true, ""},
    {"redo", "redo 2", 2, 3, true, ""},
    {"redo", "redo 3", 3, 0, false, ""},
    {"undo", "undo 3", 2, 3, true, ""},
    {"do 4", "do 4 ~3", 4, 0, true, ""},              // a new command deletes what could be redone
    {"do 5 fails", "do 5", 4, 0, true, "do failed"},  // left with the caller
    {"again 4", "", 4, 0, true, kBadState},
    {"fail 4", "", 4, 0, true, ""},
    {"undo", "undo 4", 4, 0, true, "undo failed"},  // stays on top for a retry
    {"heal 4", "", 4, 0, true, ""},
    {"stale undo", "undo 4", 4, 0, true, "earlier"},  // the old error reads as a failure...
    {"undo", "undo 4", 2, 4, true, ""},               // ...so the same edit is taken back twice
    {"fail 4", "", 2, 4, true, ""},
    {"redo", "redo 4", 2, 4, true, "redo failed"},
    {"heal 4", "", 2, 4, true, ""},
    {"redo", "redo 4", 4, 0, true, ""},
    {"do 6 final", "do 6", 6, 0, true, ""},
    {"do 7", "do 7", 7, 0, true, ""},
    {"undo", "undo 7", 6, 7, true, ""},
    {"undo", "undo 6 ~7", 4, 0, true, ""},  // 6 can't be redone: it goes nowhere, 7 with it
    {"back to 2", "undo 4", 2, 4, true, ""},
    {"redo", "redo 4", 4, 0, true, ""},
    {"back below 4", "undo 4", 2, 4, true, ""},
    {"back to 1", "undo 2", 1, 2, true, ""},
    {"back below 1", "", 1, 2, true, kTooFarBack},  // refused: nothing is undone
    {"back to 0", "", 1, 2, true, kTooFarBack},     // the oldest goes only by undo
    {"redo", "redo 2", 2, 4, true, ""},
    {"redo", "redo 4", 4, 0, true, ""},
    {"fail 2", "", 4, 0, true, ""},
    {"back to 1", "undo 4 undo 2", 2, 4, true, "undo failed"},  // stops at the failure
    {"heal 2", "", 2, 4, true, ""},
    {"redo", "redo 4", 4, 0, true, ""},
    {"gap", "", 4, 0, true, ""},
    {"do 8", "do 8", 8, 0, true, ""},
    {"back to gap", "undo 8", 4, 8, true, ""},
    {"redo", "redo 8", 8, 0, true, ""},
    {"depth 2", "~1 ~2", 8, 0, true, ""},  // trims at once, oldest first
    {"undo", "undo 8", 4, 8, true, ""},
    {"undo", "undo 4", 0, 4, true, ""},
    {"depth 1", "", 0, 4, true, ""},
    {"redo", "redo 4", 4, 8, true, ""},  // redo ignores the depth until the next trim
    {"redo", "redo 8", 8, 0, true, ""},
    {"do 9", "do 9 ~4 ~8", 9, 0, true, ""},
    {"clean", "", 9, 0, false, ""},
    {"depth 0", "~9", 0, 0, true, ""},
    {"do 10", "do 10 ~10", 0, 0, true, ""},
    {"depth 20", "", 0, 0, true, ""},
    {"do 11", "do 11", 11, 0, true, ""},
    {"do 12", "do 12", 12, 0, true, ""},
    {"clean", "", 12, 0, false, ""},
    {"do 13 once", "do 13 ~12 ~11", 0, 0, true, ""},  // cuts the history, latest first
    {"do 14", "do 14", 14, 0, true, ""},
    {"undo", "undo 14", 0, 14, true, ""},  // the saved level is lost for good
    {"clear undo", "", 0, 14, true, ""},
    {"clear redo", "~14", 0, 0, true, ""},
    {"clean", "", 0, 0, false, ""},
    {"do 15 once", "do 15", 0, 0, false, ""},  // saved on an empty stack: reads as clean
    {"do 16", "do 16", 16, 0, true, ""},
    {"do 17", "do 17", 17, 0, true, ""},
    {"undo", "undo 17", 16, 17, true, ""},
};

int topOf(std::string const &description) {
    return description.empty() ? 0 : std::stoi(description.substr(sizeof("command")));
}

}  // namespace

TEST(UndoRedoCommandTarget, FollowsASessionOfEveryKindOfStep) {
    initialize_vort_util();
    std::vector<std::string> log;
    std::map<int, TestCommand *> commands;
    ChangeLevel gap;
    size_t sessionEnd = 0;
    {
        UndoRedoCommandTarget target;
        for (const Step &step : kSession) {
            SCOPED_TRACE(step.action);
            std::istringstream words(step.action);
            std::string verb, how;
            int id = 0;
            words >> verb;
            const size_t logged = log.size();
            ErrorHolder holder;
            if (verb == "do") {
                words >> id >> how;
                commands[id] = new TestCommand(log, id, how != "once", how != "final");
                commands[id]->outcome = how == "fails" ? Outcome::Fail : Outcome::Succeed;
                target.processCommand(commands[id], holder);
            } else if (verb == "again" && words >> id) {
                target.processCommand(commands[id], holder);
            } else if (verb == "undo" || verb == "stale") {
                if (verb == "stale") {
                    holder.setError(
                        VORT::SimpleErrorDescription(VORT::CodeLocation("x", 1), "earlier"));
                }
                target.undo(holder);
            } else if (verb == "redo") {
                target.redo(holder);
            } else if ((verb == "fail" || verb == "heal") && words >> id) {
                commands[id]->outcome = verb == "fail" ? Outcome::Fail : Outcome::Succeed;
            } else if (verb == "back") {
                words >> how;
                if (std::string(step.action) == "back to gap") {
                    target.undoToChangeLevel(gap, holder);
                } else if (words >> id) {
                    const ChangeLevel level = id ? commands[id]->getChangeLevel() : ChangeLevel();
                    target.undoToChangeLevel(how == "to" ? level.value() : level.value() - 1,
                                             holder);
                }
            } else if (verb == "gap") {
                gap = ChangeLevel::next();
            } else if (verb == "depth" && words >> id) {
                target.setMaxUndoDepth(id);
                EXPECT_EQ(target.getMaxUndoDepth(), id);
            } else if (verb == "clean") {
                target.markClean();
            } else if (verb == "clear" && words >> how) {
                how == "undo" ? target.clearUndoStack() : target.clearRedoStack();
            } else {
                FAIL() << "unknown step";
            }
            std::string done;
            for (size_t i = logged; i < log.size(); ++i) {
                done += (done.empty() ? "" : " ") + log[i];
            }
            EXPECT_EQ(done, step.log);
            EXPECT_EQ(topOf(target.undoShortDescription()), step.undoTop);
            EXPECT_EQ(topOf(target.redoShortDescription()), step.redoTop);
            EXPECT_EQ(target.undoLongDescription(), target.undoShortDescription());
            EXPECT_EQ(target.redoLongDescription(), target.redoShortDescription());
            EXPECT_EQ(target.canUndo(), step.undoTop != 0);
            EXPECT_EQ(target.canRedo(), step.redoTop != 0);
            EXPECT_EQ(target.isDirty(), step.dirty);
            EXPECT_EQ(holder.what(), step.error);
        }
        sessionEnd = log.size();
    }
    // The target deleted its redo stack and then its undo stack; the caller still owns the
    // commands it never took or let go of.
    EXPECT_EQ(std::vector<std::string>(log.begin() + long(sessionEnd), log.end()),
              (std::vector<std::string>{"~17", "~16"}));
    for (const auto &entry : commands) {
        if (std::count(log.begin(), log.end(), "~" + std::to_string(entry.first)) == 0) {
            delete entry.second;
        }
    }
    EXPECT_EQ(log.size(), sessionEnd + 6);  // 5, 6, 13 and 15
}

TEST(UndoRedoCommandTarget, KeepsTwentyCommandsThatItsCopiesShare) {
    std::vector<std::string> log;
    {
        UndoRedoCommandTarget target;
        EXPECT_EQ(target.getMaxUndoDepth(), 20);
        EXPECT_EQ(target.getFirstSavedChangeLevel(), ChangeLevel());
        ErrorHolder holder;
        for (int id = 1; id <= 21; ++id) {
            target.processCommand(new TestCommand(log, id), holder);
        }
        EXPECT_EQ(std::count(log.begin(), log.end(), "~1"), 1);
        EXPECT_EQ(log.size(), 22u);
        UndoRedoCommandTarget copy(target);
        copy.undo(holder);  // the shared command changes, but the original's stack keeps it
        EXPECT_EQ(copy.getMaxUndoDepth(), 20);
        EXPECT_EQ(target.undoShortDescription(), "command 21");
        EXPECT_TRUE(copy.canRedo() && !target.canRedo());
        copy = UndoRedoCommandTarget();  // drops the pointers without deleting them
        EXPECT_EQ(log.size(), 23u);
    }
    EXPECT_EQ(log.size(), 43u);  // each of the 21 deleted once
}
