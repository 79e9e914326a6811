/* Host interface of the WAN-modem module: open the modem, close it, and read its state.
 *
 * Threads: every call may come from any thread. The module serialises them: a call waits for the
 * call in progress, and for the module's own thread while that switches field testing on, which
 * takes one exchange with the modem. Four calls are not serialised: vurn_get_mcc (see there), and
 * vurn_report_event, vurn_set_log_mask and vurn_get_module_flags, which do not use the modem.
 *
 * Duration: a modem that falls silent costs a call 5 s. The link is then closed, and every call
 * that uses the modem fails at once until the host closes and reopens the module. A slow answer may
 * take 15 s, and writing to a line that accepts no bytes fails after 5 s: one exchange takes at
 * most 20 s, or twice that if the previous exchange was given up. A getter makes one exchange,
 * except vurn_get_data_service_mode (2), vurn_get_bars (10), vurn_originate_call_test (4) and
 * vurn_stop_call_test (2). vurn_open, vurn_get_log_string, vurn_log_message and vurn_enable_logging
 * refresh the whole report (24 with all lists of the SIM). Once it is its turn, vurn_close(0) ends
 * within 0.1 s. vurn_close(1) lets other calls in while it waits for the thread to end. Every call
 * that writes a log line waits as long as syslog() does.
 *
 * Field testing: vurn_open, vurn_get_log_string, vurn_log_message and vurn_enable_logging switch
 * the modem's field testing on for some seconds. A thread of the module then polls the modem for
 * events and screens. A call that meets one of its exchanges waits 0.2 s for it and then closes the
 * link: a modem that needs longer for an answer can't be used while field testing is on.
 *
 * Unloading the library, or exiting, closes the link and ends the module's threads within a second,
 * whatever they are doing.
 *
 * Outputs are written only on success unless a call says otherwise. A call that returns text may
 * clear the host's buffer before it asks the modem. Texts are the modem's bytes, padded with zeros
 * to their full width. */
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
  VURN_ERR_TRUNCATED = 7,         /* the report did not fit; the buffer holds what did */
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

/* vurn_get_bars: no usable service. */
enum { VURN_BARS_NONE = -1 };

/* Call tests. A higher number places a call on the current band. */
enum {
  VURN_TEST_NONE = -1,        /* no test is running */
  VURN_TEST_FACTORY_MODE = 0, /* factory test mode, without a call */
  VURN_TEST_WCDMA_850 = 1,
  VURN_TEST_GSM_1900 = 2
};

/* Bits of the log mask. A line is written to syslog only while its bit is set. */
enum {
  VURN_LOG_FIELD_INFORMATION = 0x200, /* each field-test screen record */
  VURN_LOG_TRACE = 0x400,             /* function entry and exit, "getting" lines */
  VURN_LOG_EVENTS = 0x800,            /* events, callbacks, results of vurn_get_bars */
  VURN_LOG_ACTION_EVENTS = 0x1000,    /* events posted to the deferred-action thread */
  VURN_LOG_GENERAL = 0x2000,          /* open, close, SIM polling, call test, field testing */
  VURN_LOG_STUCK = 0x8000,            /* stuck detection, time offset, PLMN re-fetch */
  VURN_LOG_INFO = 0x800000,           /* all "I" lines, including the report */
  VURN_LOG_WARNING = 0x1000000,       /* all "W" lines */
  VURN_LOG_ERROR = 0x2000000          /* all "E" lines */
};

/* Mask of the lines that are written; 0 (none) at load. Read before each line; set it with
 * vurn_set_log_mask. */
extern uint32_t gZOPModuleLogMask;

/* ---- life cycle ---- */

/* Opens the modem on "/dev/tts/USB1" (see zop_open in zop.h for how long that may take) and waits
 * up to 20 s for its SIM. Returns VURN_OK, VURN_ERR_FAILED (no port, no answer, or no usable SIM),
 * or VURN_ERR_REOPENED if the module was already open: it is now closed, and the host must open it
 * again. */
int vurn_open(void);

/* Closes the modem. A non-zero join also ends the deferred-action thread, which a later open does
 * not restart: that process gets no more exception reports or snapshots. Always VURN_OK; does
 * nothing if the module is closed. */
int vurn_close(int join);

/* Writes the module's capability flags, always 1, and returns VURN_OK. */
int vurn_get_module_flags(unsigned* flags);

/* Sets gZOPModuleLogMask. */
void vurn_set_log_mask(unsigned mask);

/* Kept for older hosts: does nothing and returns VURN_OK. */
int vurn_try_to_use_home_network(void);

/* Kept for older hosts: VURN_OK if the module is open, otherwise VURN_ERR_NOT_OPEN. */
int vurn_update_prl(void);

