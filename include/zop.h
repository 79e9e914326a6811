/* Modem command library: each call makes one request to the modem over the open link and reads its
 * answer.
 *
 * Threads: no call takes a lock. A host makes these calls one at a time, and not while another
 * thread makes a vurn_ call. Only zop_end_call_test may run concurrently with others. It and the
 * event listener share the port with them: a call waits 0.2 s for an exchange in progress and then
 * closes the link. If the modem takes longer than that to answer, do not send commands while the
 * listener runs (zop_debug_start, and the field testing that vurn_ reports switch on).
 *
 * Duration: a modem that falls silent costs a call 5 s, and the link is then closed. One answer may
 * take 15 s in all, and writing to a line that accepts no bytes fails after 5 s: an exchange takes
 * at most 20 s. A call that follows an abandoned exchange may first wait that long for the late
 * answer, so as not to mistake it for its own. zop_read_pdp_profile makes eight exchanges;
 * zop_simcard_enable and zop_simcard_change make two.
 *
 * Outputs are written on success only, except byte buffers that a call clears first, as noted
 * there. Scalar outputs are 32 bits wide, signed if the value is. A size argument gives the
 * capacity of the buffer in bytes. If it is below the call's minimum, the call returns
 * ZOP_ERR_BUFFER_TOO_SMALL and stores the minimum in *size; otherwise *size does not change. Texts
 * are the modem's bytes, padded with zeros; if they fill the buffer there is no terminator.
 *
 * Every call may return ZOP_ERR_NOT_OPEN, ZOP_ERR_NO_RESPONSE and ZOP_ERR_BAD_RESPONSE; the
 * comments name only further results. "Status" there means: ZOP_ERR_MODEM_FAILURE if the modem
 * reports a failure. */
#ifndef ZOP_H
#define ZOP_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Result codes; zop_open has its own. 5 is not used. */
enum {
  ZOP_SUCCESS = 0,
  ZOP_ERR_NOT_OPEN = 1,             /* the link is not open; nothing was sent */
  ZOP_ERR_NO_RESPONSE = 2,          /* the request could not be written, or the read failed */
  ZOP_ERR_BUFFER_TOO_SMALL = 4,     /* the minimum is stored in *size */
  ZOP_ERR_NO_MEMORY = 6,            /* allocation failure */
  ZOP_ERR_BAD_RESPONSE = 7,         /* time-out, bad check sequence, bad length or echo */
  ZOP_ERR_PIN_TOO_LONG = 8,         /* a PIN or key of more than 8 bytes */
  ZOP_ERR_INVALID_ARGUMENT = 9,     /* argument out of range, or not supported */
  ZOP_ERR_MODEM_FAILURE = 10,       /* the modem answered with a non-zero status */
  ZOP_ERR_HOME_NETWORK_REFUSED = 11 /* the modem refuses to go to the home network */
};

/* Results of zop_open. */
enum {
  ZOP_OPEN_UP = 0,
  ZOP_OPEN_NO_ANSWER = 1, /* or the device could not be opened */
  ZOP_OPEN_READ_ERROR = 2,
  ZOP_OPEN_RESERVED = 3 /* not returned */
};

/* First byte of a vendor request: [207, subcommand, 0, payload]. */
enum { ZOP_VENDOR_COMMAND = 207 };

