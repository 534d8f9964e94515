#include "command/TestCommands.h"
#include <vort/bones/Library.h>
#include <vort/command/Command.h>
#include <vort/err/ErrorHolder.h>
#include <vort/err/ZQFErrorDescription.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using VORT::ChangeLevel;
using VORT::Command;
using VORT::ErrorHolder;
using vort_test::CommandLedger;
using vort_test::Outcome;
using vort_test::TestCommand;

namespace {

// The least a concrete command must supply.
class BareCommand : public Command {
public:
    std::string shortDescription() const override { return "bare"; }
    int done = 0;

protected:
    void handleDo(ErrorHolder &) override { ++done; }
};

void expectBadState(ErrorHolder const &holder) {
    ASSERT_TRUE(holder.hasError());
    auto const *description = dynamic_cast<VORT::ZQFErrorDescription *>(holder.description());
    ASSERT_NE(description, nullptr);
    EXPECT_EQ(description->getMessageCode(), 0x5A0001UL);
    EXPECT_EQ(holder.what(), "Command not in an appropriate state for request.");
    EXPECT_EQ(holder.id(), "Nexlark::GenericError");
    EXPECT_EQ(description->where().file(), ".\\command\\Command");
}

// Brings a fresh command into `state` by successful steps.
void bringTo(TestCommand &command, Command::State state) {
    ErrorHolder holder;
    if (state != Command::NotDone) {
        command.doIt(holder);
    }
    if (state == Command::Undone) {
        command.undo(holder);
    }
    ASSERT_FALSE(holder.hasError());
    ASSERT_EQ(command.getState(), state);
}

}  // namespace

TEST(Command, DefaultsMakeAnOrdinaryCommandThatCannotBeUndone) {
    BareCommand command;
    EXPECT_EQ(command.getState(), Command::NotDone);
    EXPECT_EQ(command.getChangeLevel(), ChangeLevel(ChangeLevel::INVALID));
    EXPECT_FALSE(command.canUndo());
    EXPECT_FALSE(command.canRedo());
    EXPECT_EQ(command.longDescription(), "bare");

    // The default undo and redo handlers do nothing and succeed.
    ErrorHolder holder;
    command.doIt(holder);
    command.undo(holder);
    EXPECT_EQ(command.getState(), Command::Undone);
    command.redo(holder);
    EXPECT_FALSE(holder.hasError());
    EXPECT_EQ(command.getState(), Command::Done);
    EXPECT_EQ(command.done, 1);
}

TEST(Command, DoItDrawsTheLevelBeforeTheHandlerAndSetsTheStateAfter) {
    CommandLedger ledger;
    TestCommand command(ledger, 1);
    ErrorHolder holder;

    ChangeLevel const before = ChangeLevel::next();
    command.doIt(holder);
    ASSERT_FALSE(holder.hasError());
    EXPECT_EQ(command.getChangeLevel().value(), before.value() + 1);
    // The handler already saw its fresh level, and still the old state.
    EXPECT_EQ(command.seenLevel, command.getChangeLevel());
    EXPECT_EQ(command.seenState, Command::NotDone);
    EXPECT_EQ(command.getState(), Command::Done);

    command.undo(holder);
    EXPECT_EQ(command.seenState, Command::Done);
    command.redo(holder);
    EXPECT_EQ(command.seenState, Command::Undone);
    EXPECT_EQ(command.getState(), Command::Done);
}

