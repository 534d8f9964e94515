// Test commands for the command module: each one records its handler calls and its deletion in
// a shared log, and can be told to fail (or throw) at any step.
#ifndef VORT_TESTS_COMMAND_TESTCOMMANDS_H
#define VORT_TESTS_COMMAND_TESTCOMMANDS_H

#include <vort/command/Command.h>
#include <vort/err/ErrorHolder.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace vort_test {

enum class Outcome { Succeed, Fail, Throw };

class TestCommand : public VORT::Command {
public:
    // `log` gets "do 1", "undo 1", "redo 1" for the handler calls and "~1" for the deletion.
    TestCommand(std::vector<std::string> &log, int id, bool undoable = true, bool redoable = true)
        : m_log(log), m_id(id), m_undoable(undoable), m_redoable(redoable) {}
    ~TestCommand() override { m_log.push_back("~" + std::to_string(m_id)); }

    bool canUndo() override { return m_undoable; }
    bool canRedo() override { return m_redoable; }
    std::string shortDescription() const override { return "command " + std::to_string(m_id); }

    // The outcome of the next calls of every handler, until changed.
    Outcome outcome = Outcome::Succeed;
    // What the last handler saw of its own command while it ran.
    VORT::Command::State seenState = VORT::Command::NotDone;
    VORT::ChangeLevel seenLevel;

protected:
    void handleDo(VORT::ErrorHolder &holder) override { run("do", holder); }
    void handleUndo(VORT::ErrorHolder &holder) override { run("undo", holder); }
    void handleRedo(VORT::ErrorHolder &holder) override { run("redo", holder); }

private:
    void run(std::string const &step, VORT::ErrorHolder &holder) {
        m_log.push_back(step + " " + std::to_string(m_id));
        seenState = getState();
        seenLevel = getChangeLevel();
        if (outcome == Outcome::Fail) {
            holder.setError(
                VORT::SimpleErrorDescription(VORT::CodeLocation("test", 1), step + " failed"));
        } else if (outcome == Outcome::Throw) {
            throw std::runtime_error(step + " threw");
        }
    }

    std::vector<std::string> &m_log;
    int m_id;
    bool m_undoable;
    bool m_redoable;
};

}  // namespace vort_test

#endif  // VORT_TESTS_COMMAND_TESTCOMMANDS_H