/* Capacities and sizes in bytes. */
enum {
  ZOP_MCC_SIZE = 3,
  ZOP_MNC_SIZE = 3,
  ZOP_LOCATION_AREA_SIZE = 14,
  ZOP_NETWORK_NAME_SIZE = 255,
  ZOP_IDENTITY_SIZE = 20, /* IMEI, IMSI, ICCID, hardware and firmware version */
  ZOP_PHONE_NUMBER_SIZE = 36,
  ZOP_SERIAL_NUMBER_SIZE = 8,
  ZOP_LIBRARY_VERSION_SIZE = 17,
  ZOP_NETWORK_TIME_SIZE = 19,
  ZOP_MODULE_TIME_SIZE = 14,
  ZOP_EVENT_ORIGINATED_SIZE = 89,
  ZOP_EVENT_ACTIVATED_SIZE = 47,
  ZOP_EVENT_ENDED_SIZE = 3,
  ZOP_PIN_SIZE = 8,
  ZOP_PLMN_SIZE = 6,         /* three MCC characters, three MNC characters */
  ZOP_FPLMN_LIST_SIZE = 121, /* count, 20 entries of 6 */
  ZOP_UPLMN_LIST_SIZE = 121,
  ZOP_HPLMN_LIST_SIZE = 81,  /* count, 10 entries of 8 */
  ZOP_PLMN_BLOCK_SIZE = 161, /* count, 20 entries of 8: MCC, MNC, two technology bytes */
  ZOP_SIM_FILE_SIZE = 255,
  ZOP_NV_DATA_SIZE = 128,
  ZOP_PDP_PROFILE_SIZE = 208,
  ZOP_PDP_PROFILE_COUNT = 8,
  ZOP_PDP_RECORD_SIZE = 103,
  ZOP_CELL_RECORD_SIZE = 6,
  ZOP_CELL_SET_MAX = 32,
  ZOP_NEIGHBOR_LIST_SIZE = 164,
  ZOP_BEST_SIX_SIZE = 58,
  ZOP_SCREEN_SIZE = 345,
  ZOP_ERROR_LOG_SIZE = 264
};

/* ---- values of the modem, one enumeration for each field ----
 *
 * These are the numbers on the wire, and those in the diagnostic record. A modem may send numbers
 * that have no name here. A value of -1 appears as 255 in an unsigned output and in a byte of the
 * record. */

/* zop_simcard_status: the card. */
enum {
  ZOP_SIM_NO_CARD = 0,
  ZOP_SIM_INVALID_CARD = 1,
  ZOP_SIM_READY = 2,
  ZOP_SIM_NOT_INITIALISED = 3, /* starting, or waiting for its PIN: see the lock status */
  ZOP_SIM_NOT_READY = 4,
  ZOP_SIM_REINITIALISING = 5,
  ZOP_SIM_AVAILABLE = 6,
  ZOP_SIM_ILLEGAL_CARD = 7
};

/* zop_simcard_status: the lock status, which is the state of the PIN. */
enum {
  ZOP_PIN_UNKNOWN = 0,
  ZOP_PIN_OKAY = 1,
  ZOP_PIN_ENABLED = 2, /* the card waits for its PIN */
  ZOP_PIN_VERIFIED = 3,
  ZOP_PIN_BLOCKED = 4,       /* no tries left: zop_simcard_unblock */
  ZOP_PIN_PERM_DISABLED = 5, /* no PIN is asked for until zop_simcard_enable */
  ZOP_PIN_NOT_VALID = 6,
  ZOP_PIN_NOT_INITIALISED = 7
};

/* zop_get_roaming_status: every number but 0 means roaming. -1 occurs in the record only. */
enum { ZOP_ROAMING_UNKNOWN = -1, ZOP_ROAMING_HOME = 0 };

/* zop_get_registration_status. */
enum {
  ZOP_REGISTRATION_NONE = 0,
  ZOP_REGISTRATION_SUCCESS = 1,
  ZOP_REGISTRATION_FAILED = 2,
  ZOP_REGISTRATION_NO_NETWORK = 3
};

/* zop_get_service_status. */
enum {
  ZOP_SERVICE_NONE = -1,
  ZOP_SERVICE_NO_SERVICE = 0,
  ZOP_SERVICE_LIMITED = 1, /* emergency calls only, if any */
  ZOP_SERVICE_FULL = 2,
  ZOP_SERVICE_LIMITED_REGIONAL = 3,
  ZOP_SERVICE_POWER_SAVE = 4
};

/* zop_get_system_mode. */
enum {
  ZOP_SYSTEM_NONE = -1,
  ZOP_SYSTEM_NO_SERVICE = 0,
  ZOP_SYSTEM_AMPS = 1,
  ZOP_SYSTEM_CDMA = 2,
  ZOP_SYSTEM_GSM = 3,
  ZOP_SYSTEM_HDR = 4,
  ZOP_SYSTEM_WCDMA = 5,
  ZOP_SYSTEM_GPS = 6,
  ZOP_SYSTEM_GW = 7, /* GSM and WCDMA */
  ZOP_SYSTEM_WLAN = 8
};