TEST(Command, FollowsTheLifeTableForEveryStateOperationAndOutcome) {
    enum Op { DoIt, Undo, Redo };
    struct Row {
        Command::State from;
        Op op;
        Outcome handler;
        Command::State to;
        bool handlerCalled;
        bool badState;
    };
    Row const rows[] = {
        {Command::NotDone, DoIt, Outcome::Succeed, Command::Done, true, false},
        {Command::NotDone, DoIt, Outcome::Fail, Command::NotDone, true, false},
        {Command::Done, Undo, Outcome::Succeed, Command::Undone, true, false},
        {Command::Done, Undo, Outcome::Fail, Command::Done, true, false},
        {Command::Undone, Redo, Outcome::Succeed, Command::Done, true, false},
        {Command::Undone, Redo, Outcome::Fail, Command::Undone, true, false},
        {Command::NotDone, Undo, Outcome::Succeed, Command::NotDone, false, true},
        {Command::NotDone, Redo, Outcome::Succeed, Command::NotDone, false, true},
        {Command::Done, DoIt, Outcome::Succeed, Command::Done, false, true},
        {Command::Done, Redo, Outcome::Succeed, Command::Done, false, true},
        {Command::Undone, DoIt, Outcome::Succeed, Command::Undone, false, true},
        {Command::Undone, Undo, Outcome::Succeed, Command::Undone, false, true},
    };
    char const *const opNames[] = {"doIt", "undo", "redo"};

    initialize_vort_util();
    int rowIndex = 0;
    for (Row const &row : rows) {
        SCOPED_TRACE("row " + std::to_string(rowIndex++) + ": " + opNames[row.op]);
        CommandLedger ledger;
        TestCommand command(ledger, 1);
        bringTo(command, row.from);
        command.doOutcome = command.undoOutcome = command.redoOutcome = row.handler;
        ledger.calls.clear();
        ChangeLevel const levelBefore = command.getChangeLevel();
        ChangeLevel const seriesBefore = ChangeLevel::next();

        ErrorHolder holder;
        switch (row.op) {
            case DoIt:
                command.doIt(holder);
                break;
            case Undo:
                command.undo(holder);
                break;
            case Redo:
                command.redo(holder);
                break;
        }

        EXPECT_EQ(command.getState(), row.to);
        EXPECT_EQ(ledger.calls.size(), row.handlerCalled ? 1U : 0U);
        EXPECT_EQ(holder.hasError(), row.handler == Outcome::Fail || row.badState);
        if (row.badState) {
            expectBadState(holder);
        }
        // Only an attempted doIt draws a level, whether or not it succeeds.
        if (row.op == DoIt && row.handlerCalled) {
            EXPECT_EQ(command.getChangeLevel().value(), seriesBefore.value() + 1);
        } else {
            EXPECT_EQ(command.getChangeLevel(), levelBefore);
        }
    }
}

TEST(Command, FailedDoItKeepsItsLevelAndARetryDrawsAnother) {
    CommandLedger ledger;
    TestCommand command(ledger, 1);
    command.doOutcome = Outcome::Fail;

    ChangeLevel const before = ChangeLevel::next();
    ErrorHolder holder;
    command.doIt(holder);
    EXPECT_EQ(holder.what(), "do failed");
    EXPECT_EQ(command.getState(), Command::NotDone);
    EXPECT_EQ(command.getChangeLevel().value(), before.value() + 1);

    command.doOutcome = Outcome::Succeed;
    ErrorHolder retry;
    command.doIt(retry);
    EXPECT_FALSE(retry.hasError());
    EXPECT_EQ(command.getState(), Command::Done);
    EXPECT_EQ(command.getChangeLevel().value(), before.value() + 2);

    // Undo and redo cycles keep the level of the successful doIt.
    for (int i = 0; i < 3; ++i) {
        command.undo(retry);
        command.redo(retry);
    }
    EXPECT_FALSE(retry.hasError());
    EXPECT_EQ(command.getChangeLevel().value(), before.value() + 2);
    EXPECT_EQ(ledger.calls.size(), 8U);
}

