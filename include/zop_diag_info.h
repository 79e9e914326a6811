/* The diagnostic record gDiagInfo: what the module knows about the modem, the SIM and the WAN link,
 * and the items of the report made from it.
 *
 * The first 345 bytes are the modem's field-test screen as received: packed, little-endian, to be
 * read byte by byte. The rest holds ordinary words and texts. The module writes the record, the
 * report and the host read it. Its 2152 bytes have the same layout on every platform. */
#ifndef ZOP_DIAG_INFO_H
#define ZOP_DIAG_INFO_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Values of zop_screen.system_mode that select a member of the union. They are ZOP_SYSTEM_GSM and
 * ZOP_SYSTEM_WCDMA of zop.h, which also defines the values of the other fields. */
enum { ZOP_SCREEN_GSM = 3, ZOP_SCREEN_WCDMA = 5 };

/* Values of zop_screen.selection_mode: how the network is selected. */
enum { ZOP_SELECTION_AUTOMATIC = 0, ZOP_SELECTION_MANUAL = 1 };

/* zop_diag_info.bars while they are not known. */
enum { ZOP_BARS_UNKNOWN = -2 };

/* One cell of the WCDMA sets. An entry whose scrambling code and Ec/Io are zero ends the list. */
typedef struct {
  uint8_t set[2];             /* u16: ZOP_CELL_ACTIVE, else monitored or detected */
  uint8_t scrambling_code[2]; /* u16: primary scrambling code */
  uint8_t ecio[2];            /* s16: Ec/Io, dB */
} zop_wcdma_cell;

/* One GSM neighbour cell. */
typedef struct {
  uint8_t rssi[2];  /* s16: dBm */
  uint8_t arfcn[2]; /* u16 */
  uint8_t bsic;     /* u8 */
} zop_gsm_neighbor;

/* One of the six best GSM cells. The report shows its numbers as c;d;a;b. */
typedef struct {
  uint8_t a;
  uint8_t b;
  uint8_t unused;
  uint8_t c[4]; /* u32 */
  uint8_t d[2]; /* u16 */
} zop_gsm_best_cell;

/* The screen from byte 117 on, if the modem is in WCDMA. */
typedef struct {
  uint8_t rscp[2]; /* u16: magnitude of the RSCP, shown negated, dBm */
  zop_wcdma_cell cells[32];
  uint8_t drx[2]; /* u16: DRX cycle length coefficient */
  uint8_t hsdpa_status;
  uint8_t hsdpa_indication;
} zop_wcdma_screen;

/* The screen from byte 117 on, if the modem is in GSM. */
typedef struct {
  uint8_t pathloss[4];       /* s32: dB */
  uint8_t neighbor_count[4]; /* u32 */
  zop_gsm_neighbor neighbors[32];
  uint8_t best_count[4]; /* u32 */
  zop_gsm_best_cell best[6];
  uint8_t mfrm; /* multiframes between paging */
  uint8_t egprs_indication;
} zop_gsm_screen;

/* The field-test screen as the modem sends it, 345 bytes. */
typedef struct {
  uint8_t system_mode; /* ZOP_SCREEN_GSM, ZOP_SCREEN_WCDMA, or others without service */
  uint8_t service_status;
  uint8_t registration_status;
  char network_name[32];
  char imei[16];
  char imsi[16];
  uint8_t channel[4]; /* s32: UARFCN or ARFCN */
  uint8_t cell_id[4]; /* u32 */
  uint8_t call_status;
  char mcc[3];
  char mnc[3];
  char lac[4];         /* location area code, hexadecimal characters */
  uint8_t rac[4];      /* s32 */
  uint8_t rssi[4];     /* s32: dBm */
  uint8_t tx_power[4]; /* s32: dBm */
  uint8_t band[4];     /* s32 */
  uint8_t network_mode;
  uint8_t mm_attach_state;
  uint8_t mm_attach_error;
  uint8_t mm_lu_state;
  uint8_t mm_lu_error;
  uint8_t gmm_attach_state;
  uint8_t gmm_attach_error;
  uint8_t gmm_rau_state;
  uint8_t gmm_rau_error;
  uint8_t gmm_state;
  uint8_t pdp_state;
  uint8_t pdp_reject_reason;
  uint8_t pmm_mode;
  uint8_t test_mode;
  uint8_t selection_mode;
  union {
    zop_wcdma_screen wcdma;
    zop_gsm_screen gsm;
  } radio;
} zop_screen;

