// State that a close does not reset.
#pragma once

// The deferred-action thread has been created, which happens once per process, even if vurn_close
// has joined it. Under gModuleMutex.
extern bool gDeferredThreadCreated;
