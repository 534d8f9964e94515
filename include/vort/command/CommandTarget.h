// `VORT::CommandTarget`, whatever receives commands, and `VORT::UndoRedoCommandTarget`, the
// target that keeps the undo and redo history of one document.
//
// `UndoRedoCommandTarget::processCommand` does a command. An undoable command (`canUndo()`
// true) goes on the undo stack, which keeps at most `getMaxUndoDepth()` commands (20 by
// default) and deletes the oldest beyond that. A command that can't be undone cuts the
// history: the whole undo stack is deleted. Either way a new command deletes the redo stack.
// `undo` moves the latest command to the redo stack if it `canRedo()`, else it deletes the
// redo stack. `markClean` and `isDirty` compare the current change level (the level of the
// latest command on the undo stack) with the one saved at `markClean`.
//
// Ownership: the target owns every command on its stacks and deletes them, through their
// virtual destructor, when a stack is cleared or trimmed and when the target is destroyed. A
// command that leaves the stacks any other way is owned by no one here, and whoever still holds
// its pointer must delete it:
//   - a command whose `doIt` fails in `processCommand`, or whose `canUndo()` is false, stays
//     with the caller;
//   - a command undone whose `canRedo()` is false goes on neither stack and is not deleted.
// With a depth of 0 a command just done is deleted at once, though `processCommand` took it.
// Copies of a target share the same command pointers (the stacks are implicitly shared lists):
// a target that holds commands is not meant to be copied, since both copies would delete them.
//
// Failure: a failing `doIt`, `undo` or `redo` leaves both stacks as they were, with the failed
// command still on top. `undoToChangeLevel` below the oldest saved level reports
// `VT_DoNotHaveUndoInformationForChangeLevel` ("We do not have undo information far enough
// back."). `undo` and `redo` on an empty stack are no errors. As with `Command`, a holder that
// already carries an error on entry makes every step look failed although its handler ran: the
// edit is made or taken back while states and stacks stay as they were, so the next call
// repeats it. Pass a clear holder.
//
// Thread safety: none; a target is used by one thread at a time.
#ifndef VORT_COMMAND_COMMANDTARGET_H
#define VORT_COMMAND_COMMANDTARGET_H

#include <vort/bones/VList.h>
#include <vort/command/ChangeLevel.h>
#include <vort/command/Command.h>
#include <vort/vort_export.h>

#include <string>

namespace VORT {

class ErrorHolder;

class VORT_EXPORT CommandTarget {
public:
    CommandTarget() = default;
    CommandTarget(CommandTarget const &) = default;
    CommandTarget &operator=(CommandTarget const &) = default;
    virtual ~CommandTarget();

    virtual void processCommand(Command *command, ErrorHolder &holder) = 0;
};

class VORT_EXPORT UndoRedoCommandTarget : public CommandTarget {
public:
    // Depth 20, clean level 0, both stacks empty.
    UndoRedoCommandTarget();
    // Copy the depth and the clean level and share both stacks: the two targets then hold the
    // same commands. Assignment does not delete the commands that this target held.
    UndoRedoCommandTarget(UndoRedoCommandTarget const &) = default;
    UndoRedoCommandTarget &operator=(UndoRedoCommandTarget const &) = default;
    // Deletes the redo stack, then the undo stack.
    ~UndoRedoCommandTarget() override;

    // Does `command`. If `doIt` fails the stacks are untouched and the caller keeps the
    // command. Otherwise an undoable command is taken onto the undo stack (then trimmed to the
    // depth), a command that can't be undone deletes the undo stack and stays with the caller,
    // and in both cases the redo stack is deleted.
    void processCommand(Command *command, ErrorHolder &holder) override;

    // Undoes the latest command, if any. On success it moves to the redo stack if it
    // `canRedo()`; otherwise the redo stack is deleted and the command is dropped undeleted.
    void undo(ErrorHolder &holder);
    // Redoes the latest undone command, if any, and moves it to the undo stack. Neither
    // `canUndo()` nor the depth is checked: a depth lowered meanwhile applies at the next
    // `processCommand` or `setMaxUndoDepth`.
    void redo(ErrorHolder &holder);
    // Undoes commands until the current level is not above `level`, so the command with
    // exactly that level stays done. A level below `getFirstSavedChangeLevel()` is refused with
    // `VT_DoNotHaveUndoInformationForChangeLevel` and nothing is undone: the oldest command can
    // therefore never be undone this way, only by `undo`. Stops at the first failing undo
    // without redoing what it has undone.
    void undoToChangeLevel(ChangeLevel level, ErrorHolder &holder);

    bool canUndo() const { return !m_undoStack.isEmpty(); }
    bool canRedo() const { return !m_redoStack.isEmpty(); }

    // The level of the latest command on the undo stack; `INVALID` if it is empty.
    ChangeLevel getCurrentChangeLevel() const;
    // The level of the oldest command on the undo stack; `INVALID` if it is empty.
    ChangeLevel getFirstSavedChangeLevel() const;

    // Descriptions of the command that `undo` or `redo` would act on; empty if none.
    std::string undoShortDescription() const;
    std::string undoLongDescription() const;
    std::string redoShortDescription() const;
    std::string redoLongDescription() const;

    // Saves the current level as the clean one. Only the level is kept: once a history cut
    // or a trim removes that level's command, `isDirty` stays true until the next
    // `markClean`, and a clean level of 0 reads as clean whenever the undo stack is empty,
    // even after a command that can't be undone has changed the document.
    void markClean();
    bool isDirty() const { return getCurrentChangeLevel() != m_cleanLevel; }

    int getMaxUndoDepth() const { return m_maxUndoDepth; }
    // Stores the depth and trims to it at once. 0 keeps nothing; a negative depth must not be
    // used.
    void setMaxUndoDepth(int depth);

    // Delete every command of that stack, latest first.
    void clearUndoStack();
    void clearRedoStack();

private:
    void trimUndoStackToMaxLength();

    int m_maxUndoDepth;
    ChangeLevel m_cleanLevel;
    VList<Command *> m_undoStack;  // oldest first, latest last
    VList<Command *> m_redoStack;  // the most recently undone last
};

}  // namespace VORT

#endif  // VORT_COMMAND_COMMANDTARGET_H
