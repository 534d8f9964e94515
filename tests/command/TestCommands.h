// Test commands for the command module: each one records its handler calls and its deletion
// in a shared ledger, and can be told to fail (or throw) at any step.
#ifndef VORT_TESTS_COMMAND_TESTCOMMANDS_H
#define VORT_TESTS_COMMAND_TESTCOMMANDS_H

#include <vort/command/Command.h>
#include <vort/err/ErrorHolder.h>

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace vort_test {

// What happened to a family of commands: the handler calls in order ("do 1", "undo 2", ...)
// and how often each command was deleted.
struct CommandLedger {
    std::vector<std::string> calls;
    std::map<int, int> deletions;
    int constructed = 0;

    int deletionsOf(int id) const {
        auto found = deletions.find(id);
        return found == deletions.end() ? 0 : found->second;
    }
    int deleted() const {
        int total = 0;
        for (auto const &entry : deletions) {
            total += entry.second;
        }
        return total;
    }
    // Every command of the family was deleted, none more than once.
    bool eachDeletedOnce() const {
        if (static_cast<int>(deletions.size()) != constructed) {
            return false;
        }
        for (auto const &entry : deletions) {
            if (entry.second != 1) {
                return false;
            }
        }
        return true;
    }
};

enum class Outcome { Succeed, Fail, Throw };

class TestCommand : public VORT::Command {
public:
    TestCommand(CommandLedger &ledger, int id, bool undoable = true, bool redoable = true)
        : m_ledger(ledger), m_id(id), m_undoable(undoable), m_redoable(redoable) {
        ++m_ledger.constructed;
    }
    ~TestCommand() override { ++m_ledger.deletions[m_id]; }

    bool canUndo() override { return m_undoable; }
    bool canRedo() override { return m_redoable; }
    std::string shortDescription() const override { return "command " + std::to_string(m_id); }

    int id() const { return m_id; }

    // The outcome of the next calls of each handler, until changed.
    Outcome doOutcome = Outcome::Succeed;
    Outcome undoOutcome = Outcome::Succeed;
    Outcome redoOutcome = Outcome::Succeed;

    // What the last handler saw of its own command while it ran.
    VORT::Command::State seenState = VORT::Command::NotDone;
    VORT::ChangeLevel seenLevel;

protected:
    void handleDo(VORT::ErrorHolder &holder) override { run("do", doOutcome, holder); }
    void handleUndo(VORT::ErrorHolder &holder) override { run("undo", undoOutcome, holder); }
    void handleRedo(VORT::ErrorHolder &holder) override { run("redo", redoOutcome, holder); }

private:
    void run(char const *step, Outcome outcome, VORT::ErrorHolder &holder) {
        m_ledger.calls.push_back(std::string(step) + " " + std::to_string(m_id));
        seenState = getState();
        seenLevel = getChangeLevel();
        if (outcome == Outcome::Fail) {
            holder.setError(VORT::SimpleErrorDescription(VORT::CodeLocation("test", 1),
                                                         std::string(step) + " failed"));
        } else if (outcome == Outcome::Throw) {
            throw std::runtime_error(std::string(step) + " threw");
        }
    }

    CommandLedger &m_ledger;
    int m_id;
    bool m_undoable;
    bool m_redoable;
};

}  // namespace vort_test

#endif  // VORT_TESTS_COMMAND_TESTCOMMANDS_H