/* zop_get_data_service_mode. Not the numbers of VURN_DATA_ in vurn.h. */
enum {
  ZOP_DATA_UNKNOWN = -1,
  ZOP_DATA_GPRS = 0,
  ZOP_DATA_EDGE = 1,
  ZOP_DATA_WCDMA = 2,
  ZOP_DATA_HSDPA = 3
};

/* zop_get_band; the comment of zop_set_band lists those that can be set. */
enum {
  ZOP_BAND_NONE = -1,
  ZOP_BAND_GSM_450 = 40,
  ZOP_BAND_GSM_480 = 41,
  ZOP_BAND_GSM_750 = 42,
  ZOP_BAND_GSM_850 = 43,
  ZOP_BAND_EGSM_900 = 44,
  ZOP_BAND_PGSM_900 = 45,
  ZOP_BAND_RGSM_900 = 46,
  ZOP_BAND_GSM_1800 = 47, /* DCS */
  ZOP_BAND_GSM_1900 = 48, /* PCS */
  ZOP_BAND_WCDMA_2100 = 80,
  ZOP_BAND_WCDMA_1900 = 81,
  ZOP_BAND_WCDMA_1700_III = 82,
  ZOP_BAND_WCDMA_1700_IV = 83,
  ZOP_BAND_WCDMA_850 = 84,
  ZOP_BAND_WCDMA_800 = 85,
  ZOP_BAND_WCDMA_2600 = 86,
  ZOP_BAND_WCDMA_900 = 87,
  ZOP_BAND_WCDMA_1700_IX = 88
};

/* zop_set_network_search_order: the radio technology of the band. */
enum { ZOP_SEARCH_GSM = 3, ZOP_SEARCH_WCDMA = 5 };

/* zop_get_call_status. */
enum {
  ZOP_CALL_NONE = -1,
  ZOP_CALL_IDLE = 0,
  ZOP_CALL_ORIGINATING = 1,
  ZOP_CALL_INCOMING = 3,
  ZOP_CALL_ORIGINATING_INCOMING = 4,
  ZOP_CALL_CONVERSATION = 5,
  ZOP_CALL_RELEASE = 6,
  ZOP_CALL_RECALL_PENDING = 7
};

/* zop_get_network_op_mode: how the modem attaches to circuit-switched and packet service. */
enum {
  ZOP_NETWORK_MODE_COMBINED = 0,
  ZOP_NETWORK_MODE_SEPARATE = 1,
  ZOP_NETWORK_MODE_SEPARATE_2G = 2,
  ZOP_NETWORK_MODE_UNAVAILABLE = 3
};

/* The state of zop_get_mm_attach_state, zop_get_mm_lu_state, zop_get_gmm_attach_state and
 * zop_get_gmm_rau_state: the result of the last attach or update. */
enum {
  ZOP_ATTACH_NOT_AVAILABLE = 0,
  ZOP_ATTACH_ACCEPTED = 1, /* GMM attach: attached to the packet network */
  ZOP_ATTACH_REJECTED = 2,
  ZOP_RA_UPDATE_ACCEPTED = 5, /* routing area */
  ZOP_RA_UPDATE_REJECTED = 6,
  ZOP_MM_ATTACH_ACCEPTED = 11, /* the report names 11 and 12 like 1 and 2 */
  ZOP_MM_ATTACH_REJECTED = 12,
  ZOP_LA_UPDATE_ACCEPTED = 13, /* location area */
  ZOP_LA_UPDATE_REJECTED = 14
};

/* The error of these calls and the reject reason of zop_get_pdp_state: causes of 3GPP TS 24.008. */
enum {
  ZOP_CAUSE_NONE = 0,
  ZOP_CAUSE_PROTOCOL_ERROR = 111 /* unspecified */
};

/* zop_get_gmm_state. */
enum {
  ZOP_GMM_NULL = 0,
  ZOP_GMM_DEREGISTERED = 1,
  ZOP_GMM_REGISTERING = 2,
  ZOP_GMM_REGISTERED = 3,
  ZOP_GMM_DEREGISTERING = 4,
  ZOP_GMM_RA_UPDATING = 5,
  ZOP_GMM_SERVICE_REQUEST = 6
};

/* zop_get_pdp_state. */
enum {
  ZOP_PDP_INACTIVE = 0,
  ZOP_PDP_ACTIVE_PENDING = 1,
  ZOP_PDP_ACTIVE = 2,
  ZOP_PDP_MODIFY_PENDING = 3,
  ZOP_PDP_INACTIVE_PENDING = 4
};

