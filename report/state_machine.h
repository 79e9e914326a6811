// Decides when field testing is on and when a report is written: a state machine over the events
// that the host and the listener post. The caller keeps the state; no lock is needed.
#pragma once

#include <stdint.h>

enum DeferredEvent : uint8_t {
  DEFERRED_NONE,  // the slot is empty
  DEFERRED_EXCEPTION,
  DEFERRED_LOG_STRING,
  DEFERRED_FIELD_TEST_DATA,
  DEFERRED_TURNED_OFF_FIELD_TESTING,
  DEFERRED_START_DIAGNOSTIC_SNAPSHOT,
  DEFERRED_EVENT_COUNT,
};

enum DeferredState : uint8_t {
  STATE_IDLE,                        // field testing off
  STATE_WAIT_FOR_FTD_SNAPSHOT_ONLY,  // a snapshot is being collected
  STATE_WAIT_FOR_FTD_EXCEPTION_ONLY,
  STATE_WAIT_FOR_FTD_LOG_STRING_ONLY,  // fresh data for the next log string
  STATE_WAIT_FOR_FTD_BOTH,             // exception and log string
  DEFERRED_STATE_COUNT,
};

enum DeferredAction : uint8_t {
  ACTION_NONE,  // ends the list
  ACTION_COUNT_0,
  ACTION_COUNT_UP,
  ACTION_FT_ON,
  ACTION_FT_OFF,  // posts "turned off"
  ACTION_OUTPUT,  // the report to syslog
  ACTION_LOG_DONE,
  ACTION_SNAPSHOT,     // the next report is a snapshot
  ACTION_NO_SNAPSHOT,  // the next report is an exception's
  ACTION_NOTE_TIME,    // records the time of the log string
};

// The reaction to an event: actions in order, then the next state.
struct DeferredPlan {
  DeferredAction actions[5];
  DeferredState next;
};

// Input of the conditional rows.
struct DeferredSituation {
  int32_t count;      // screens since the request
  int32_t elapsed_s;  // since the last log string
};

DeferredPlan prv_deferred_plan(DeferredState state, DeferredEvent event,
                               const DeferredSituation& situation);

// Names in log lines; "?" for a value out of range.
const char* prv_deferred_event_name(int event);
const char* prv_deferred_state_name(int state);
