/* Host interface of the WAN-modem module: open, close, read the modem's state.
 *
 * Every call may come from any thread; the module serialises them: a call waits for the one that
 * is under way, and for the module's own thread while it switches field testing on, which is one
 * exchange. vurn_get_mcc does not take part (see there), nor do vurn_report_event,
 * vurn_set_log_mask and vurn_get_module_flags, which ask the modem nothing.
 *
 * Waiting: a modem that falls silent costs a call 5 s; the link is closed then, and every call that
 * asks the modem fails at once until the host has closed and opened the module. A slow answer may
 * take 15 s, and a line that takes no bytes fails after 5 s: 20 s for each exchange at the most,
 * and twice that right after an exchange that was given up. The getters make one exchange, but for
 * vurn_get_data_service_mode (2), vurn_get_bars (10), vurn_originate_call_test (4) and
 * vurn_stop_call_test (2); vurn_get_log_string, vurn_log_message, vurn_enable_logging and vurn_open
 * refresh the whole report (24 with all lists of the card). vurn_close(0) ends within 0.1 s of
 * getting its turn; vurn_close(1) gives up its turn while it ends the thread, and a call of another
 * thread may come in between. A log daemon that does not read makes syslog() wait, and with it
 * every call that writes a line: the module can't help that.
 *
 * Reports (vurn_get_log_string, vurn_log_message, vurn_enable_logging, vurn_open) switch the
 * modem's field testing on for some seconds: a thread of the module then asks it for events and
 * screens. A call that meets such an exchange waits 0.2 s for it and then closes the link: a modem
 * that is slower than that can't be used beside field testing.
 *
 * Unloading the library, and exit, close the link and end its threads: within a second, whatever
 * they are doing.
 *
 * Outputs are written only on success unless a call says otherwise. A text call may clear the
 * host's buffer before it asks the modem. Texts are the modem's own bytes, padded with zeros to
 * their full width. */
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
  VURN_ERR_TRUNCATED = 7,         /* the report did not fit the buffer; what fitted is there */
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

/* No bars, from vurn_get_bars. */
enum { VURN_BARS_NONE = -1 };

/* Call tests. A number beyond these is a call on the band as it is. */
enum {
  VURN_TEST_NONE = -1,        /* none is under way */
  VURN_TEST_FACTORY_MODE = 0, /* factory test mode, without a call */
  VURN_TEST_WCDMA_850 = 1,
  VURN_TEST_GSM_1900 = 2
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

/* Opens the modem on "/dev/tts/USB1" (zop_open in zop.h says how long that may take) and waits up
 * to 20 s for its SIM. VURN_OK, VURN_ERR_FAILED (no port, no answer, no usable SIM), or
 * VURN_ERR_REOPENED when the module was open: it is then closed, and the host opens again. */
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

/* ---- bars ---- */

/* Signal bars: 1 to 5, or VURN_BARS_NONE without usable service (limited, not attached, not
 * registered). VURN_ERR_FAILED also when the modem is stuck: rejected by the network for over 60 s,
 * data active without a call for over 5 s, or all networks forbidden for over 300 s, as seen by
 * these calls. */
int vurn_get_bars(int* bars);

/* ---- country ---- */

/* Mobile country code as a number. VURN_ERR_NULL_ARGUMENT without mcc; VURN_ERR_FAILED when the
 * modem does not tell, or tells no number (*mcc is 0 then). Takes no lock and needs no vurn_open,
 * only the link: it may run beside other calls on a modem that answers within 0.2 s. On a slower
 * one it must come from the thread of the other calls, or the one that waits closes the link. Not
 * beside a download. A change is logged once, also across restarts, by "/var/local/wan/mcc". */
int vurn_get_mcc(int* mcc);

/* ---- events ---- */

struct NubiEvent;

/* An event of the host's platform, read with the calls of nubi.h. Counts "wanRing" of
 * "com.orvane.hal" by its origin, writes a log line for "fileDownloaded" of "com.orvane.framework",
 * ignores all others. Always VURN_OK; takes no lock and works on a closed module. */
int vurn_report_event(const struct NubiEvent* event);

/* ---- call test ---- */

/* Number of the call test under way, VURN_TEST_NONE when there is none. */
extern int32_t sTestNum;

/* Factory test, VURN_TEST_FACTORY_MODE or above: switches factory test mode on. Above it, also
 * starts a loop-back call without a time limit, on the test's band or on the band as it is. */
int vurn_originate_call_test(int testNum);

/* Ends it and leaves factory test mode. VURN_OK, with nothing sent, when no test is under way. */
int vurn_stop_call_test(void);

/* ---- the diagnostic report ---- */

/* The report as text of lines into buf of len bytes, terminated. VURN_ERR_TRUNCATED when items were
 * left out for want of room. On a closed module the text says so, and the result is VURN_OK. Keeps
 * the modem's field testing on for ten seconds, so that the next call finds fresh data. */
int vurn_get_log_string(char* buf, unsigned len);

/* Reports the exception names[code]: five reports with it follow in syslog, one with each
 * field-test screen; fewer while another exception is being reported. Codes 3 to 7 are not
 * reported, with VURN_OK. names belongs to the host and stays valid. VURN_OK, or VURN_ERR_NOT_OPEN
 * when nothing will follow. */
int vurn_log_message(unsigned code, const char** names);

/* Not 0: takes a diagnostic snapshot, one report after five screens. 0 does nothing. VURN_OK. */
int vurn_enable_logging(int enable);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
