#include <vort/bones/Library.h>
#include <vort/command/Command.h>
#include <vort/err/ErrorHolder.h>
#include <vort/err/ZQFErrorDescription.h>

namespace VORT {
namespace {

// The description replaces whatever the holder held; no handler runs, nothing else changes.
// Each operation names its own line, so that a report tells which request was refused.
void reportBadState(ErrorHolder &holder, unsigned int line) {
    holder.setError(
        ZQFErrorDescription(CodeLocation(".\\command\\Command", line), VT_BadCommandState));
}

}  // namespace

Command::Command() : m_changeLevel(), m_state(NotDone) {}

Command::Command(Command const &other)
    : m_changeLevel(other.m_changeLevel), m_state(other.m_state) {}

Command &Command::operator=(Command const &other) {
    m_changeLevel = other.m_changeLevel;
    m_state = other.m_state;
    return *this;
}

Command::~Command() = default;

Command::State Command::getState() const {
    return m_state;
}

bool Command::canUndo() {
    return false;
}

bool Command::canRedo() {
    return false;
}

std::string Command::longDescription() const {
    return shortDescription();
}

void Command::handleUndo(ErrorHolder &) {}

void Command::handleRedo(ErrorHolder &) {}

void Command::doIt(ErrorHolder &holder) {
    if (getState() != NotDone) {
        reportBadState(holder, 60);
        return;
    }
    // The level is drawn before the work is tried: a failed attempt consumes it, and a retry
    // draws another, so the level always dates the latest attempt.
    m_changeLevel = ChangeLevel::next();
    handleDo(holder);
    if (holder.hasError()) {
        return;
    }
    m_state = Done;
}

void Command::undo(ErrorHolder &holder) {
    if (getState() != Done) {
        reportBadState(holder, 78);
        return;
    }
    handleUndo(holder);
    if (holder.hasError()) {
        return;
    }
    m_state = Undone;
}

void Command::redo(ErrorHolder &holder) {
    if (getState() != Undone) {
        reportBadState(holder, 95);
        return;
    }
    handleRedo(holder);
    if (holder.hasError()) {
        return;
    }
    m_state = Done;
}

}  // namespace VORT
