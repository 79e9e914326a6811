// The deferred-action thread: it takes events from a slot and does what the state machine says.
#pragma once

#include "report/state_machine.h"

// Puts an event into the slot. There is no queue: a newer event replaces one that the thread has
// not taken, except that nothing replaces "turned off field testing". May be called with the
// module's lock held, and from the listener.
void prv_deferred_action_event(int event);

// Starts the thread. 0, or the error of its creation. Under gModuleMutex, once.
int prv_start_deferred_action_thread();

// Ends it and waits until it has: without gModuleMutex, which it may want.
void prv_stop_deferred_action_thread();
