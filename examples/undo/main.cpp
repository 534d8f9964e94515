// A text document with undo and redo: the shape of a tool built on VortUtil's commands.
//
// Two commands act on the document. `InsertText` can be undone and redone, so the document's
// `UndoRedoCommandTarget` keeps it on its history. `TrimSpaces` throws away what it removes and
// so can't be undone; doing it cuts the history, as a tool's "flatten" or "crop" would.
//
// The rule of ownership to copy from here: once `processCommand` succeeds with a command whose
// `canUndo()` is true, the target owns it (and deletes it when it is trimmed or cleared). In
// every other case the caller still owns the command. `submit` below puts that into one place.
#include <vort/bones/Library.h>
#include <vort/command/Command.h>
#include <vort/command/CommandTarget.h>
#include <vort/err/ErrorHolder.h>

#include <cstdio>
#include <memory>
#include <string>

namespace {

// The document: some text and the history of its edits.
struct Document {
    std::string text;
    VORT::UndoRedoCommandTarget history;
};

class InsertText : public VORT::Command {
public:
    InsertText(Document &document, std::size_t position, std::string text)
        : m_document(document), m_position(position), m_text(std::move(text)) {}

    bool canUndo() override { return true; }
    bool canRedo() override { return true; }
    std::string shortDescription() const override { return "Insert \"" + m_text + "\""; }
    std::string longDescription() const override {
        return "Insert \"" + m_text + "\" at " + std::to_string(m_position);
    }

protected:
    void handleDo(VORT::ErrorHolder &holder) override {
        if (m_position > m_document.text.size()) {
            // Failure goes into the holder; the command then stays not done and isn't taken.
            holder.setError(VORT::SimpleErrorDescription(
                VORT::CodeLocation("examples/undo/main", __LINE__), "Insert past the end"));
            return;
        }
        m_document.text.insert(m_position, m_text);
    }
    void handleUndo(VORT::ErrorHolder &) override {
        m_document.text.erase(m_position, m_text.size());
    }
    void handleRedo(VORT::ErrorHolder &holder) override { handleDo(holder); }

private:
    Document &m_document;
    std::size_t m_position;
    std::string m_text;
};

// Removes runs of spaces. It keeps nothing to put them back with, so it answers false from
// `canUndo` (the default) and the history before it is deleted.
class TrimSpaces : public VORT::Command {
public:
    explicit TrimSpaces(Document &document) : m_document(document) {}

    std::string shortDescription() const override { return "Trim spaces"; }

protected:
    void handleDo(VORT::ErrorHolder &) override {
        std::string trimmed;
        for (char c : m_document.text) {
            if (c != ' ' || trimmed.empty() || trimmed.back() != ' ') {
                trimmed += c;
            }
        }
        m_document.text = trimmed;
    }

private:
    Document &m_document;
};

// Does `command` on the document and settles who owns it afterwards.
bool submit(Document &document, std::unique_ptr<VORT::Command> command) {
    VORT::ErrorHolder holder;
    document.history.processCommand(command.get(), holder);
    if (holder.hasError()) {
        std::printf("  refused: %s\n", holder.what().c_str());
        return false;  // not taken: the unique_ptr deletes it
    }
    if (command->canUndo()) {
        command.release();  // the history owns it now
    }
    return true;
}

void show(Document const &document, char const *step) {
    std::printf("%-28s \"%s\"  level %lu%s  undo: %s  redo: %s\n", step, document.text.c_str(),
                document.history.getCurrentChangeLevel().value(),
                document.history.isDirty() ? " (modified)" : "",
                document.history.undoShortDescription().c_str(),
                document.history.redoShortDescription().c_str());
}

int failures = 0;

void check(bool condition, char const *what) {
    if (!condition) {
        std::printf("  FAILED: %s\n", what);
        ++failures;
    }
}

}  // namespace

int main() {
    initialize_vort_util();  // the catalogue of error texts

    Document document;
    submit(document, std::make_unique<InsertText>(document, 0, "Hello"));
    submit(document, std::make_unique<InsertText>(document, 5, "   world"));
    document.history.markClean();  // as if saved
    show(document, "saved:");
    VORT::ChangeLevel const saved = document.history.getCurrentChangeLevel();

    submit(document, std::make_unique<InsertText>(document, 13, "!"));
    show(document, "inserted '!':");
    check(document.history.isDirty(), "modified after an insert");

    check(!submit(document, std::make_unique<InsertText>(document, 99, "?")),
          "an insert past the end is refused");

    VORT::ErrorHolder holder;
    document.history.undo(holder);
    show(document, "undo:");
    check(!document.history.isDirty(), "back at the saved state");

    document.history.redo(holder);
    show(document, "redo:");
    check(document.text == "Hello   world!", "redo restores the text");

    // Return to the saved state in one call; the command at that level stays done.
    document.history.undoToChangeLevel(saved, holder);
    show(document, "undo to the saved level:");
    check(document.text == "Hello   world", "undoToChangeLevel stops at the saved level");

    // Nothing older than the first saved command can be reached this way.
    document.history.undoToChangeLevel(VORT::ChangeLevel(), holder);
    std::printf("  undo to level 0: %s\n", holder.what().c_str());
    check(holder.hasError(), "undo past the oldest command is refused");
    holder.clear();

    // TrimSpaces can't be undone: it cuts the history, and it stays ours (a stack object here).
    TrimSpaces trim(document);
    document.history.processCommand(&trim, holder);
    show(document, "trimmed spaces:");
    check(document.text == "Hello world", "spaces trimmed");
    check(!document.history.canUndo() && !document.history.canRedo(), "history cut");
    check(document.history.isDirty(), "the saved level is gone, so the document stays modified");

    document.history.markClean();
    show(document, "saved:");
    check(!holder.hasError(), "no error left over");

    if (failures != 0) {
        std::printf("undo example: FAILED (%d)\n", failures);
        return 1;
    }
    std::printf("undo example: OK\n");
    return 0;
}