TEST(Command, BadStateReplacesAnEarlierErrorAndSpeaksTheSelectedLanguage) {
    initialize_vort_util();
    CommandLedger ledger;
    TestCommand command(ledger, 1);

    ErrorHolder holder;
    holder.setError(VORT::SimpleErrorDescription(VORT::CodeLocation("earlier", 1), "earlier"));
    command.undo(holder);
    expectBadState(holder);
    EXPECT_TRUE(ledger.calls.empty());

    // The text comes from the catalogue in the language selected when it is first read.
    hslSetLanguage("ja");
    ErrorHolder japanese;
    command.redo(japanese);
    std::string const text = japanese.what();
    hslSetLanguage("en");
    EXPECT_EQ(text, VORT::japaneseMessageTable().textTables[0][0]);
    EXPECT_NE(text, "Command not in an appropriate state for request.");
}

TEST(Command, AHolderThatAlreadyHasAnErrorMakesSuccessLookLikeFailure) {
    CommandLedger ledger;
    TestCommand command(ledger, 1);
    ErrorHolder holder;
    holder.setError(VORT::SimpleErrorDescription(VORT::CodeLocation("earlier", 1), "earlier"));

    command.doIt(holder);
    // The handler ran and drew a level, yet the command counts as not done, and the holder
    // was not cleared.
    EXPECT_EQ(ledger.calls, std::vector<std::string>{"do 1"});
    EXPECT_NE(command.getChangeLevel(), ChangeLevel());
    EXPECT_EQ(command.getState(), Command::NotDone);
    EXPECT_EQ(holder.what(), "earlier");
}

TEST(Command, ExceptionsFromHandlersPassThroughWithTheStateUnchanged) {
    CommandLedger ledger;
    TestCommand command(ledger, 1);
    ErrorHolder holder;

    command.doOutcome = Outcome::Throw;
    EXPECT_THROW(command.doIt(holder), std::runtime_error);
    EXPECT_EQ(command.getState(), Command::NotDone);
    // The level was drawn before the handler ran.
    EXPECT_NE(command.getChangeLevel(), ChangeLevel());

    command.doOutcome = Outcome::Succeed;
    command.doIt(holder);
    ChangeLevel const level = command.getChangeLevel();
    command.undoOutcome = Outcome::Throw;
    EXPECT_THROW(command.undo(holder), std::runtime_error);
    EXPECT_EQ(command.getState(), Command::Done);

    command.undoOutcome = Outcome::Succeed;
    command.undo(holder);
    command.redoOutcome = Outcome::Throw;
    EXPECT_THROW(command.redo(holder), std::runtime_error);
    EXPECT_EQ(command.getState(), Command::Undone);
    EXPECT_EQ(command.getChangeLevel(), level);
    EXPECT_FALSE(holder.hasError());
}

TEST(Command, AnOverriddenGetStateDecidesWhatTheOperationsSee) {
    // A command that always claims to be done: doIt is refused, undo is let through.
    class AlwaysDone : public BareCommand {
    public:
        State getState() const override { return Done; }
        int undone = 0;

    protected:
        void handleUndo(ErrorHolder &) override { ++undone; }
    };

    initialize_vort_util();
    AlwaysDone command;
    ErrorHolder holder;
    command.doIt(holder);
    expectBadState(holder);
    EXPECT_EQ(command.done, 0);
    EXPECT_EQ(command.getChangeLevel(), ChangeLevel());

    ErrorHolder second;
    command.undo(second);
    command.undo(second);
    EXPECT_FALSE(second.hasError());
    EXPECT_EQ(command.undone, 2);
    EXPECT_EQ(command.Command::getState(), Command::Undone);
}

TEST(Command, ACopyOfADoneCommandIsDone) {
    BareCommand original;
    ErrorHolder holder;
    original.doIt(holder);

    BareCommand copy(original);
    EXPECT_EQ(copy.getState(), Command::Done);
    EXPECT_EQ(copy.getChangeLevel(), original.getChangeLevel());

    BareCommand assigned;
    assigned = original;
    EXPECT_EQ(assigned.getState(), Command::Done);
    EXPECT_EQ(assigned.getChangeLevel(), original.getChangeLevel());
    assigned.doIt(holder);
    EXPECT_TRUE(holder.hasError());
}