/* ---- state of the modem ----
 *
 * These return VURN_OK, VURN_ERR_NOT_OPEN or VURN_ERR_FAILED unless they say otherwise. size is the
 * capacity of buf in bytes; a call with less than its minimum fails. */

/* Received signal strength, dBm. */
int vurn_get_rssi(int* rssi);

/* 1 if the modem is roaming, otherwise 0. */
int vurn_get_roaming_status(int* roaming);

/* Realm: the IMEI, 16 bytes. size is at least 20. */
int vurn_get_realm(char* buf, unsigned size);

/* Serial number of the radio: the IMEI, as vurn_get_realm. */
int vurn_get_radio_serial_number(char* buf, unsigned size);

/* First certificate parameter: the ICCID, 20 bytes, not terminated if all are used. size is at
 * least 20. */
int vurn_get_radio_cert_param1(char* buf, unsigned size);

/* Second certificate parameter: the IMSI, as vurn_get_imsi. */
int vurn_get_radio_cert_param2(char* buf, unsigned size);

/* The subscriber's phone number, 36 bytes. size is at least 36. */
int vurn_get_radio_phone_number(char* buf, unsigned size);

/* The IMSI, 16 bytes. size is at least 20. */
int vurn_get_imsi(char* buf, unsigned size);

/* Firmware version, 20 bytes, not terminated if all are used. size is at least 20. */
int vurn_get_firmware_version(char* buf, unsigned size);

/* Data service mode, VURN_DATA_. */
int vurn_get_data_service_mode(int* mode);

/* Network time, interpreted in the device's local time zone, and the network's offset from UTC in
 * seconds. VURN_ERR_TIME_NOT_PROVIDED while the network has not sent its time. */
int vurn_get_module_time(time_t* when, int* offset);

/* ---- bars ---- */

/* Signal bars: 1 to 5, or VURN_BARS_NONE without usable service (limited, not attached, or not
 * registered). Also returns VURN_ERR_FAILED if the modem is stuck: rejected by the network for over
 * 60 s, data active without a call for over 5 s, or all networks forbidden for over 300 s. The
 * module checks for this during this call only. */
int vurn_get_bars(int* bars);

/* ---- country ---- */

/* Mobile country code as a number. VURN_ERR_NULL_ARGUMENT if mcc is null; VURN_ERR_FAILED if the
 * query fails or the modem's answer is not a number (*mcc is then 0). Takes no lock and needs only
 * the link, not vurn_open. On a modem that answers within 0.2 s it may run concurrently with other
 * calls; on a slower one, call it from the same thread as the others, or the call that waits for
 * the port closes the link. Not during a download. A change of country is logged once; the file
 * "/var/local/wan/mcc" remembers the country across restarts. */
int vurn_get_mcc(int* mcc);

/* ---- events ---- */

struct NubiEvent;

/* Handles an event of the host's platform, which the module reads with the functions of nubi.h:
 * counts "wanRing" from "com.orvane.hal" by its origin, writes a log line for "fileDownloaded" from
 * "com.orvane.framework", and ignores all others. Always VURN_OK. Takes no lock; the module may be
 * closed. */
int vurn_report_event(const struct NubiEvent* event);

/* ---- call test ---- */

/* Number of the running call test, or VURN_TEST_NONE. For the host to read. */
extern int32_t sTestNum;

/* Switches factory test mode on. A test above VURN_TEST_FACTORY_MODE also starts a loop-back call
 * without a time limit, on the test's band if it has one. */
int vurn_originate_call_test(int testNum);

/* Ends the call and leaves factory test mode. VURN_OK, with nothing sent, if no test is running. */
int vurn_stop_call_test(void);

/* ---- the diagnostic report ---- */

/* Writes the report to buf, which holds len bytes, as lines of text with a terminator.
 * VURN_ERR_TRUNCATED if there was not room for every item. If the module is closed, the text says
 * that there is no data and the result is VURN_OK. Keeps the modem's field testing on for ten
 * seconds, so that the next call finds fresh data. */
int vurn_get_log_string(char* buf, unsigned len);

/* Reports the exception names[code]. Five reports with its name follow in syslog, one with each
 * field-test screen; fewer if another exception is still being reported. Codes 3 to 7 return
 * VURN_OK and are not reported. The module keeps the pointer names[code]: the text must stay valid.
 * VURN_ERR_NOT_OPEN if the module is closed and no report will follow. */
int vurn_log_message(unsigned code, const char** names);

/* Non-zero: takes a diagnostic snapshot, one report after five screens. 0: does nothing. Always
 * VURN_OK. */
int vurn_enable_logging(int enable);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
