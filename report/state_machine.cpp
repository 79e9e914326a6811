// The state machine's table. An event without a row for the current state changes nothing.
#include "report/state_machine.h"

#include <iterator>

enum { REPORTS_OF_A_REQUEST = 5, LOG_STRING_WINDOW_S = 10 };

static constexpr const char* EVENT_NAMES[] = {
    "none",
    "exception",
    "logString",
    "fieldTestData",
    "turnedOffFieldTesting",
    "startDiagnosticSnapshot",
};
static constexpr const char* STATE_NAMES[] = {
    "idle",
    "waitForFTDSnapshotOnly",
    "waitForFTDExceptionOnly",
    "waitForFTDLogStringOnly",
    "waitForFTDBoth",
};
static_assert(std::size(EVENT_NAMES) == DEFERRED_EVENT_COUNT);
static_assert(std::size(STATE_NAMES) == DEFERRED_STATE_COUNT);

const char* prv_deferred_event_name(int event) {
  return event >= 0 && event < DEFERRED_EVENT_COUNT ? EVENT_NAMES[event] : "?";
}

const char* prv_deferred_state_name(int state) {
  return state >= 0 && state < DEFERRED_STATE_COUNT ? STATE_NAMES[state] : "?";
}

// ---- what a new screen does in each state ----

static bool is_last(const DeferredSituation& now) { return now.count + 1 >= REPORTS_OF_A_REQUEST; }
static bool is_window_over(const DeferredSituation& now) {
  return now.elapsed_s > LOG_STRING_WINDOW_S;
}

// A snapshot is one report, after the fifth screen and after field testing is switched off.
static DeferredPlan screen_for_snapshot(const DeferredSituation& now) {
  if (!is_last(now)) return {{ACTION_COUNT_UP}, STATE_WAIT_FOR_FTD_SNAPSHOT_ONLY};
  return {{ACTION_COUNT_UP, ACTION_FT_OFF, ACTION_OUTPUT}, STATE_IDLE};
}

// An exception is reported five times, with each screen.
static DeferredPlan screen_for_exception(const DeferredSituation& now) {
  if (!is_last(now)) {
    return {{ACTION_OUTPUT, ACTION_LOG_DONE, ACTION_COUNT_UP}, STATE_WAIT_FOR_FTD_EXCEPTION_ONLY};
  }
  return {{ACTION_OUTPUT, ACTION_LOG_DONE, ACTION_COUNT_UP, ACTION_FT_OFF}, STATE_IDLE};
}

// vurn_get_log_string renders the log string itself.
static DeferredPlan screen_for_log_string(const DeferredSituation& now) {
  if (!is_window_over(now)) return {{}, STATE_WAIT_FOR_FTD_LOG_STRING_ONLY};
  return {{ACTION_FT_OFF}, STATE_IDLE};
}

static DeferredPlan screen_for_both(const DeferredSituation& now) {
  if (is_last(now) && is_window_over(now)) {
    return {{ACTION_OUTPUT, ACTION_COUNT_UP, ACTION_FT_OFF}, STATE_IDLE};
  }
  DeferredState next = STATE_WAIT_FOR_FTD_BOTH;
  if (is_last(now)) next = STATE_WAIT_FOR_FTD_LOG_STRING_ONLY;
  if (is_window_over(now)) next = STATE_WAIT_FOR_FTD_EXCEPTION_ONLY;
  return {{ACTION_OUTPUT, ACTION_COUNT_UP}, next};
}

// ---- the table ----

namespace {  // test programs define another Row
struct Row {
  DeferredState state;
  DeferredEvent event;
  DeferredPlan plan;
  DeferredPlan (*decide)(const DeferredSituation&) = nullptr;  // instead of plan
};
}  // namespace

