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

}  // namespace

TEST(Command, FollowsTheLifeTableForEveryStateOperationAndOutcome) {
    enum Op { DoIt, Undo, Redo };
    struct Row {
        Command::State from;
        Op op;
        Outcome handler;
        bool earlierError;  // the holder comes in with an error already
        Command::State to;
        const char *log;  // the handler call, or "" if the handler wasn't called
        const char *error;
    };
    const char bad[] = "Command not in an appropriate state for request.";
    const Row rows[] = {
        {Command::NotDone, DoIt, Outcome::Succeed, false, Command::Done, "do 1", ""},
        {Command::NotDone, DoIt, Outcome::Fail, false, Command::NotDone, "do 1", "do failed"},
        {Command::NotDone, DoIt, Outcome::Throw, false, Command::NotDone, "do 1", "threw"},
        {Command::NotDone, DoIt, Outcome::Succeed, true, Command::NotDone, "do 1", "earlier"},
        {Command::Done, Undo, Outcome::Succeed, false, Command::Undone, "undo 1", ""},
        {Command::Done, Undo, Outcome::Fail, false, Command::Done, "undo 1", "undo failed"},
        {Command::Done, Undo, Outcome::Throw, false, Command::Done, "undo 1", "threw"},
        {Command::Done, Undo, Outcome::Succeed, true, Command::Done, "undo 1", "earlier"},
        {Command::Undone, Redo, Outcome::Succeed, false, Command::Done, "redo 1", ""},
        {Command::Undone, Redo, Outcome::Fail, false, Command::Undone, "redo 1", "redo failed"},
        {Command::Undone, Redo, Outcome::Throw, false, Command::Undone, "redo 1", "threw"},
        {Command::NotDone, Undo, Outcome::Succeed, false, Command::NotDone, "", bad},
        {Command::NotDone, Redo, Outcome::Succeed, true, Command::NotDone, "", bad},
        {Command::Done, DoIt, Outcome::Succeed, false, Command::Done, "", bad},
        {Command::Done, Redo, Outcome::Succeed, false, Command::Done, "", bad},
        {Command::Undone, DoIt, Outcome::Succeed, false, Command::Undone, "", bad},
        {Command::Undone, Undo, Outcome::Succeed, false, Command::Undone, "", bad},
    };
    initialize_vort_util();
    int index = 0;
    for (const Row &row : rows) {
        SCOPED_TRACE("row " + std::to_string(index++));
        std::vector<std::string> log;
        TestCommand command(log, 1);
        ErrorHolder setUp;
        if (row.from != Command::NotDone) {
            command.doIt(setUp);
        }
        if (row.from == Command::Undone) {
            command.undo(setUp);
        }
        ASSERT_EQ(command.getState(), row.from);
        log.clear();
        command.outcome = row.handler;
        const ChangeLevel levelBefore = command.getChangeLevel();
        const ChangeLevel seriesBefore = ChangeLevel::next();
        ErrorHolder holder;
        if (row.earlierError) {
            holder.setError(VORT::SimpleErrorDescription(VORT::CodeLocation("x", 1), "earlier"));
        }
        try {
            row.op == DoIt   ? command.doIt(holder)
            : row.op == Undo ? command.undo(holder)
                             : command.redo(holder);
            EXPECT_EQ(holder.what(), row.error);
        } catch (std::runtime_error const &) {
            EXPECT_STREQ(row.error, "threw");
        }
        EXPECT_EQ(command.getState(), row.to);
        EXPECT_EQ(log.empty() ? "" : log[0], row.log);
        if (!log.empty()) {  // the handler sees the state as it was
            EXPECT_EQ(command.seenState, row.from);
        }
        if (row.error == bad) {
            const auto *zqf = dynamic_cast<VORT::ZQFErrorDescription *>(holder.description());
            ASSERT_NE(zqf, nullptr);
            EXPECT_EQ(zqf->getMessageCode(), 0x5A0001UL);
            EXPECT_EQ(zqf->where().file(), ".\\command\\Command");
        }
        // Only an attempted doIt draws a level, before its handler runs, whatever the outcome.
        if (row.op == DoIt && !log.empty()) {
            EXPECT_EQ(command.getChangeLevel().value(), seriesBefore.value() + 1);
            EXPECT_EQ(command.seenLevel, command.getChangeLevel());
        } else {
            EXPECT_EQ(command.getChangeLevel(), levelBefore);
        }
    }
}

TEST(Command, DefaultsMakeAnOrdinaryCommandThatCopiesItsState) {
    BareCommand command;
    EXPECT_EQ(command.getChangeLevel(), ChangeLevel(ChangeLevel::INVALID));
    EXPECT_FALSE(command.canUndo() || command.canRedo());
    EXPECT_EQ(command.longDescription(), "bare");
    ErrorHolder holder;
    command.doIt(holder);
    command.undo(holder);  // the default undo and redo handlers do nothing and succeed
    command.redo(holder);
    EXPECT_FALSE(holder.hasError());
    EXPECT_EQ(command.done, 1);
    BareCommand copy(command);
    BareCommand assigned;
    assigned = command;
    for (const BareCommand *c : {&copy, &assigned}) {
        EXPECT_EQ(c->getState(), Command::Done);
        EXPECT_EQ(c->getChangeLevel(), command.getChangeLevel());
    }

    // A command that always claims to be done: doIt is refused, undo is let through.
    class AlwaysDone : public BareCommand {
    public:
        State getState() const override { return Done; }
    };
    initialize_vort_util();
    AlwaysDone always;
    always.doIt(holder);
    EXPECT_EQ(always.done, 0);
    EXPECT_TRUE(holder.hasError());
    ErrorHolder second;
    always.undo(second);
    always.undo(second);
    EXPECT_FALSE(second.hasError());
    EXPECT_EQ(always.Command::getState(), Command::Undone);
}