/* All data of the report. */
typedef struct {
  zop_screen screen;
  char firmware[64];
  char hardware[64];
  char library[64];
  uint8_t network_time[19]; /* as zop_get_network_time; zeros if not provided */
  int32_t roaming;          /* raw roaming indicator, ZOP_ROAMING_ */
  char phone_number[16];
  char iccid[24];
  int32_t sim_status;
  int32_t lock_status;
  int32_t pin_retries;
  int32_t data_service_mode;
  /* PLMN lists, each with the count that the modem sent: read at most 20 entries of a block, 10 of
   * the home list and 20 of the forbidden list. */
  uint8_t oplmn[7][161]; /* operator PLMN list in blocks of 20 entries */
  uint8_t hplmn[161];
  uint8_t rplmn[6];
  uint8_t fplmn[121];
  uint32_t oplmn_count;      /* entries of the operator list */
  uint32_t screen_time;      /* wall clock of the last screen, 0 if none yet */
  int32_t local_time_offset; /* seconds from UTC, -1 if not provided */
  uint32_t awake_seconds;    /* since boot */
  uint32_t asleep_seconds;
  uint32_t pppd_start; /* seconds after boot, 0 without pppd */
  uint32_t pppd_pid;
  uint32_t last_ring_time; /* wall clock, 0 if none yet */
  char local_address[16];  /* of ppp0, or why there is none */
  char peer_address[16];
  int32_t bars;      /* 1..5, ZOP_BARS_NONE, ZOP_BARS_UNKNOWN */
  uint32_t rx_bytes; /* of ppp0, like the next three; 0xFFFFFFFF if not known */
  uint32_t tx_bytes;
  uint32_t rx_errors;
  uint32_t tx_errors;
  uint32_t name_servers[2]; /* as inet_aton stores them, 0 if none */
  uint32_t ring_counts[6];  /* wake-ups by ring origin: 0 to 4, all others */
  uint8_t last_ring_origin; /* 0..5 */
} zop_diag_info;

/* The one record; the report is made from it. */
extern zop_diag_info gDiagInfo;

/* ---- the items of the report ---- */

/* Types of an item. */
enum {
  ZOP_ITEM_END = 1,      /* marks the end of the table */
  ZOP_ITEM_HEADER = 2,   /* heading of a section */
  ZOP_ITEM_UNSIGNED = 3, /* size 1, 2 or 4 bytes */
  ZOP_ITEM_SIGNED = 4,   /* the same */
  ZOP_ITEM_FLOAT = 5,    /* 32 bits */
  ZOP_ITEM_STRING = 6,   /* size bytes; 0: up to a zero or the end of its field */
  ZOP_ITEM_EXCEPTION = 7 /* the exception's name */
};

/* Flags of an item. */
enum {
  ZOP_ITEM_SYSLOG = 0x01,     /* in the report to syslog */
  ZOP_ITEM_LOG_STRING = 0x02, /* in the log string */
  ZOP_ITEM_SPECIAL = 0x04,    /* has no value in memory */
  ZOP_ITEM_DOTS = 0x10,       /* in syslog a ':' of the value becomes '.', not '=' */
  ZOP_ITEM_SNAPSHOT = 0x20    /* in a diagnostic snapshot */
};

typedef struct zop_log_item zop_log_item;

/* Formats an item's value as text. Returns 1 to show the item, 0 to omit it. reserved is 0. */
typedef int zop_log_format(const zop_log_item* item, const char** text, int* length, int reserved);

struct zop_log_item {
  const char* key;   /* name in syslog; null: label is used */
  const char* label; /* name in the log string */
  uint16_t keyLen;   /* lengths of both, set by vurn_open */
  uint16_t labelLen;
  uint8_t type;
  uint8_t flags;
  int16_t size;
  const void* value;      /* in gDiagInfo */
  zop_log_format* format; /* null: formatted by type */
};

/* In the order of the report; the renderer reads it. */
extern zop_log_item gLogItems[];

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