/* zop_get_pmm_mode. */
enum { ZOP_PMM_DETACHED = 0, ZOP_PMM_IDLE = 1, ZOP_PMM_CONNECTED = 2 };

/* zop_get_hsdpa_status: the status, and the indication of what is supported. */
enum { ZOP_HSDPA_INACTIVE = 0, ZOP_HSDPA_ACTIVE = 1, ZOP_HSDPA_SUSPENDED = 2 };
enum {
  ZOP_HSPA_NONE = -1,
  ZOP_HSPA_UNSUPPORTED = 0,
  ZOP_HSPA_HSDPA = 1,
  ZOP_HSPA_HSUPA = 2,
  ZOP_HSPA_HSDPA_HSUPA = 3
};

/* zop_get_egprs_indication. */
enum { ZOP_EGPRS_NONE = -1, ZOP_EGPRS_NOT_AVAILABLE = 0, ZOP_EGPRS_AVAILABLE = 1 };

/* The set of a WCDMA cell, in the cell lists and in the field-test screen. */
enum { ZOP_CELL_ACTIVE = 0, ZOP_CELL_MONITORED = 1, ZOP_CELL_DETECTED = 2 };

/* zop_get_bars, besides 0 to 5. */
enum { ZOP_BARS_NONE = -1 };

/* Records passed by value. */
typedef struct {
  uint8_t bytes[ZOP_UPLMN_LIST_SIZE];
} zop_uplmn_list;
typedef struct {
  uint8_t bytes[ZOP_PDP_RECORD_SIZE];
} zop_pdp_record;

/* ---- link ---- */

/* Opens the serial device and checks that a modem answers, in up to 5 attempts. Returns a
 * ZOP_OPEN_ code. An open link is closed first; exchanges of other threads on it end within 0.1 s.
 * Takes 5 s without a device or with a silent modem, 25 s on a line that accepts no bytes. If a
 * modem answers late, zop_open waits until every attempt is answered, so that the first command
 * does not receive an old answer: up to 20 s more, and 62 s in all at most. */
unsigned int zop_open(const char* path);

/* Closes the link and stops the event listener. */
void zop_close(void);

/* ---- the exchange itself, for the host's own commands ---- */

/* Sends the first length bytes of the request buffer and reads one answer. The buffer holds the
 * request of the last command, so this repeats it; zop_open leaves its probe there, while
 * zop_end_call_test and zop_debug_mode_start do not use it. A non-zero leading_flag puts a flag
 * byte in front. Returns the bytes received, including the closing flag; 0 if the request could not
 * be written completely; -1 on an I/O error or if the modem is silent, which closes the link; -2 if
 * all three attempts timed out because another thread reopened the link in between. */
int zop_send(int length, int leading_flag);

/* 1 if have is at least need, otherwise 0. */
int zop_check_buffer_size(int have, int need);

/* Not supported: these return ZOP_ERR_INVALID_ARGUMENT. modem_download.h downloads firmware. */
unsigned int zop_download_firmware(void);
unsigned int zop_download_firmware_status(void);
unsigned int zop_download_firmware_end(void);

/* ---- network and registration ---- */

