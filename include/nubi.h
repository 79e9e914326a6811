/* The platform's event calls, which the module uses when the host process provides them.
 *
 * The module binds these three names weakly: in a host without them it still loads, and an event
 * handed to vurn_report_event is ignored with result 0; one error line in the log tells of it. The
 * texts belong to the event. */
#ifndef NUBI_H
#define NUBI_H

#ifdef __cplusplus
extern "C" {
#endif

/* An event object of the platform's IPC library; opaque to the module. */
typedef struct NubiEvent NubiEvent;

/* Name of the event, for example "wanRing"; may be null. */
const char* NubiGetEventName(const NubiEvent* event) __attribute__((weak));

/* Publisher of the event, for example "com.orvane.hal"; may be null. */
const char* NubiGetEventSource(const NubiEvent* event) __attribute__((weak));

/* Reads the event's integer parameter into *value. 0 on success, an error number otherwise. */
int NubiGetIntParam(const NubiEvent* event, int* value) __attribute__((weak));

#ifdef __cplusplus
}
#endif

#endif
