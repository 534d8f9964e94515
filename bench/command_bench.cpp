// The undo and redo stack beside Qt's QUndoStack, in the same binary.
//
// Both sides run the same trivial edit (a counter goes up on do and redo, down on undo), so
// the rows measure the stacks: allocation and deletion of the commands, the level draw, the
// list traffic and, on Qt's side, the signals that QUndoStack emits on every index change.
// Each row is run for 1,000 and 100,000 commands; items per second should stay flat as N grows.
// UndoRedo/Depth20 walks at most 20 commands whatever N is, so it is fitted as constant.
//
//   Push/Depth20      push N commands with the default depth of 20 (QUndoStack: undo limit 20)
//   Push/KeepAll      push N commands with a depth that keeps them all (QUndoStack: no limit)
//   UndoRedo/Depth20  undo everything the depth-20 stack kept, then redo it all
//   UndoRedo/KeepAll  undo all N commands, then redo them all
//
// A Push iteration builds the stack, pushes and destroys it, which deletes what it kept.
#include <vort/command/Command.h>
#include <vort/command/CommandTarget.h>
#include <vort/err/ErrorHolder.h>

#include <QUndoCommand>
#include <QUndoStack>

#include <benchmark/benchmark.h>

#include <climits>
#include <cstdint>
#include <string>

namespace {

struct Document {
    long value = 0;
};

class VortIncrement final : public VORT::Command {
public:
    explicit VortIncrement(Document &document) : m_document(document) {}
    bool canUndo() override { return true; }
    bool canRedo() override { return true; }
    std::string shortDescription() const override { return std::string(); }

protected:
    void handleDo(VORT::ErrorHolder &) override { ++m_document.value; }
    void handleUndo(VORT::ErrorHolder &) override { --m_document.value; }
    void handleRedo(VORT::ErrorHolder &) override { ++m_document.value; }

private:
    Document &m_document;
};

class QtIncrement final : public QUndoCommand {
public:
    explicit QtIncrement(Document &document) : m_document(document) {}
    void redo() override { ++m_document.value; }
    void undo() override { --m_document.value; }

private:
    Document &m_document;
};

constexpr int kDepth20 = 20;

void setDepth(VORT::UndoRedoCommandTarget &target, int depth) {
    target.setMaxUndoDepth(depth == 0 ? INT_MAX : depth);
}

void setDepth(QUndoStack &stack, int depth) {
    stack.setUndoLimit(depth);
}  // 0: no limit

void push(VORT::UndoRedoCommandTarget &target, Document &document, int n) {
    VORT::ErrorHolder holder;
    for (int i = 0; i < n; ++i) {
        target.processCommand(new VortIncrement(document), holder);
    }
}

void push(QUndoStack &stack, Document &document, int n) {
    for (int i = 0; i < n; ++i) {
        stack.push(new QtIncrement(document));
    }
}

// Returns the number of steps taken.
int undoRedoAll(VORT::UndoRedoCommandTarget &target) {
    VORT::ErrorHolder holder;
    int steps = 0;
    for (; target.canUndo(); ++steps) {
        target.undo(holder);
    }
    for (; target.canRedo(); ++steps) {
        target.redo(holder);
    }
    return steps;
}

int undoRedoAll(QUndoStack &stack) {
    int steps = 0;
    for (; stack.canUndo(); ++steps) {
        stack.undo();
    }
    for (; stack.canRedo(); ++steps) {
        stack.redo();
    }
    return steps;
}

template <typename Stack, int Depth>
void BM_Push(benchmark::State &state) {
    const int n = static_cast<int>(state.range(0));
    Document document;
    for (auto _ : state) {
        Stack stack;
        setDepth(stack, Depth);
        push(stack, document, n);
        benchmark::DoNotOptimize(document.value);
    }
    state.SetItemsProcessed(state.iterations() * n);
    state.SetComplexityN(n);
}

template <typename Stack, int Depth>
void BM_UndoRedo(benchmark::State &state) {
    const int n = static_cast<int>(state.range(0));
    Document document;
    Stack stack;
    setDepth(stack, Depth);
    push(stack, document, n);
    std::int64_t steps = 0;
    for (auto _ : state) {
        steps += undoRedoAll(stack);
        benchmark::DoNotOptimize(document.value);
    }
    state.SetItemsProcessed(steps);
    state.SetComplexityN(n);
}

using Vort = VORT::UndoRedoCommandTarget;

}  // namespace

#define COMMAND_BENCHMARK(function, stack, depth, name, complexity) \
    BENCHMARK_TEMPLATE(function, stack, depth)                      \
        ->Name(name)                                                \
        ->Arg(1000)                                                 \
        ->Arg(100000)                                               \
        ->Complexity(complexity)                                    \
        ->Unit(benchmark::kMicrosecond)

COMMAND_BENCHMARK(BM_Push, Vort, kDepth20, "Push/Depth20/Vort", benchmark::oN);
COMMAND_BENCHMARK(BM_Push, QUndoStack, kDepth20, "Push/Depth20/QUndoStack", benchmark::oN);
COMMAND_BENCHMARK(BM_Push, Vort, 0, "Push/KeepAll/Vort", benchmark::oN);
COMMAND_BENCHMARK(BM_Push, QUndoStack, 0, "Push/KeepAll/QUndoStack", benchmark::oN);
COMMAND_BENCHMARK(BM_UndoRedo, Vort, kDepth20, "UndoRedo/Depth20/Vort", benchmark::o1);
COMMAND_BENCHMARK(BM_UndoRedo, QUndoStack, kDepth20, "UndoRedo/Depth20/QUndoStack", benchmark::o1);
COMMAND_BENCHMARK(BM_UndoRedo, Vort, 0, "UndoRedo/KeepAll/Vort", benchmark::oN);
COMMAND_BENCHMARK(BM_UndoRedo, QUndoStack, 0, "UndoRedo/KeepAll/QUndoStack", benchmark::oN);