unsigned int zop_get_roaming_status(uint32_t* roaming); /* ZOP_ROAMING_, raw */
unsigned int zop_try_to_use_home_network(void);         /* status; ..HOME_NETWORK_REFUSED */
unsigned int zop_get_data_service_mode(int32_t* mode);  /* ZOP_DATA_ */
unsigned int zop_get_uarfcn(uint32_t* channel);         /* UARFCN or ARFCN */
unsigned int zop_get_call_status(uint32_t* call);       /* ZOP_CALL_ */
unsigned int zop_get_rac(uint32_t* rac);                /* routing area code */
unsigned int zop_get_mcc(uint8_t* mcc, uint32_t* size); /* 3 characters; clears first */
unsigned int zop_get_mnc(uint8_t* mnc, uint32_t* size); /* 3 characters; clears first */
unsigned int zop_get_location_area_id(uint8_t* text, uint32_t* size); /* 14 bytes; clears first */
unsigned int zop_get_cell_id(uint32_t* cell);
unsigned int zop_get_network_name(uint8_t* name, uint32_t* size); /* 255 bytes; clears first */
unsigned int zop_get_service_status(int32_t* service);            /* ZOP_SERVICE_ */
unsigned int zop_get_registration_status(uint32_t* registration); /* ZOP_REGISTRATION_ */
unsigned int zop_get_info_event_orig(uint8_t* record);            /* status; 89 bytes */
unsigned int zop_get_info_event_act(uint8_t* record);             /* status; 47 bytes */
unsigned int zop_get_info_event_deact(uint8_t* record);           /* status; 1 byte */
unsigned int zop_get_info_event_end(uint8_t* record);             /* status; 3 bytes */
unsigned int zop_get_band(int32_t* band);                         /* status; ZOP_BAND_ */
unsigned int zop_get_network_op_mode(int32_t* mode);              /* status; ZOP_NETWORK_MODE_ */
unsigned int zop_get_mm_attach_state(int32_t* state, int32_t* error);    /* status; ZOP_ATTACH_ */
unsigned int zop_get_gmm_attach_state(int32_t* state, int32_t* error);   /* status; ZOP_ATTACH_ */
unsigned int zop_get_mfrm(int32_t* multiframes);                         /* status */
unsigned int zop_get_gmm_state(int32_t* state);                          /* status; ZOP_GMM_ */
unsigned int zop_get_pdp_state(int32_t* state, int32_t* reject_reason);  /* status; ZOP_PDP_ */
unsigned int zop_get_pmm_mode(int32_t* mode);                            /* status; ZOP_PMM_ */
unsigned int zop_get_drx(uint32_t* drx);                                 /* status */
unsigned int zop_get_hsdpa_status(int32_t* status, int32_t* indication); /* status; ZOP_HSDPA_ */
unsigned int zop_get_egprs_indication(int32_t* egprs);                   /* status; ZOP_EGPRS_ */
unsigned int zop_get_mm_lu_state(int32_t* state, int32_t* error);        /* status; ZOP_ATTACH_ */
unsigned int zop_get_gmm_rau_state(int32_t* state, int32_t* error);      /* status; ZOP_ATTACH_ */
unsigned int zop_get_powerup_flag(uint32_t* flag); /* status, also if the flag is above 1 */
unsigned int zop_get_rau_type(uint32_t* type);     /* status */
unsigned int zop_get_carrier(int32_t* carrier);    /* status */

/* Network time as 19 bytes, little-endian: year, month, day, hour, minute, second, weekday (u16
 * each), offset from UTC in quarter hours (s32), daylight saving (u8). Status: the network has not
 * sent its time. */
unsigned int zop_get_network_time(uint8_t* time19);

unsigned int zop_get_system_mode(uint32_t* mode); /* ZOP_SYSTEM_ */

/* ---- identity and versions: buffers are cleared first ---- */

unsigned int zop_get_imei(uint8_t* imei, uint32_t* size);   /* minimum 20, 16 bytes copied */
unsigned int zop_get_imsi(uint8_t* imsi, uint32_t* size);   /* minimum 20, 16 bytes copied */
unsigned int zop_get_iccid(uint8_t* iccid, uint32_t* size); /* 20 bytes; status */
unsigned int zop_get_radio_phone_number(char* number, uint32_t* size); /* 36 bytes */
unsigned int zop_get_hardware_version(uint8_t* text, uint32_t* size);  /* 20 bytes */
unsigned int zop_get_firmware_version(uint8_t* text, uint32_t* size);  /* 20 bytes */

/* Electronic serial number as 8 upper-case hexadecimal characters, not terminated. */
unsigned int zop_get_radio_serial_number(uint8_t* hex, uint32_t* size);

unsigned int zop_get_card_mode(int32_t* mode);

/* Version of this library, 17 bytes including the terminator. Needs no link. */
unsigned int zop_get_tq2_version(uint8_t* text, uint32_t* size);

/* ---- SIM card ----
 *
 * *result is 0 if the SIM accepted the operation, 1 if it refused. PINs and keys are up to 8 bytes
 * without a terminator; ZOP_ERR_PIN_TOO_LONG if longer. */

/* SIM status (ZOP_SIM_), lock status (ZOP_PIN_), PIN retries left. Status. */
unsigned int zop_simcard_status(uint32_t* sim_status, uint32_t* lock_status, uint32_t* retries);

