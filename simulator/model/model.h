// What the simulated modem knows: plain values that requests read and scenarios set.
//
// The defaults are a healthy device: SIM ready, registered at home on WCDMA with good signal.
// Numbers are the modem's own codes as sent, by their names in the public headers.
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "simulator/download/boot_rom.h"
#include "simulator/line/frame.h"

namespace sim {

struct Identity {
  std::string imei = "004999010640000";
  std::string imsi = "001010123456789";
  std::string iccid = "89882110000000000017";
  std::string phone_number = "+15550100";
  std::string firmware = "Q71XEB21.004";
  std::string hardware = "QSC6270 rev 3";
  std::string build = "Q71XEB21.004 Jul 01 2010";
  int serial_number = 0x1A2B3C4D;
};

// PLMN entry of a list on the SIM. The technology bytes are 128/0 for UMTS, 0/128 for GSM.
struct Plmn {
  std::string mcc, mnc;
  int technology_1 = 128, technology_2 = 0;
};

struct Sim {
  int status = ZOP_SIM_READY;
  int lock = ZOP_PIN_PERM_DISABLED;
  int retries = 3;  // PIN tries left
  int card_mode = 2;
  std::string pin = "1234";
  std::string key = "12345678";  // unblocking key
  int key_retries = 10;
  int virtual_state = 0;
  std::vector<Plmn> home = {{"001", "01"}};
  std::vector<Plmn> user = {};
  std::vector<Plmn> operators = {{"001", "01"}, {"901", "70"}, {"310", "410", 0, 128}};
  std::vector<Plmn> forbidden = {};
  std::map<int, Bytes> files = {{0x6FAD, {0, 0, 0, 2}}, {0x2FE2, {0x98, 0x88, 0x12, 0x11}}};
};

struct Network {
  std::string name = "Testnet";
  std::string mcc = "001";
  std::string mnc = "01";
  int lac = 0x1A2B;
  int rac = 7;
  int cell_id = 0x00345678;
  int registration = ZOP_REGISTRATION_SUCCESS;
  int roaming = ZOP_ROAMING_HOME;
  int service = ZOP_SERVICE_FULL;
  int home_allowed = 1;  // whether the modem agrees to go to its home network
  int carrier = 0;
};

struct WcdmaCell {
  int set;   // ZOP_CELL_
  int code;  // primary scrambling code
  int ecio;  // dB
};

struct GsmNeighbor {
  int rssi;  // dBm
  int arfcn;
  int bsic;
};

struct GsmBestCell {
  int first, second;  // as the modem numbers them
  int cell_id;
  int channel;
};

struct Radio {
  int system_mode = ZOP_SYSTEM_WCDMA;
  int data_service_mode = ZOP_DATA_HSDPA;
  int channel = 4357;  // UARFCN or ARFCN
  int band = ZOP_BAND_WCDMA_850;
  int rssi = -75;  // dBm
  int egprs = ZOP_EGPRS_NOT_AVAILABLE;
  int hsdpa_status = ZOP_HSDPA_ACTIVE;
  int hsdpa_indication = ZOP_HSPA_HSDPA;
  int drx = 6;
  int mfrm = 4;
  int rscp = -82;      // dBm
  int tx_power = -12;  // dBm
  int pathloss = 90;   // dB
  std::vector<WcdmaCell> cells = {
      {ZOP_CELL_ACTIVE, 100, -5}, {ZOP_CELL_MONITORED, 101, -11}, {ZOP_CELL_DETECTED, 245, -16}};
  std::vector<GsmNeighbor> neighbors = {{-71, 661, 12}, {-84, 675, 33}};
  std::vector<GsmBestCell> best = {{1, 4, 0x345678, 661}};
};

// Mobility and session management, states and 3GPP TS 24.008 causes.
struct State {
  int network_mode = ZOP_NETWORK_MODE_COMBINED;
  int mm_attach = ZOP_ATTACH_ACCEPTED, mm_attach_error = ZOP_CAUSE_NONE;
  int mm_lu = ZOP_LA_UPDATE_ACCEPTED, mm_lu_error = ZOP_CAUSE_NONE;
  int gmm_attach = ZOP_ATTACH_ACCEPTED, gmm_attach_error = ZOP_CAUSE_NONE;
  int gmm_rau = ZOP_RA_UPDATE_ACCEPTED, gmm_rau_error = ZOP_CAUSE_NONE;
  int gmm = ZOP_GMM_REGISTERED;
  int rau_type = 0;
  int pdp = ZOP_PDP_INACTIVE, pdp_reject_reason = ZOP_CAUSE_NONE;
  int pmm = ZOP_PMM_IDLE;
  int call = ZOP_CALL_IDLE;
  int power_up = 1;
};

// Bits of the event flags.
enum { EVENT_ORIGINATED = 1, EVENT_ACTIVATED = 2, EVENT_DEACTIVATED = 4, EVENT_ENDED = 8 };

// Configuration, and the effects of the host's commands.
struct Device {
  int test_mode = 0;  // factory test
  int diag_port = 0;
  int operating_mode = 0;  // last mode-control value
  int selection_mode = ZOP_SELECTION_AUTOMATIC;
  int debug_mode = 0;    // flags events
  int events = 0;        // EVENT_ bits that no host has fetched
  int backup_ready = 0;  // 0 ready
  int backup_value = 1;  // 0: asks for a backup or restore of the NV items
  int end_status = 0;    // of the last call
  std::string called;    // number of the current or last call
  std::vector<std::string> errors = {"boot: watchdog reset"};
  int crash_dump = 0;  // after a crash: waits for a memory dump instead of restarting
  std::map<int, Bytes> nv_backup;
  int crashed = 0;       // starts in its boot ROM, as if it had just crashed
  int half_written = 0;  // images that its flash lacks, bits of FlashImage: it can't boot
  Bytes partition;       // its partition table; downloading another one erases the file system
  std::vector<MemoryRegion> memory = {{1, 0x00800000, 300'000, {}, "RAM", "ram.bin"},
                                      {1, 0xFFFF0000, 4096, {}, "boot ROM", "rom.bin"}};
  std::map<int, Bytes> profiles;  // number (odd, 1..15) -> record of 103 bytes
};

struct Message {
  std::string number, text;
};

struct Clock {
  std::time_t start = 1'279'976'579;  // UTC when the modem was started
  int zone = 0;                       // quarter hours from UTC
  int daylight_saving = 0;
  int provided = 1;  // whether the network has sent its time
};

struct Model {
  Identity identity;
  Sim sim;
  Network network;
  Radio radio;
  State state;
  Device device;
  Clock clock;
  std::vector<Message> outbox;
  std::map<int, Bytes> nv = {  // item number -> 128 bytes or fewer
      {10, {0, 4}},
      {850, {0, 2}},
      {5895, {0}},
      {16685, {}},
      {16687, {0}}};
};

}  // namespace sim
