// `VORT::Command`: one reversible edit, with a three-state life.
//
// The library defines no concrete command. An application derives from `Command` and supplies
// at least `shortDescription` and `handleDo`. A command that should live on an undo stack also
// answers true from `canUndo` and supplies `handleUndo`; one that should go back to the redo
// stack after an undo answers true from `canRedo` and supplies `handleRedo`. Both defaults are
// false, so an ordinary command is not undoable.
//
// Life: `NotDone` --doIt--> `Done` --undo--> `Undone` --redo--> `Done` ... Only the non-virtual
// `doIt`, `undo` and `redo` change the state and call the handlers. `doIt` draws a fresh
// `ChangeLevel` before it tries the work, so a failed attempt consumes a level too; `undo` and
// `redo` keep the level that the last `doIt` drew.
//
// Failure: reported only through the `ErrorHolder` passed in. A handler fails by setting the
// holder; a call in the wrong state sets it to `VT_BadCommandState` ("Command not in an
// appropriate state for request.") without calling a handler. The holder is tested, never
// cleared: one that already carries an error makes a successful handler look failed.
// Exceptions out of a handler pass through with the state as before the call.
//
// Thread safety: none. A command belongs to the thread that owns its command target.
//
// Ownership: a command is owned by whoever made it until an `UndoRedoCommandTarget` takes it
// (see CommandTarget.h).
#ifndef VORT_COMMAND_COMMAND_H
#define VORT_COMMAND_COMMAND_H

#include <vort/command/ChangeLevel.h>
#include <vort/vort_export.h>

#include <cstdint>
#include <string>

namespace VORT {

class ErrorHolder;

class VORT_EXPORT Command {
public:
    enum State : std::int32_t {
        NotDone = 0,  // constructed, or every `doIt` so far has failed
        Done = 1,     // `doIt` or `redo` succeeded
        Undone = 2,   // `undo` succeeded
    };

    Command();
    // A copy has the same state and level: a copy of a done command is a done command.
    Command(Command const &other);
    Command &operator=(Command const &other);

    // The virtual operations are declared in the order of their table slots, which is part of
    // the binary interface: do not reorder them.
    virtual ~Command();
    // What `doIt`, `undo` and `redo` check; a subclass that overrides it decides for them.
    virtual State getState() const;
    // False by default: the command is not kept on an undo stack.
    virtual bool canUndo();
    // False by default: an undone command does not go to the redo stack.
    virtual bool canRedo();
    virtual std::string shortDescription() const = 0;
    // `shortDescription()` unless overridden.
    virtual std::string longDescription() const;

protected:
    // The work. Report failure by setting the holder; the state then stays as it was.
    virtual void handleDo(ErrorHolder &holder) = 0;
    // Do nothing by default.
    virtual void handleUndo(ErrorHolder &holder);
    virtual void handleRedo(ErrorHolder &holder);

public:
    // The level of the last attempt at `doIt`; `ChangeLevel::INVALID` before the first.
    ChangeLevel getChangeLevel() const { return m_changeLevel; }

    // From `NotDone`: draws a level, calls `handleDo`, and becomes `Done` if the holder then
    // carries no error.
    void doIt(ErrorHolder &holder);
    // From `Done`: calls `handleUndo` and becomes `Undone` if the holder carries no error.
    void undo(ErrorHolder &holder);
    // From `Undone`: calls `handleRedo` and becomes `Done` if the holder carries no error.
    void redo(ErrorHolder &holder);

private:
    ChangeLevel m_changeLevel;
    State m_state;
};

}  // namespace VORT

#endif  // VORT_COMMAND_COMMAND_H