/* Always reads 8 bytes from pin, whatever pin_len is. */
unsigned int zop_simcard_verify(const uint8_t* pin, uint32_t pin_len, uint32_t* result);

/* The length of the new PIN is not checked; only 8 bytes of it are sent. */
unsigned int zop_simcard_change(const uint8_t* old_pin, uint32_t old_len, const uint8_t* new_pin,
                                uint32_t new_len, uint32_t* result);

unsigned int zop_simcard_disable(const uint8_t* pin, uint32_t pin_len, uint32_t* result);
unsigned int zop_simcard_enable(const uint8_t* pin, uint32_t pin_len, uint32_t* result);
unsigned int zop_simcard_unblock(const uint8_t* key, uint32_t key_len, const uint8_t* new_pin,
                                 uint32_t new_len, uint32_t* result);

/* The copy of the PIN in the modem's memory, 8 bytes; *result is 1 if the modem refused.
 * zop_simcard_enable and zop_simcard_change update the copy, the other operations do not. */
unsigned int zop_simcard_pin_write(const uint8_t* pin, uint32_t pin_len, uint32_t* result);
unsigned int zop_simcard_pin_read(uint8_t* pin8, uint32_t ignored, uint32_t* result);

/* Sets the state of the virtual SIM, the low byte of state. Status. */
unsigned int zop_vsim_status_change(uint32_t state);

/* ---- PLMN lists of the SIM; all but the forbidden list: status ----
 *
 * The count of a list is the modem's; read no more entries than the list holds. */

unsigned int zop_get_uim_data_oplmn(uint8_t* block161); /* operator list, first block */
unsigned int zop_get_uim_data_hplmn(uint8_t* list81);   /* home list */
unsigned int zop_get_uim_data_rplmn(uint8_t* plmn6);    /* registered PLMN */
unsigned int zop_get_uim_data_uplmn(uint8_t* list121);  /* user list */
unsigned int zop_set_uim_data_uplmn(zop_uplmn_list list);

/* Forbidden PLMNs: count, then 20 entries of 6. */
unsigned int zop_get_uim_data_fplmn(uint8_t* list121);

/* A block of up to 20 entries, starting with entry number first, and the length of the whole list.
 * first counts from 1; ZOP_ERR_BAD_RESPONSE if it is not 1 to 256. */
unsigned int zop_get_uim_data_oplmn_partial(uint32_t first, uint32_t* total, uint8_t* block161);
unsigned int zop_get_uim_data_hplmn_partial(uint32_t first, uint32_t* total, uint8_t* block161);

/* 255 bytes of a SIM file, and the file's length. */
unsigned int zop_get_uim_data(uint32_t file_id, uint32_t offset, uint8_t* data255,
                              uint32_t* length);

/* ---- NV items; *nv_status is 0 if the modem carried out the operation ---- */

unsigned int zop_nv_read(uint32_t item, void* data, uint32_t length, uint32_t* nv_status);
unsigned int zop_nv_write(uint32_t item, const void* data, uint32_t length, uint32_t* nv_status);

/* Single items. ZOP_ERR_MODEM_FAILURE on a non-zero NV status. */
unsigned int zop_set_pref_mode(uint32_t mode);
unsigned int zop_get_pref_mode(uint32_t* mode);
unsigned int zop_get_pref_service_domain(uint32_t* domain);
unsigned int zop_set_mgrf_supported(uint32_t on); /* 0 or 1, else ..INVALID_ARGUMENT */
unsigned int zop_get_mgrf_supported(uint32_t* on);
unsigned int zop_set_acq_band_order(uint32_t order);
unsigned int zop_get_acq_band_order(uint32_t* order);

/* ---- configuration; all but the modes: status ---- */

unsigned int zop_set_diag_port(uint32_t port);         /* 0 or 1, else ..INVALID_ARGUMENT */
unsigned int zop_set_reset(void);                      /* restarts the modem */
unsigned int zop_set_error_fatal(void);                /* crashes the modem, for a memory dump */
unsigned int zop_enable_factory_test(uint32_t enable); /* 0 or 1, else ..INVALID_ARGUMENT */

