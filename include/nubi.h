/* The platform's event functions, which the host process provides.
 *
 * The module links to these three names weakly. In a host without them it still loads:
 * vurn_report_event then ignores its event, returns 0, and logs one error line. The texts belong to
 * the event. */
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
