// Every state with every event: the actions in order, and the next state.
#include "report/state_machine.h"

#include <gtest/gtest.h>

#include <string>

namespace {
enum State { IDLE, SNAPSHOT, EXCEPTION_ONLY, LOG_STRING_ONLY, BOTH };
enum Event { NONE, EXCEPTION, LOG_STRING, SCREEN, TURNED_OFF, START_SNAPSHOT };
}  // namespace

// Actions as letters: 0 and + for the count, N and F for field testing on and off, O output, D the
// "done" line, S and s for a snapshot or none, T notes the time.
static std::string letters(const DeferredPlan& plan) {
  static const char LETTERS[] = " 0+NFODSsT";
  std::string text;
  for (DeferredAction action : plan.actions) {
    if (action != ACTION_NONE) text += LETTERS[action];
  }
  return text;
}

namespace {
struct Row {
  State state;
  Event event;
  int count, elapsed;
  const char* actions;
  State next;
};
}  // namespace

static const Row ROWS[] = {
    {IDLE, EXCEPTION, 0, 0, "0Ns", EXCEPTION_ONLY},
    {IDLE, LOG_STRING, 0, 0, "TNs", LOG_STRING_ONLY},
    {IDLE, START_SNAPSHOT, 0, 0, "0NS", SNAPSHOT},
    {IDLE, SCREEN, 9, 99, "", IDLE},
    {IDLE, TURNED_OFF, 0, 0, "", IDLE},
    {SNAPSHOT, EXCEPTION, 0, 0, "s0", EXCEPTION_ONLY},
    {SNAPSHOT, LOG_STRING, 0, 0, "Ts", LOG_STRING_ONLY},
    {SNAPSHOT, SCREEN, 3, 99, "+", SNAPSHOT},
    {SNAPSHOT, SCREEN, 4, 0, "+FO", IDLE},
    {SNAPSHOT, TURNED_OFF, 0, 0, "", IDLE},
    {SNAPSHOT, START_SNAPSHOT, 3, 0, "0", SNAPSHOT},
    {EXCEPTION_ONLY, EXCEPTION, 3, 0, "s", EXCEPTION_ONLY},
    {EXCEPTION_ONLY, LOG_STRING, 3, 0, "Ts", BOTH},
    {EXCEPTION_ONLY, SCREEN, 0, 99, "OD+", EXCEPTION_ONLY},
    {EXCEPTION_ONLY, SCREEN, 3, 0, "OD+", EXCEPTION_ONLY},
    {EXCEPTION_ONLY, SCREEN, 4, 0, "OD+F", IDLE},
    {EXCEPTION_ONLY, TURNED_OFF, 0, 0, "", IDLE},
    {EXCEPTION_ONLY, START_SNAPSHOT, 0, 0, "", EXCEPTION_ONLY},
    {LOG_STRING_ONLY, EXCEPTION, 3, 0, "s0", BOTH},
    {LOG_STRING_ONLY, LOG_STRING, 0, 0, "Ts", LOG_STRING_ONLY},
    {LOG_STRING_ONLY, SCREEN, 9, 10, "", LOG_STRING_ONLY},
    {LOG_STRING_ONLY, SCREEN, 9, -5, "", LOG_STRING_ONLY},
    {LOG_STRING_ONLY, SCREEN, 0, 11, "F", IDLE},
    {LOG_STRING_ONLY, TURNED_OFF, 0, 0, "", IDLE},
    {LOG_STRING_ONLY, START_SNAPSHOT, 0, 0, "", LOG_STRING_ONLY},
    {BOTH, EXCEPTION, 3, 0, "s", BOTH},
    {BOTH, LOG_STRING, 3, 0, "Ts", BOTH},
    {BOTH, SCREEN, 3, 10, "O+", BOTH},
    {BOTH, SCREEN, 4, 10, "O+", LOG_STRING_ONLY},
    {BOTH, SCREEN, 3, 11, "O+", EXCEPTION_ONLY},
    {BOTH, SCREEN, 4, 11, "O+F", IDLE},
    {BOTH, TURNED_OFF, 0, 0, "", IDLE},
    {BOTH, START_SNAPSHOT, 0, 0, "", BOTH},
};

TEST(StateMachine, every_state_with_every_event) {
  bool seen[5][6] = {};
  for (const Row& row : ROWS) {
    auto state = static_cast<DeferredState>(row.state);
    auto event = static_cast<DeferredEvent>(row.event);
    DeferredPlan plan = prv_deferred_plan(state, event, {row.count, row.elapsed});
    SCOPED_TRACE(std::string(prv_deferred_state_name(state)) + ", " +
                 prv_deferred_event_name(event));
    EXPECT_EQ(letters(plan), row.actions);
    EXPECT_EQ(static_cast<State>(plan.next), row.next);
    seen[row.state][row.event] = true;
  }
  for (int state = IDLE; state <= BOTH; ++state) {
    for (int event = EXCEPTION; event <= START_SNAPSHOT; ++event) {
      EXPECT_TRUE(seen[state][event]) << state << " " << event;
    }
    for (int event : {0, 6, 255}) {  // no event, and values that are never posted
      auto same = static_cast<DeferredState>(state);
      DeferredPlan plan = prv_deferred_plan(same, static_cast<DeferredEvent>(event), {9, 99});
      EXPECT_EQ(letters(plan), "");
      EXPECT_EQ(plan.next, same);
    }
  }
}
