// What of the life cycle outlives a close.
#pragma once

// The deferred-action thread was created, and is not created again even when vurn_close has joined
// it; under gModuleMutex.
extern bool gDeferredThreadCreated;
