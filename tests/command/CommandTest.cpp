#include "support/Latch.h"
#include <vort/bones/Library.h>
#include <vort/command/CommandTarget.h>
#include <vort/err/ErrorHolder.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <tuple>

using namespace VORT;

namespace {

const char kBadState[] = "Command not in an appropriate state for request.";
std::string g_log;  // the handler calls ("do 3") and deletions ("~3") of the commands below
int g_failing = 0;  // the command whose handlers fail

struct Logged : Command {
    Logged(int id, std::string how) : id(id), how(std::move(how)) {}
    ~Logged() override { log("~"); }
    bool canUndo() override { return how != "once"; }
    bool canRedo() override { return how != "final"; }
    std::string shortDescription() const override { return std::to_string(id); }
    void handleDo(ErrorHolder &holder) override { run("do ", holder); }
    void handleUndo(ErrorHolder &holder) override { run("undo ", holder); }
    void handleRedo(ErrorHolder &holder) override { run("redo ", holder); }
    void log(std::string const &what) {
        g_log += (g_log.empty() ? "" : " ") + what + std::to_string(id);
    }
    void run(std::string const &step, ErrorHolder &holder) {
        log(step);
        if (id == g_failing) {
            holder.setError(SimpleErrorDescription(CodeLocation("t", 1), step + "failed"));
        }
    }
    int id;
    std::string how;
};

// The actions of a step, run with one holder: "do N" (with "once": can't be undone; "final":
// can't be redone), "stale" (an error in the holder), "undo", "redo", "to N" and "below N" (undo to
// command N's level, or one under it), "depth N" and "clean". Command `fails` fails throughout the
// step. Then the log of the step = the commands on top of the undo|redo stacks, whether the target
// is dirty ! and the error.
using Step = std::tuple<const char *, int, const char *>;
const Step kSession[] = {
    {"undo; redo; to 0", 0, " = |"},
    {"do 1; do 2; do 3; clean", 0, "do 1 do 2 do 3 = 3|"},
    {"undo; do 4", 0, "undo 3 do 4 ~3 = 4| dirty"},     // a new command clears the redo stack
    {"do 5", 5, "do 5 = 4| dirty ! do failed"},         // left with the caller
    {"undo", 4, "undo 4 = 4| dirty ! undo failed"},     // stays on top for a retry
    {"stale; undo", 0, "undo 4 = 4| dirty ! earlier"},  // an earlier error reads as failure
    {"undo", 0, "undo 4 = 2|4 dirty"},
    {"redo", 4, "redo 4 = 2|4 dirty ! redo failed"},
    {"redo; do 6 final; do 7; undo", 0, "redo 4 do 6 do 7 undo 7 = 6|7 dirty"},
    {"undo", 0, "undo 6 ~7 = 4| dirty"},  // 6 can't be redone: it goes nowhere, 7 with it
    {"to 1", 0, "undo 4 undo 2 = 1|2 dirty"},
    {"below 1", 0, " = 1|2 dirty ! We do not have undo information far enough back."},
    {"redo; redo", 0, "redo 2 redo 4 = 4| dirty"},
    {"to 1", 2, "undo 4 undo 2 = 2|4 dirty ! undo failed"},  // stops at the failure
    {"redo; depth 0", 0, "redo 4 ~1 ~2 ~4 = | dirty"},       // trims at once, oldest first
    {"depth 20; do 11; do 12; clean; do 13 once", 0, "do 11 do 12 do 13 ~12 ~11 = | dirty"},
    {"clean; do 15 once", 0, "do 15 = |"},  // saved on an empty stack: clean
    {"do 16; do 17; undo", 0, "do 16 do 17 undo 17 = 16|17 dirty"},
};

}  // namespace

TEST(UndoRedoCommandTarget, FollowsASessionOfEveryKindOfStep) {
    initialize_vort_util();
    std::map<int, Logged *> commands;
    auto target = std::make_unique<UndoRedoCommandTarget>();
    ErrorHolder holder;
    std::string verb, how;
    int id = 0;
    const auto level = [&] { return id ? commands[id]->getChangeLevel().value() : 0UL; };
    const std::map<std::string, std::function<void()>> verbs = {
        {"do", [&] { target->processCommand(commands[id] = new Logged(id, how), holder); }},
        {"stale",
         [&] { holder.setError(SimpleErrorDescription(CodeLocation("x", 1), "earlier")); }},
        {"undo", [&] { target->undo(holder); }},
        {"redo", [&] { target->redo(holder); }},
        {"to", [&] { target->undoToChangeLevel(level(), holder); }},
        {"below", [&] { target->undoToChangeLevel(level() - 1, holder); }},
        {"depth", [&] { target->setMaxUndoDepth(id); }},
        {"clean", [&] { target->markClean(); }}};
    for (auto const &[steps, fails, expected] : kSession) {
        SCOPED_TRACE(steps);
        g_log.clear();
        g_failing = fails;
        holder = ErrorHolder();
        std::istringstream actions(steps);
        for (std::string action; std::getline(actions >> std::ws, action, ';');) {
            how.clear();
            std::istringstream(action) >> verb >> id >> how;
            verbs.at(verb)();
        }
        const std::string error = holder.what();
        EXPECT_EQ(g_log + " = " + target->undoLongDescription() + "|" +
                      target->redoLongDescription() + (target->isDirty() ? " dirty" : "") +
                      (error.empty() ? "" : " ! " + error),
                  expected);
    }
    g_log.clear();
    target.reset();  // deletes its redo stack, then its undo stack; the rest are the caller's
    EXPECT_EQ(g_log, "~17 ~16");
    for (int left : {5, 6, 13, 15}) {
        delete commands[left];
    }
    struct Bare : Command {  // the defaults
        std::string shortDescription() const override { return "bare"; }
        void handleDo(ErrorHolder &) override {}
    } bare;
    EXPECT_FALSE(bare.canUndo() || bare.canRedo() || bare.longDescription() != "bare");
    bare.redo(holder);
    EXPECT_EQ(holder.what(), std::string(kBadState));
}

TEST(ChangeLevelConcurrency, NextHandsOutOneUnbrokenRunAcrossThreads) {
    constexpr int kThreads = 4, kDraws = 5000;
    std::vector<unsigned long> drawn[kThreads];
    vort_test::runTogether(kThreads, [&](int t) {
        for (int i = 0; i < kDraws; ++i) {
            drawn[t].push_back(ChangeLevel::next().value());
        }
    });
    std::set<unsigned long> all;
    for (auto const &own : drawn) {
        all.insert(own.begin(), own.end());
    }
    EXPECT_EQ(all.size(), kThreads * kDraws * 1UL) << "a level handed out twice";
    EXPECT_EQ(*all.rbegin() - *all.begin(), kThreads * kDraws - 1UL) << "a level skipped";
}
