#include "command/TestCommands.h"
#include <vort/bones/Library.h>
#include <vort/command/CommandTarget.h>
#include <vort/err/ErrorHolder.h>
#include <vort/err/ZQFErrorDescription.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using VORT::ChangeLevel;
using VORT::Command;
using VORT::ErrorHolder;
using VORT::UndoRedoCommandTarget;
using vort_test::CommandLedger;
using vort_test::Outcome;
using vort_test::TestCommand;

namespace {

// Does `count` undoable commands with ids first, first + 1, ... and returns them.
std::vector<TestCommand *> doCommands(UndoRedoCommandTarget &target, CommandLedger &ledger,
                                      int first, int count) {
    std::vector<TestCommand *> done;
    for (int id = first; id < first + count; ++id) {
        auto *command = new TestCommand(ledger, id);
        ErrorHolder holder;
        target.processCommand(command, holder);
        EXPECT_FALSE(holder.hasError());
        done.push_back(command);
    }
    return done;
}

void expectNoUndoInformation(ErrorHolder const &holder) {
    ASSERT_TRUE(holder.hasError());
    auto const *description = dynamic_cast<VORT::ZQFErrorDescription *>(holder.description());
    ASSERT_NE(description, nullptr);
    EXPECT_EQ(description->getMessageCode(), 0x5A0002UL);
    EXPECT_EQ(holder.what(), "We do not have undo information far enough back.");
    EXPECT_EQ(description->where().file(), ".\\command\\CommandTarget");
}

}  // namespace

TEST(UndoRedoCommandTarget, StartsEmptyAndTakesEmptyStacksCalmly) {
    UndoRedoCommandTarget target;
    EXPECT_EQ(target.getMaxUndoDepth(), 20);
    EXPECT_FALSE(target.canUndo());
    EXPECT_FALSE(target.canRedo());
    EXPECT_FALSE(target.isDirty());
    EXPECT_EQ(target.getCurrentChangeLevel(), ChangeLevel());
    EXPECT_EQ(target.getFirstSavedChangeLevel(), ChangeLevel());
    EXPECT_EQ(target.undoShortDescription(), "");
    EXPECT_EQ(target.undoLongDescription(), "");
    EXPECT_EQ(target.redoShortDescription(), "");
    EXPECT_EQ(target.redoLongDescription(), "");

    ErrorHolder holder;
    target.undo(holder);
    target.redo(holder);
    target.undoToChangeLevel(ChangeLevel(), holder);
    target.undoToChangeLevel(ChangeLevel(12345), holder);
    EXPECT_FALSE(holder.hasError());
}

