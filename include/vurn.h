/* Host interface of the WAN-modem module: open, close, read the modem's state.
 *
 * Every call may come from any thread; the module serialises them. Outputs are written only on
 * success unless a call says otherwise. A text call may clear the host's buffer before it asks the
 * modem. Texts are the modem's own bytes, padded with zeros to their full width. */
#ifndef VURN_H
#define VURN_H

#include <stdint.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Results of all vurn_ calls. */
enum {
  VURN_OK = 0,                    /* success */
  VURN_ERR_NOT_OPEN = 1,          /* the module is not open */
  VURN_ERR_FAILED = 2,            /* modem failure, unusable value, stuck modem or failed open */
  VURN_ERR_REOPENED = 4,          /* vurn_open found the module open; it is closed now */
  VURN_ERR_NULL_ARGUMENT = 11,    /* an output pointer is null */
  VURN_ERR_TIME_NOT_PROVIDED = 13 /* the network has not sent its time */
};

/* Data service mode as vurn_get_data_service_mode reports it. */
enum {
  VURN_DATA_NONE = 0,  /* no data service */
  VURN_DATA_WCDMA = 1, /* WCDMA */
  VURN_DATA_EDGE = 2,  /* GSM with EGPRS */
  VURN_DATA_GPRS = 3   /* GSM without EGPRS */
};

/* Bits of the log mask. A line reaches syslog only while its bit is set. */
enum {
  VURN_LOG_FIELD_INFORMATION = 0x200, /* each field-test screen record */
  VURN_LOG_TRACE = 0x400,             /* entry tracing and "getting" lines */
  VURN_LOG_EVENTS = 0x800,            /* events, callbacks, outcomes of the bars */
  VURN_LOG_ACTION_EVENTS = 0x1000,    /* events posted to the deferred-action thread */
  VURN_LOG_GENERAL = 0x2000,          /* open, close, SIM polling, call test, field testing */
  VURN_LOG_STUCK = 0x8000,            /* stuck detection, time offset, PLMN re-fetch */
  VURN_LOG_INFO = 0x800000,           /* all "I" lines, the report among them */
  VURN_LOG_WARNING = 0x1000000,       /* all "W" lines */
  VURN_LOG_ERROR = 0x2000000          /* all "E" lines */
};

/* Mask of the lines that are written; 0 (nothing) at load. Set it with vurn_set_log_mask. */
extern uint32_t gZOPModuleLogMask;

/* ---- life cycle ---- */

/* Opens the modem on "/dev/tts/USB1" and waits up to 20 s for its SIM.
 * VURN_OK, VURN_ERR_FAILED (no port, no answer, no usable SIM), or VURN_ERR_REOPENED when the
 * module was open: it is then closed, and the host opens again. */
int vurn_open(void);

/* Closes the modem. A non-zero join also ends the deferred-action thread, for good: a later open
 * does not start it again. Always VURN_OK; on a closed module it does nothing. */
int vurn_close(int join);

/* Writes the module's capability flags, always 1, and returns VURN_OK. */
int vurn_get_module_flags(unsigned* flags);

/* Sets gZOPModuleLogMask. */
void vurn_set_log_mask(unsigned mask);

/* Kept for hosts that call it: does nothing and returns VURN_OK. */
int vurn_try_to_use_home_network(void);

/* Kept for hosts that call it: tells whether the module is open (VURN_OK, VURN_ERR_NOT_OPEN). */
int vurn_update_prl(void);

/* ---- state of the modem: VURN_OK, VURN_ERR_NOT_OPEN or VURN_ERR_FAILED unless told ---- */

/* Received signal strength, dBm. */
int vurn_get_rssi(int* rssi);

/* 1 when the modem is roaming, else 0. */
int vurn_get_roaming_status(int* roaming);

/* Realm: the IMEI as 16 bytes. size is the capacity of buf and is at least 20. */
int vurn_get_realm(char* buf, unsigned size);

/* Serial number of the radio: the IMEI again, since hosts tell devices apart by it. At least 20. */
int vurn_get_radio_serial_number(char* buf, unsigned size);

/* First certificate parameter: the ICCID, 20 bytes, not terminated when all are used. At least 20.
 */
int vurn_get_radio_cert_param1(char* buf, unsigned size);

/* Second certificate parameter: the IMSI, as vurn_get_imsi. */
int vurn_get_radio_cert_param2(char* buf, unsigned size);

/* Subscriber's phone number, 36 bytes. size is at least 36. */
int vurn_get_radio_phone_number(char* buf, unsigned size);

/* IMSI as 16 bytes. size is at least 20. */
int vurn_get_imsi(char* buf, unsigned size);

/* Firmware version, 20 bytes, not terminated when all are used. size is at least 20. */
int vurn_get_firmware_version(char* buf, unsigned size);

/* Data service mode, VURN_DATA_NONE to VURN_DATA_GPRS. */
int vurn_get_data_service_mode(int* mode);

/* Network time read in the device's local time zone, and the network's offset from UTC in seconds.
 * VURN_ERR_TIME_NOT_PROVIDED while the network has sent none. */
int vurn_get_module_time(time_t* when, int* offset);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
