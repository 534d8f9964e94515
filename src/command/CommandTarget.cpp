#include <vort/bones/Library.h>
#include <vort/command/CommandTarget.h>
#include <vort/err/ErrorHolder.h>
#include <vort/err/ZQFErrorDescription.h>

namespace VORT {
namespace {

constexpr int kDefaultUndoDepth = 20;

}  // namespace

CommandTarget::~CommandTarget() = default;

UndoRedoCommandTarget::UndoRedoCommandTarget()
    : m_maxUndoDepth(kDefaultUndoDepth), m_cleanLevel(), m_undoStack(), m_redoStack() {}

UndoRedoCommandTarget::~UndoRedoCommandTarget() {
    clearRedoStack();
    clearUndoStack();
}

void UndoRedoCommandTarget::processCommand(Command *command, ErrorHolder &holder) {
    command->doIt(holder);
    if (holder.hasError()) {
        return;  // not taken: the caller still owns it
    }
    if (command->canUndo()) {
        m_undoStack.append(command);
        trimUndoStackToMaxLength();
    } else {
        // A command that can't be undone cuts the history here. It stays with the caller.
        clearUndoStack();
    }
    clearRedoStack();
}

void UndoRedoCommandTarget::undo(ErrorHolder &holder) {
    if (m_undoStack.isEmpty()) {
        return;
    }
    Command *command = m_undoStack.constLast();
    command->undo(holder);
    if (holder.hasError()) {
        return;  // stays on top; the next undo tries it again
    }
    m_undoStack.removeLast();
    if (command->canRedo()) {
        m_redoStack.append(command);
    } else {
        // Nothing can be redone past a command that can't be redone. The command itself is
        // dropped without being deleted: it is no longer ours.
        clearRedoStack();
    }
}

void UndoRedoCommandTarget::redo(ErrorHolder &holder) {
    if (m_redoStack.isEmpty()) {
        return;
    }
    Command *command = m_redoStack.constLast();
    command->redo(holder);
    if (holder.hasError()) {
        return;
    }
    m_redoStack.removeLast();
    m_undoStack.append(command);
}

void UndoRedoCommandTarget::undoToChangeLevel(ChangeLevel level, ErrorHolder &holder) {
    if (level < getFirstSavedChangeLevel()) {
        holder.setError(ZQFErrorDescription(CodeLocation(".\\command\\CommandTarget", 130),
                                            VT_DoNotHaveUndoInformationForChangeLevel));
        return;
    }
    // Each successful undo shortens the undo stack, so the loop ends.
    while (getCurrentChangeLevel() > level) {
        undo(holder);
        if (holder.hasError()) {
            return;
        }
    }
}

ChangeLevel UndoRedoCommandTarget::getCurrentChangeLevel() const {
    return m_undoStack.isEmpty() ? ChangeLevel() : m_undoStack.last()->getChangeLevel();
}

ChangeLevel UndoRedoCommandTarget::getFirstSavedChangeLevel() const {
    return m_undoStack.isEmpty() ? ChangeLevel() : m_undoStack.first()->getChangeLevel();
}

std::string UndoRedoCommandTarget::undoShortDescription() const {
    return m_undoStack.isEmpty() ? std::string() : m_undoStack.last()->shortDescription();
}

std::string UndoRedoCommandTarget::undoLongDescription() const {
    return m_undoStack.isEmpty() ? std::string() : m_undoStack.last()->longDescription();
}

std::string UndoRedoCommandTarget::redoShortDescription() const {
    return m_redoStack.isEmpty() ? std::string() : m_redoStack.last()->shortDescription();
}

std::string UndoRedoCommandTarget::redoLongDescription() const {
    return m_redoStack.isEmpty() ? std::string() : m_redoStack.last()->longDescription();
}

void UndoRedoCommandTarget::markClean() {
    m_cleanLevel = getCurrentChangeLevel();
}

void UndoRedoCommandTarget::setMaxUndoDepth(int depth) {
    m_maxUndoDepth = depth;
    trimUndoStackToMaxLength();
}

void UndoRedoCommandTarget::clearUndoStack() {
    while (!m_undoStack.isEmpty()) {
        if (Command *command = m_undoStack.constLast()) {
            delete command;
        }
        m_undoStack.removeLast();
    }
}

void UndoRedoCommandTarget::clearRedoStack() {
    while (!m_redoStack.isEmpty()) {
        if (Command *command = m_redoStack.constLast()) {
            delete command;
        }
        m_redoStack.removeLast();
    }
}

void UndoRedoCommandTarget::trimUndoStackToMaxLength() {
    // Signed on both sides: a depth of 0 empties the stack.
    while (m_undoStack.size() > m_maxUndoDepth) {
        delete m_undoStack.constFirst();
        m_undoStack.removeFirst();
    }
}

}  // namespace VORT