TEST(UndoRedoCommandTarget, MovesCommandsBetweenTheStacksAndNamesTheNextStep) {
    CommandLedger ledger;
    {
        UndoRedoCommandTarget target;
        std::vector<TestCommand *> const commands = doCommands(target, ledger, 1, 3);
        EXPECT_TRUE(target.canUndo());
        EXPECT_FALSE(target.canRedo());
        EXPECT_EQ(target.getCurrentChangeLevel(), commands[2]->getChangeLevel());
        EXPECT_EQ(target.getFirstSavedChangeLevel(), commands[0]->getChangeLevel());
        EXPECT_EQ(target.undoShortDescription(), "command 3");
        EXPECT_EQ(target.undoLongDescription(), "command 3");

        ErrorHolder holder;
        target.undo(holder);
        target.undo(holder);
        EXPECT_EQ(target.getCurrentChangeLevel(), commands[0]->getChangeLevel());
        EXPECT_EQ(target.undoShortDescription(), "command 1");
        EXPECT_EQ(target.redoShortDescription(), "command 2");
        EXPECT_EQ(target.redoLongDescription(), "command 2");
        EXPECT_EQ(commands[1]->getState(), Command::Undone);

        target.redo(holder);
        EXPECT_EQ(target.getCurrentChangeLevel(), commands[1]->getChangeLevel());
        EXPECT_EQ(target.redoShortDescription(), "command 3");
        EXPECT_FALSE(holder.hasError());
        EXPECT_EQ(ledger.calls,
                  (std::vector<std::string>{"do 1", "do 2", "do 3", "undo 3", "undo 2", "redo 2"}));

        // A new command deletes what could have been redone.
        doCommands(target, ledger, 4, 1);
        EXPECT_FALSE(target.canRedo());
        EXPECT_EQ(ledger.deletionsOf(3), 1);
        EXPECT_EQ(ledger.deleted(), 1);
    }
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, FailingDoItLeavesBothStacksAndTheCommandWithTheCaller) {
    CommandLedger ledger;
    {
        UndoRedoCommandTarget target;
        doCommands(target, ledger, 1, 2);
        ErrorHolder holder;
        target.undo(holder);

        TestCommand failing(ledger, 3);
        failing.doOutcome = Outcome::Fail;
        target.processCommand(&failing, holder);
        EXPECT_EQ(holder.what(), "do failed");
        EXPECT_EQ(target.undoShortDescription(), "command 1");
        EXPECT_EQ(target.redoShortDescription(), "command 2");
        EXPECT_EQ(ledger.deleted(), 0);

        // The same holds for a command that was already done: it is refused, not taken.
        initialize_vort_util();
        TestCommand done(ledger, 4);
        ErrorHolder first;
        done.doIt(first);
        ErrorHolder again;
        target.processCommand(&done, again);
        EXPECT_EQ(again.what(), "Command not in an appropriate state for request.");
        EXPECT_TRUE(target.canRedo());
    }
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, ACommandThatCannotBeUndoneCutsTheHistory) {
    CommandLedger ledger;
    TestCommand cut(ledger, 9, /*undoable=*/false);
    {
        UndoRedoCommandTarget target;
        doCommands(target, ledger, 1, 3);
        ErrorHolder holder;
        target.undo(holder);

        target.processCommand(&cut, holder);
        EXPECT_FALSE(holder.hasError());
        EXPECT_EQ(cut.getState(), Command::Done);
        EXPECT_FALSE(target.canUndo());
        EXPECT_FALSE(target.canRedo());
        EXPECT_EQ(target.getCurrentChangeLevel(), ChangeLevel());
        // Both stacks were deleted, latest first; the cutting command was neither kept nor
        // deleted.
        EXPECT_EQ(ledger.deleted(), 3);
        EXPECT_EQ(ledger.deletionsOf(9), 0);
    }
    EXPECT_EQ(ledger.deletionsOf(9), 0);
}

