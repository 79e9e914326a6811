/* Modem command library: each call performs one request and response over the open link.
 *
 * No call takes a lock: callers serialise them. Outputs are written on success only, except for
 * byte buffers that a call clears before it asks (told there). Scalar outputs are 32-bit, signed
 * where the value is. A call with a size argument takes the buffer's capacity in bytes; below the
 * minimum it returns ZOP_ERR_BUFFER_TOO_SMALL with the minimum in *size, and *size is otherwise
 * left alone. Texts are the modem's bytes, padded with zeros, without a terminator of their own.
 *
 * Every call may return ZOP_ERR_NOT_OPEN, ZOP_ERR_NO_RESPONSE and ZOP_ERR_BAD_RESPONSE; the
 * comment of a call names only what it may return beyond these. */
#ifndef ZOP_H
#define ZOP_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Result codes. 3 is a reserved result of zop_open, 5 is not used. */
enum {
  ZOP_SUCCESS = 0,
  ZOP_ERR_NOT_OPEN = 1,             /* the link is not open; nothing was sent */
  ZOP_ERR_NO_RESPONSE = 2,          /* the request could not be written, or the read failed */
  ZOP_ERR_BUFFER_TOO_SMALL = 4,     /* the minimum stands in the size argument */
  ZOP_ERR_NO_MEMORY = 6,            /* allocation failure */
  ZOP_ERR_BAD_RESPONSE = 7,         /* time-out, bad check sequence, bad length or echo */
  ZOP_ERR_PIN_TOO_LONG = 8,         /* a PIN or key of more than 8 bytes */
  ZOP_ERR_INVALID_ARGUMENT = 9,     /* argument out of range, or not supported */
  ZOP_ERR_MODEM_FAILURE = 10,       /* the modem answered with a non-zero status */
  ZOP_ERR_HOME_NETWORK_REFUSED = 11 /* the modem will not go to the home network */
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

/* Records handed over by value. */
typedef struct {
  uint8_t bytes[ZOP_UPLMN_LIST_SIZE];
} zop_uplmn_list;
typedef struct {
  uint8_t bytes[ZOP_PDP_RECORD_SIZE];
} zop_pdp_record;

/* ---- link ---- */

/* Opens the serial device and proves that a modem answers, in up to 5 attempts.
 * 0 link up, 1 not opened or no answer, 2 read error, 3 reserved. */
unsigned int zop_open(const char* path);

/* Closes the link. */
void zop_close(void);

/* ---- the exchange itself, for commands of the host's own ---- */

/* Clears and frames: sends the first length bytes of the request buffer and reads one response.
 * leading_flag non-zero puts a flag byte in front. Bytes received with the closing flag, or
 * 0 / -1 (write failed / I/O error) or -2 (no answer in three attempts). */
int zop_send(int length, int leading_flag);

/* 1 when have is at least need, else 0. */
int zop_check_buffer_size(int have, int need);

/* Firmware download does not go through the command library: all three return
 * ZOP_ERR_INVALID_ARGUMENT. See modem_download.h. */
unsigned int zop_download_firmware(void);
unsigned int zop_download_firmware_status(void);
unsigned int zop_download_firmware_end(void);

/* ---- network and registration; ZOP_ERR_MODEM_FAILURE where "status" is said ---- */

unsigned int zop_get_roaming_status(uint32_t* roaming); /* 0 home, else roaming */
unsigned int zop_try_to_use_home_network(void);         /* status; ..HOME_NETWORK_REFUSED */
unsigned int zop_get_data_service_mode(int32_t* mode);  /* 0 GPRS, 1 EDGE, 2 WCDMA, 3 HSDPA */
unsigned int zop_get_uarfcn(uint32_t* channel);         /* UARFCN or ARFCN */
unsigned int zop_get_call_status(uint32_t* call);       /* 0 idle */
unsigned int zop_get_rac(uint32_t* rac);                /* routing area code */
unsigned int zop_get_mcc(uint8_t* mcc, uint32_t* size); /* 3 characters; clears first */
unsigned int zop_get_mnc(uint8_t* mnc, uint32_t* size); /* 3 characters; clears first */
unsigned int zop_get_location_area_id(uint8_t* text, uint32_t* size); /* 14 bytes; clears first */
unsigned int zop_get_cell_id(uint32_t* cell);
unsigned int zop_get_network_name(uint8_t* name, uint32_t* size); /* 255 bytes; clears first */
unsigned int zop_get_service_status(int32_t* service); /* 0 none, 1 limited, 2 full, 3, 4 */
unsigned int zop_get_registration_status(uint32_t* registration);        /* 0 not registered */
unsigned int zop_get_info_event_orig(uint8_t* record);                   /* status; 89 bytes */
unsigned int zop_get_info_event_act(uint8_t* record);                    /* status; 47 bytes */
unsigned int zop_get_info_event_deact(uint8_t* record);                  /* status; 1 byte */
unsigned int zop_get_info_event_end(uint8_t* record);                    /* status; 3 bytes */
unsigned int zop_get_band(int32_t* band);                                /* status */
unsigned int zop_get_network_op_mode(int32_t* mode);                     /* status */
unsigned int zop_get_mm_attach_state(int32_t* state, int32_t* error);    /* status */
unsigned int zop_get_gmm_attach_state(int32_t* state, int32_t* error);   /* status; 1 attached */
unsigned int zop_get_mfrm(int32_t* multiframes);                         /* status */
unsigned int zop_get_gmm_state(int32_t* state);                          /* status */
unsigned int zop_get_pdp_state(int32_t* state, int32_t* reject_reason);  /* status; 2 active */
unsigned int zop_get_pmm_mode(int32_t* mode);                            /* status */
unsigned int zop_get_drx(uint32_t* drx);                                 /* status */
unsigned int zop_get_hsdpa_status(int32_t* status, int32_t* indication); /* status */
unsigned int zop_get_egprs_indication(int32_t* egprs);                   /* status; 1 available */
unsigned int zop_get_mm_lu_state(int32_t* state, int32_t* error);        /* status */
unsigned int zop_get_gmm_rau_state(int32_t* state, int32_t* error);      /* status */
unsigned int zop_get_powerup_flag(uint32_t* flag); /* status, and for a flag above 1 */
unsigned int zop_get_rau_type(uint32_t* type);     /* status */
unsigned int zop_get_carrier(int32_t* carrier);    /* status */

/* Network time as 19 bytes, little-endian: year, month, day, hour, minute, second, weekday (u16
 * each), offset from UTC in quarter hours (s32), daylight saving (u8). Status: no time yet. */
unsigned int zop_get_network_time(uint8_t* time19);

/* System mode: 0 no service, 3 GSM, 5 WCDMA and others. */
unsigned int zop_get_system_mode(uint32_t* mode);

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

/* Version of this library, 17 bytes with its terminator. Needs no link. */
unsigned int zop_get_tq2_version(uint8_t* text, uint32_t* size);

/* ---- SIM card: refusals of the SIM come in *result (0 accepted, 1 refused) ---- */

/* SIM status (2 ready, 3 not initialised, 4 not ready), lock status (2 PIN wanted), PIN retries
 * left. ZOP_ERR_MODEM_FAILURE on a non-zero status. */
unsigned int zop_simcard_status(uint32_t* sim_status, uint32_t* lock_status, uint32_t* retries);

/* ---- radio ---- */

unsigned int zop_get_rssi(int32_t* rssi); /* dBm; the answer must echo the request */

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
