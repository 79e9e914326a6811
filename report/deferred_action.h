// The deferred-action thread: it takes events from a slot and carries out the state machine's
// actions.
#pragma once

#include <time.h>

#include "report/state_machine.h"

// Posts an event to the slot. There is no queue: a new event replaces one that the thread has not
// yet taken, except that nothing replaces "turned off field testing". May be called with
// gModuleMutex held, and by the listener.
void prv_deferred_action_event(int event);

// Removes "turned off field testing" from the slot, because it has been switched on since. Under
// gModuleMutex.
void prv_discard_switch_off();

// Starts the thread. 0, or pthread_create's error. Under gModuleMutex, once.
int prv_start_deferred_action_thread();

// Asks the thread to end, and whether it has been asked. It finishes its current action, but no
// longer switches field testing on.
void prv_stop_deferred_action_thread();
bool prv_is_deferred_action_thread_stopped();

// Waits until the thread has ended. Without gModuleMutex, for which the thread may be waiting.
void prv_join_deferred_action_thread();

// For unloading: stops and joins the thread, but waits no longer than until the wall clock reaches
// end.
void prv_stop_deferred_action_thread_until(const timespec& end);