TEST(UndoRedoCommandTarget, TrimsTheOldestCommandsToTheDepth) {
    CommandLedger ledger;
    {
        UndoRedoCommandTarget target;
        std::vector<TestCommand *> const commands = doCommands(target, ledger, 1, 20);
        EXPECT_EQ(ledger.deleted(), 0);
        ChangeLevel const current = target.getCurrentChangeLevel();

        // The 21st deletes the first; the oldest saved level moves to the second command's.
        ChangeLevel const secondLevel = commands[1]->getChangeLevel();
        doCommands(target, ledger, 21, 1);
        EXPECT_EQ(ledger.deletionsOf(1), 1);
        EXPECT_EQ(ledger.deleted(), 1);
        EXPECT_EQ(target.getFirstSavedChangeLevel(), secondLevel);
        EXPECT_GT(target.getCurrentChangeLevel(), current);

        // Lowering the depth trims at once, oldest first, and keeps the current level.
        ChangeLevel const latest = target.getCurrentChangeLevel();
        target.setMaxUndoDepth(3);
        EXPECT_EQ(target.getMaxUndoDepth(), 3);
        EXPECT_EQ(ledger.deleted(), 18);
        EXPECT_EQ(ledger.deletionsOf(18), 1);
        EXPECT_EQ(ledger.deletionsOf(19), 0);
        EXPECT_EQ(target.getFirstSavedChangeLevel(), commands[18]->getChangeLevel());
        EXPECT_EQ(target.getCurrentChangeLevel(), latest);

        ErrorHolder holder;
        int undone = 0;
        while (target.canUndo()) {
            target.undo(holder);
            ++undone;
        }
        EXPECT_EQ(undone, 3);
    }
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, RedoIgnoresTheDepthUntilTheNextTrim) {
    CommandLedger ledger;
    {
        UndoRedoCommandTarget target;
        doCommands(target, ledger, 1, 5);
        ErrorHolder holder;
        for (int i = 0; i < 4; ++i) {
            target.undo(holder);
        }
        // The depth falls below what redo will bring back; nothing is trimmed yet.
        target.setMaxUndoDepth(2);
        for (int i = 0; i < 4; ++i) {
            target.redo(holder);
        }
        EXPECT_FALSE(holder.hasError());
        EXPECT_EQ(ledger.deleted(), 0);
        EXPECT_EQ(target.undoShortDescription(), "command 5");

        // The next command trims to the depth: 1 to 4 go, 5 and 6 stay.
        doCommands(target, ledger, 6, 1);
        EXPECT_EQ(ledger.deleted(), 4);
        EXPECT_EQ(ledger.deletionsOf(5), 0);
        target.undo(holder);
        target.undo(holder);
        EXPECT_FALSE(target.canUndo());
    }
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, ADepthOfZeroDeletesACommandAsSoonAsItIsDone) {
    CommandLedger ledger;
    UndoRedoCommandTarget target;
    doCommands(target, ledger, 1, 2);
    target.setMaxUndoDepth(0);
    EXPECT_EQ(ledger.deleted(), 2);

    auto *command = new TestCommand(ledger, 3);
    ErrorHolder holder;
    target.processCommand(command, holder);
    EXPECT_FALSE(holder.hasError());
    EXPECT_EQ(ledger.calls.back(), "do 3");
    EXPECT_EQ(ledger.deletionsOf(3), 1);
    EXPECT_FALSE(target.canUndo());
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, UndoOfACommandThatCannotBeRedoneDropsItAndTheRedoStack) {
    CommandLedger ledger;
    TestCommand *noRedo = nullptr;
    {
        UndoRedoCommandTarget target;
        doCommands(target, ledger, 1, 2);
        noRedo = new TestCommand(ledger, 3, /*undoable=*/true, /*redoable=*/false);
        ErrorHolder holder;
        target.processCommand(noRedo, holder);
        doCommands(target, ledger, 4, 1);

        target.undo(holder);  // 4 goes to the redo stack
        EXPECT_EQ(target.redoShortDescription(), "command 4");
        target.undo(holder);  // 3 can't be redone: 4 is deleted, 3 goes nowhere
        EXPECT_FALSE(holder.hasError());
        EXPECT_EQ(noRedo->getState(), Command::Undone);
        EXPECT_FALSE(target.canRedo());
        EXPECT_EQ(ledger.deletionsOf(4), 1);
        EXPECT_EQ(ledger.deletionsOf(3), 0);
        EXPECT_EQ(target.undoShortDescription(), "command 2");
    }
    // The target no longer owned it, so it survived the target: whoever kept the pointer
    // deletes it.
    EXPECT_EQ(ledger.deletionsOf(3), 0);
    delete noRedo;
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, FailingUndoAndRedoLeaveTheCommandOnTopForARetry) {
    CommandLedger ledger;
    {
        UndoRedoCommandTarget target;
        std::vector<TestCommand *> const commands = doCommands(target, ledger, 1, 2);
        commands[1]->undoOutcome = Outcome::Fail;

        ErrorHolder holder;
        target.undo(holder);
        EXPECT_EQ(holder.what(), "undo failed");
        EXPECT_EQ(target.undoShortDescription(), "command 2");
        EXPECT_FALSE(target.canRedo());
        EXPECT_EQ(commands[1]->getState(), Command::Done);

        commands[1]->undoOutcome = Outcome::Succeed;
        commands[1]->redoOutcome = Outcome::Fail;
        ErrorHolder retry;
        target.undo(retry);
        EXPECT_FALSE(retry.hasError());
        target.redo(retry);
        EXPECT_EQ(retry.what(), "redo failed");
        EXPECT_EQ(target.redoShortDescription(), "command 2");
        EXPECT_EQ(target.undoShortDescription(), "command 1");

        commands[1]->redoOutcome = Outcome::Succeed;
        ErrorHolder last;
        target.redo(last);
        EXPECT_FALSE(last.hasError());
        EXPECT_EQ(target.undoShortDescription(), "command 2");
        EXPECT_EQ(ledger.calls, (std::vector<std::string>{"do 1", "do 2", "undo 2", "undo 2",
                                                          "redo 2", "redo 2"}));
    }
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, CleanMarkerFollowsUndoRedoAndTrimming) {
    CommandLedger ledger;
    UndoRedoCommandTarget target;
    // On an empty stack the clean level is 0 and the target is clean.
    target.markClean();
    EXPECT_FALSE(target.isDirty());

    doCommands(target, ledger, 1, 2);
    EXPECT_TRUE(target.isDirty());
    target.markClean();
    EXPECT_FALSE(target.isDirty());

    ErrorHolder holder;
    target.undo(holder);
    EXPECT_TRUE(target.isDirty());
    target.redo(holder);
    EXPECT_FALSE(target.isDirty());
    doCommands(target, ledger, 3, 1);
    EXPECT_TRUE(target.isDirty());
    target.undo(holder);
    EXPECT_FALSE(target.isDirty());

    // Trimming the bottom leaves the current level, and so the marker, alone.
    target.setMaxUndoDepth(1);
    EXPECT_EQ(ledger.deletionsOf(1), 1);
    EXPECT_FALSE(target.isDirty());

    // Undoing everything returns to level 0, which is not the saved level.
    target.undo(holder);
    EXPECT_TRUE(target.isDirty());
}

