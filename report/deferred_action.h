// The deferred-action thread: it takes events from a slot and does what the state machine says.
#pragma once

#include <time.h>

#include "report/state_machine.h"

// Puts an event into the slot. There is no queue: a newer event replaces one that the thread has
// not taken, except that nothing replaces "turned off field testing". May be called with the
// module's lock held, and from the listener.
void prv_deferred_action_event(int event);

// Takes "turned off field testing" out of the slot: it is on again, and the thread would take it
// for off. Under gModuleMutex.
void prv_discard_switch_off();

// Starts the thread. 0, or the error of its creation. Under gModuleMutex, once.
int prv_start_deferred_action_thread();

// Tells it to end, and whether it has been told. What it is doing it finishes, but from here on it
// switches nothing on.
void prv_stop_deferred_action_thread();
bool prv_is_deferred_action_thread_stopped();

// Waits until it has ended: without gModuleMutex, which it may want.
void prv_join_deferred_action_thread();

// Both, at the end of the library: until the wall clock says end, and no longer.
void prv_stop_deferred_action_thread_until(const timespec& end);