/* ZOP_BAND_GSM_850, EGSM_900, GSM_1800 or GSM_1900, or WCDMA_2100, WCDMA_1900 or WCDMA_850, else
 * ZOP_ERR_INVALID_ARGUMENT. */
unsigned int zop_set_band(uint32_t band);

/* Operating mode, up to 255, else ZOP_ERR_BAD_RESPONSE. */
unsigned int zop_mode_change(uint32_t mode);

/* kind is ZOP_SEARCH_GSM or ZOP_SEARCH_WCDMA, and value a band of that technology that zop_set_band
 * accepts, else ZOP_ERR_BAD_RESPONSE. */
unsigned int zop_set_network_search_order(uint32_t kind, uint32_t value);

unsigned int zop_get_backup_status(uint32_t* a, uint32_t* b);

/* Step 1 to 5 of an NV backup, else ZOP_ERR_INVALID_ARGUMENT. Step 3 restarts the modem, which does
 * not answer it. */
unsigned int zop_set_backup(uint32_t step);

/* All 8 profiles, 208 bytes each. A failure ends the call; the profiles read so far are stored. */
unsigned int zop_read_pdp_profile(uint8_t* profiles1664);
unsigned int zop_write_pdp_profile(zop_pdp_record record);

/* ---- radio ---- */

unsigned int zop_get_rssi(int32_t* rssi);         /* dBm; the answer must echo the request */
unsigned int zop_get_rscp(int32_t* rscp);         /* dBm */
unsigned int zop_get_txpower(int32_t* txpower);   /* dBm */
unsigned int zop_get_pathloss(int32_t* pathloss); /* dB */

/* WCDMA cell sets. *count is the capacity in cells on entry and the number of cells on return. A
 * cell is 6 bytes: its set (ZOP_CELL_), 0, and two u16 as the modem sent them. */
unsigned int zop_get_active_set_list(uint8_t* cells, uint32_t* count);
unsigned int zop_get_monitored_set_list(uint8_t* cells, uint32_t* count);
unsigned int zop_get_detected_set_list(uint8_t* cells, uint32_t* count);

/* GSM lists: count (u32), then entries. All zeros if the modem's count is out of range. */
unsigned int zop_get_neighbor_cell_list(uint8_t* list164);
unsigned int zop_get_best_six_cell_list(uint8_t* list58);

/* The field-test screen, zop_screen of zop_diag_info.h. */
unsigned int zop_get_field_information(uint8_t* record345);

/* Signal bars 0 to 5, or ZOP_BARS_NONE in limited service. Prints the measurements to standard
 * output. */
unsigned int zop_get_bars(int32_t* bars);

/* ---- test, call and message ---- */

/* Places a call to a number of 1 to 32 characters, else ZOP_ERR_INVALID_ARGUMENT. If timeout_s is
 * not 0, the call is ended after that many seconds: by the event listener if it is running,
 * otherwise by a SIGALRM handler, which stays installed. */
unsigned int zop_originate_call_test(uint32_t timeout_s, const char* number);
unsigned int zop_end_call_test(void);

/* number has at most 35 characters and text at most 254; the lengths are not checked. Status. */
unsigned int zop_send_sms(const char* number, const char* text);

unsigned int zop_test(uint32_t value); /* vendor test; ..MODEM_FAILURE if it fails */
unsigned int zop_get_err_log(uint8_t* log264);
unsigned int zop_get_err_clr(uint32_t index); /* up to 255, else ZOP_ERR_BAD_RESPONSE */

/* Makes the modem offer call events and field-test screens. Status. */
unsigned int zop_debug_mode_start(void);

/* Starts the event listener, a thread that sends the modem a request every half second: polls + 1
 * requests for events, then one for the field-test screen. ZOP_ERR_INVALID_ARGUMENT if it is
 * already running, ZOP_ERR_NO_MEMORY if memory or the thread is not available; otherwise
 * ZOP_SUCCESS, whatever the modem answers. */
unsigned int zop_debug_start(unsigned int polls);

/* Stops the listener within 0.1 s, abandoning its current exchange. Always ZOP_SUCCESS, even if it
 * is not running. Do not call zop_debug_start and zop_debug_stop at the same time. */
unsigned int zop_debug_stop(void);

/* Sets the modem's clock from 14 bytes. */
unsigned int zop_set_module_time(const uint8_t* time14, uint32_t* size);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