TEST(UndoRedoCommandTarget, AHistoryCutLosesTheSavedLevelForGood) {
    CommandLedger ledger;
    TestCommand cut(ledger, 8, /*undoable=*/false);
    TestCommand secondCut(ledger, 9, /*undoable=*/false);
    UndoRedoCommandTarget target;
    ErrorHolder holder;

    // Saved with commands on the stack: after a cut the saved level is gone, so the target
    // stays dirty through undo, redo and new commands until the next markClean.
    doCommands(target, ledger, 1, 2);
    target.markClean();
    target.processCommand(&cut, holder);
    EXPECT_TRUE(target.isDirty());
    doCommands(target, ledger, 3, 1);
    target.undo(holder);
    EXPECT_TRUE(target.isDirty());
    target.redo(holder);
    EXPECT_TRUE(target.isDirty());
    target.markClean();
    EXPECT_FALSE(target.isDirty());

    // Saved with an empty stack: the clean level is 0, and a cut empties the stack again, so
    // the target reads as clean although the document has changed.
    target.clearUndoStack();
    target.markClean();
    target.processCommand(&secondCut, holder);
    EXPECT_FALSE(holder.hasError());
    EXPECT_FALSE(target.isDirty());
}

TEST(UndoRedoCommandTarget, UndoToChangeLevelReturnsToTheNamedState) {
    initialize_vort_util();
    CommandLedger ledger;
    {
        UndoRedoCommandTarget target;
        std::vector<TestCommand *> const commands = doCommands(target, ledger, 1, 5);
        ChangeLevel const levels[] = {commands[0]->getChangeLevel(), commands[1]->getChangeLevel(),
                                      commands[2]->getChangeLevel(), commands[3]->getChangeLevel(),
                                      commands[4]->getChangeLevel()};
        ErrorHolder holder;

        // At the current level: nothing to do.
        target.undoToChangeLevel(target.getCurrentChangeLevel(), holder);
        EXPECT_FALSE(holder.hasError());
        EXPECT_FALSE(target.canRedo());

        // Just below the 5th command's level: only the 5th is undone.
        target.undoToChangeLevel(levels[4].value() - 1, holder);
        EXPECT_FALSE(holder.hasError());
        EXPECT_EQ(target.getCurrentChangeLevel(), levels[3]);
        EXPECT_EQ(target.redoShortDescription(), "command 5");

        // Exactly a command's level: that command stays done.
        target.undoToChangeLevel(levels[1], holder);
        EXPECT_FALSE(holder.hasError());
        EXPECT_EQ(target.getCurrentChangeLevel(), levels[1]);
        EXPECT_EQ(commands[1]->getState(), Command::Done);
        EXPECT_EQ(commands[2]->getState(), Command::Undone);

        // Below the oldest: refused, and nothing is undone although one undo was possible.
        target.undoToChangeLevel(levels[0].value() - 1, holder);
        expectNoUndoInformation(holder);
        EXPECT_EQ(target.getCurrentChangeLevel(), levels[1]);

        // At the oldest level: all but the oldest are undone; it can only go by undo.
        ErrorHolder clean;
        target.undoToChangeLevel(levels[0], clean);
        EXPECT_FALSE(clean.hasError());
        EXPECT_EQ(target.getCurrentChangeLevel(), levels[0]);
        target.undoToChangeLevel(ChangeLevel(), clean);
        expectNoUndoInformation(clean);
        EXPECT_TRUE(target.canUndo());
        EXPECT_EQ(ledger.deleted(), 0);
    }
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, UndoToChangeLevelSkipsGapsAndStopsAtTheFirstFailure) {
    CommandLedger ledger;
    {
        UndoRedoCommandTarget target;
        std::vector<TestCommand *> commands = doCommands(target, ledger, 1, 2);
        // Levels of other targets come from the same series and leave gaps in this one.
        ChangeLevel const outside = ChangeLevel::next();
        ChangeLevel::next();
        std::vector<TestCommand *> const later = doCommands(target, ledger, 3, 3);
        commands.insert(commands.end(), later.begin(), later.end());

        // A level in the gap undoes everything above it.
        ErrorHolder holder;
        target.undoToChangeLevel(outside, holder);
        EXPECT_FALSE(holder.hasError());
        EXPECT_EQ(target.getCurrentChangeLevel(), commands[1]->getChangeLevel());
        for (int i = 0; i < 3; ++i) {
            target.redo(holder);
        }

        // A failing undo stops the walk; what was undone stays undone.
        commands[3]->undoOutcome = Outcome::Fail;
        target.undoToChangeLevel(commands[1]->getChangeLevel(), holder);
        EXPECT_EQ(holder.what(), "undo failed");
        EXPECT_EQ(commands[4]->getState(), Command::Undone);
        EXPECT_EQ(commands[3]->getState(), Command::Done);
        EXPECT_EQ(target.getCurrentChangeLevel(), commands[3]->getChangeLevel());
        EXPECT_EQ(target.redoShortDescription(), "command 5");
    }
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, ClearingAndDestroyingDeleteEveryCommandOnce) {
    CommandLedger ledger;
    {
        UndoRedoCommandTarget target;
        doCommands(target, ledger, 1, 4);
        ErrorHolder holder;
        target.undo(holder);
        target.undo(holder);

        target.clearRedoStack();
        EXPECT_EQ(ledger.deleted(), 2);
        EXPECT_EQ(ledger.deletionsOf(3), 1);
        EXPECT_EQ(ledger.deletionsOf(4), 1);
        EXPECT_TRUE(target.canUndo());

        target.clearUndoStack();
        EXPECT_EQ(ledger.deleted(), 4);
        EXPECT_FALSE(target.canUndo());

        doCommands(target, ledger, 5, 3);
        target.undo(holder);
    }
    // The destructor deleted the redo stack and then the undo stack.
    EXPECT_EQ(ledger.deleted(), 7);
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, CopiesShareTheCommandsAndAssignmentDeletesNothing) {
    CommandLedger ledger;
    {
        UndoRedoCommandTarget target;
        target.setMaxUndoDepth(7);
        doCommands(target, ledger, 1, 2);
        target.markClean();

        UndoRedoCommandTarget copy(target);
        EXPECT_EQ(copy.getMaxUndoDepth(), 7);
        EXPECT_FALSE(copy.isDirty());
        EXPECT_EQ(copy.getCurrentChangeLevel(), target.getCurrentChangeLevel());

        // Undo in the copy changes the shared command, but the original's stack keeps it.
        ErrorHolder holder;
        copy.undo(holder);
        EXPECT_TRUE(copy.isDirty());
        EXPECT_FALSE(target.isDirty());
        EXPECT_EQ(target.undoShortDescription(), "command 2");

        // Assigning an empty target drops the copy's pointers without deleting them, which is
        // what keeps the commands from being deleted twice here.
        copy = UndoRedoCommandTarget();
        EXPECT_EQ(ledger.deleted(), 0);
        EXPECT_EQ(copy.getMaxUndoDepth(), 20);
        EXPECT_FALSE(copy.canUndo());
        EXPECT_FALSE(copy.canRedo());
    }
    EXPECT_TRUE(ledger.eachDeletedOnce());
}

TEST(UndoRedoCommandTarget, AHolderWithAnEarlierErrorMakesTheSameUndoRunTwice) {
    CommandLedger ledger;
    {
        UndoRedoCommandTarget target;
        std::vector<TestCommand *> const commands = doCommands(target, ledger, 1, 2);
        ErrorHolder holder;
        holder.setError(VORT::SimpleErrorDescription(VORT::CodeLocation("earlier", 1), "earlier"));

        // The handler runs, but the old error reads as its failure: the command stays done and
        // on top of the undo stack, although its edit has been taken back.
        target.undo(holder);
        EXPECT_EQ(commands[1]->getState(), Command::Done);
        EXPECT_EQ(target.undoShortDescription(), "command 2");
        EXPECT_FALSE(target.canRedo());

        // So the next undo takes the same edit back a second time.
        ErrorHolder clean;
        target.undo(clean);
        EXPECT_FALSE(clean.hasError());
        EXPECT_EQ(ledger.calls, (std::vector<std::string>{"do 1", "do 2", "undo 2", "undo 2"}));
        EXPECT_EQ(target.redoShortDescription(), "command 2");
    }
    EXPECT_TRUE(ledger.eachDeletedOnce());
}