// clang-format off
static constexpr Row ROWS[] = {
    {STATE_IDLE, DEFERRED_EXCEPTION,
     {{ACTION_COUNT_0, ACTION_FT_ON, ACTION_NO_SNAPSHOT}, STATE_WAIT_FOR_FTD_EXCEPTION_ONLY}},
    {STATE_IDLE, DEFERRED_LOG_STRING,
     {{ACTION_NOTE_TIME, ACTION_FT_ON, ACTION_NO_SNAPSHOT}, STATE_WAIT_FOR_FTD_LOG_STRING_ONLY}},
    {STATE_IDLE, DEFERRED_START_DIAGNOSTIC_SNAPSHOT,
     {{ACTION_COUNT_0, ACTION_FT_ON, ACTION_SNAPSHOT}, STATE_WAIT_FOR_FTD_SNAPSHOT_ONLY}},

    {STATE_WAIT_FOR_FTD_SNAPSHOT_ONLY, DEFERRED_EXCEPTION,
     {{ACTION_NO_SNAPSHOT, ACTION_COUNT_0}, STATE_WAIT_FOR_FTD_EXCEPTION_ONLY}},
    {STATE_WAIT_FOR_FTD_SNAPSHOT_ONLY, DEFERRED_LOG_STRING,  // abandons the snapshot
     {{ACTION_NOTE_TIME, ACTION_NO_SNAPSHOT}, STATE_WAIT_FOR_FTD_LOG_STRING_ONLY}},
    {STATE_WAIT_FOR_FTD_SNAPSHOT_ONLY, DEFERRED_FIELD_TEST_DATA, {}, screen_for_snapshot},
    {STATE_WAIT_FOR_FTD_SNAPSHOT_ONLY, DEFERRED_TURNED_OFF_FIELD_TESTING, {{}, STATE_IDLE}},
    {STATE_WAIT_FOR_FTD_SNAPSHOT_ONLY, DEFERRED_START_DIAGNOSTIC_SNAPSHOT,
     {{ACTION_COUNT_0}, STATE_WAIT_FOR_FTD_SNAPSHOT_ONLY}},

    {STATE_WAIT_FOR_FTD_EXCEPTION_ONLY, DEFERRED_EXCEPTION,
     {{ACTION_NO_SNAPSHOT}, STATE_WAIT_FOR_FTD_EXCEPTION_ONLY}},
    {STATE_WAIT_FOR_FTD_EXCEPTION_ONLY, DEFERRED_LOG_STRING,
     {{ACTION_NOTE_TIME, ACTION_NO_SNAPSHOT}, STATE_WAIT_FOR_FTD_BOTH}},
    {STATE_WAIT_FOR_FTD_EXCEPTION_ONLY, DEFERRED_FIELD_TEST_DATA, {}, screen_for_exception},
    {STATE_WAIT_FOR_FTD_EXCEPTION_ONLY, DEFERRED_TURNED_OFF_FIELD_TESTING, {{}, STATE_IDLE}},

    {STATE_WAIT_FOR_FTD_LOG_STRING_ONLY, DEFERRED_EXCEPTION,
     {{ACTION_NO_SNAPSHOT, ACTION_COUNT_0}, STATE_WAIT_FOR_FTD_BOTH}},
    {STATE_WAIT_FOR_FTD_LOG_STRING_ONLY, DEFERRED_LOG_STRING,
     {{ACTION_NOTE_TIME, ACTION_NO_SNAPSHOT}, STATE_WAIT_FOR_FTD_LOG_STRING_ONLY}},
    {STATE_WAIT_FOR_FTD_LOG_STRING_ONLY, DEFERRED_FIELD_TEST_DATA, {}, screen_for_log_string},
    {STATE_WAIT_FOR_FTD_LOG_STRING_ONLY, DEFERRED_TURNED_OFF_FIELD_TESTING, {{}, STATE_IDLE}},

    {STATE_WAIT_FOR_FTD_BOTH, DEFERRED_EXCEPTION,
     {{ACTION_NO_SNAPSHOT}, STATE_WAIT_FOR_FTD_BOTH}},
    {STATE_WAIT_FOR_FTD_BOTH, DEFERRED_LOG_STRING,
     {{ACTION_NOTE_TIME, ACTION_NO_SNAPSHOT}, STATE_WAIT_FOR_FTD_BOTH}},
    {STATE_WAIT_FOR_FTD_BOTH, DEFERRED_FIELD_TEST_DATA, {}, screen_for_both},
    {STATE_WAIT_FOR_FTD_BOTH, DEFERRED_TURNED_OFF_FIELD_TESTING, {{}, STATE_IDLE}},
};
// clang-format on

DeferredPlan prv_deferred_plan(DeferredState state, DeferredEvent event,
                               const DeferredSituation& situation) {
  for (const Row& row : ROWS) {
    if (row.state != state || row.event != event) continue;
    return row.decide != nullptr ? row.decide(situation) : row.plan;
  }
  return {{}, state};
}
