// Before a download: reads the version and switches to download mode. After it: waits for the new
// firmware and restores the modem's NV items. Uses the diagnostic link and its buffers.
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "commands/exchange.h"
#include "download/image_set.h"
#include "include/modem_download.h"
#include "include/zop.h"
#include "link/frame_codec.h"

namespace {
enum DiagCode : uint8_t {
  DIAG_MODE_CONTROL = 41,
  DIAG_DOWNLOAD_MODE = 58,
  DIAG_BUILD_VERSION = 124,
  DIAG_READINESS = 207,
  DIAG_NV_BACKUP = 214,
  DIAG_NV_RESTORE = 215,
  DIAG_AFTER_CONNECT = 217,  // before each readiness poll
  DIAG_NV_REBUILD = 218,
};
}  // namespace

enum { ATTEMPTS = 10, RETRY_PAUSE_US = 5000, READINESS_POLLS = 20 };
enum { BOOT_S = 10, AFTER_BACKUP_S = 5, SETTLE_S = 10 };
enum { VERSION_TEXT = 12, READY = 5, READINESS_VALUE = 6 };  // offsets in answers

static constexpr char VERSION_FAMILY[] = "Q71XEB";
enum { FAMILY_LENGTH = 6 };

static constinit char gModemVersion[VERSION_TEXT_SIZE] = "";
static constinit uint8_t gReady = 0;
static constinit uint8_t gReadinessValue = 0;
static constinit int gNvStep = MODEM_NV_UNTOUCHED;  // of an update that another process began

// ---- commands ----

static void take_version() {
  memset(gModemVersion, 0, sizeof gModemVersion);
  memccpy(gModemVersion, fr_buff + VERSION_TEXT, '\0', sizeof gModemVersion - 1);
}

static void take_readiness() {
  gReady = fr_buff[READY] == 0;
  gReadinessValue = fr_buff[READINESS_VALUE];
}

namespace {
// A request, its length, and what reads the answer. The answer's first byte echoes the command.
struct DiagCommand {
  uint8_t request[3];
  uint8_t length;
  void (*take)();
};
}  // namespace

static constexpr DiagCommand COMMANDS[] = {
    {{DIAG_BUILD_VERSION}, 1, take_version}, {{DIAG_DOWNLOAD_MODE}, 1, nullptr},
    {{DIAG_AFTER_CONNECT}, 1, nullptr},      {{DIAG_READINESS, 'L', 0}, 3, take_readiness},
    {{DIAG_NV_BACKUP}, 1, nullptr},          {{DIAG_NV_REBUILD}, 1, nullptr},
    {{DIAG_MODE_CONTROL, 1, 0}, 3, nullptr}, {{DIAG_NV_RESTORE}, 1, nullptr},
};

static int diag_cmd_write(uint8_t code) {
  for (const DiagCommand& command : COMMANDS) {
    if (command.request[0] != code) continue;
    clear_memory();
    put_request(0, command.request, command.length);
    if (direct_exchange(command.length) != ZOP_SUCCESS || fr_buff[0] != code) return 0;
    if (command.take != nullptr) command.take();
    return 1;
  }
  return 0;
}

static int diag_wrapper_write(uint8_t code) {
  for (int attempt = 1;; ++attempt) {
    if (diag_cmd_write(code) == 1) return 1;
    if (attempt == ATTEMPTS) return 0;
    usleep(RETRY_PAUSE_US);
  }
}

// ---- before the download ----

int modem_diag_process() {
  if (diag_wrapper_write(DIAG_BUILD_VERSION) == 0) return 0;
  return diag_wrapper_write(DIAG_DOWNLOAD_MODE);
}

// ---- after the download ----

static bool reconnect(const char* path) {
  for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
    unsigned result = zop_open(path);
    if (result == ZOP_OPEN_UP) return true;
    if (result == ZOP_OPEN_READ_ERROR) zop_close();
    sleep(1);
  }
  return false;
}

static bool wait_until_ready() {
  gReady = gReadinessValue = 0;
  for (int poll = 0; poll < READINESS_POLLS; ++poll) {
    sleep(1);
    if (diag_wrapper_write(DIAG_READINESS) == 0) return false;
    if (gReady != 0) return true;
  }
  return false;
}

// Two ASCII digits.
static int get_atoi(char tens, char units) { return 10 * tens + units - 528; }

// The family is the two digits after the prefix. Versions without the prefix are all one family.
static bool same_version_family() {
  bool known = strncmp(gVersionInfo, VERSION_FAMILY, FAMILY_LENGTH) == 0 &&
               strncmp(gModemVersion, VERSION_FAMILY, FAMILY_LENGTH) == 0;
  if (!known) return true;
  const char* new_digits = gVersionInfo + FAMILY_LENGTH;
  const char* old_digits = gModemVersion + FAMILY_LENGTH;
  return get_atoi(new_digits[0], new_digits[1]) == get_atoi(old_digits[0], old_digits[1]);
}

static bool nv_backup() {
  if (diag_wrapper_write(DIAG_NV_BACKUP) == 0) return false;
  print_line("DLOAD: NV Backup");
  sleep(AFTER_BACKUP_S);
  return true;
}

// The modem restarts instead of answering.
static bool nv_rebuild(const char* path) {
  clear_memory();
  ft_buff[0] = DIAG_NV_REBUILD;
  send_unanswered({ft_buff, 1});
  zop_close();
  print_line("DLOAD: NV Rebuild");
  sleep(SETTLE_S);
  return reconnect(path);
}

static bool nv_restore() {
  if (gReadinessValue == 0) {
    if (diag_wrapper_write(DIAG_NV_RESTORE) == 0) return false;
    print_line("DLOAD: NV Restore");
  }
  zop_close();
  sleep(SETTLE_S);
  return true;
}

static bool is_ready() { return diag_wrapper_write(DIAG_AFTER_CONNECT) == 1 && wait_until_ready(); }

// A readiness value of 0 requests a backup. With another value nothing is done if the family has
// not changed. An update that is resumed goes on after its last step.
static bool renew_nv_items(const char* path, int step) {
  if (!reconnect(path)) return false;
  if (step < MODEM_NV_REBUILT) {
    if (!is_ready()) return false;
    bool begins = step == MODEM_NV_UNTOUCHED;
    if (begins && gReadinessValue != 0 && same_version_family()) return true;
    if (begins && gReadinessValue == 0 && !nv_backup()) return false;
    if (!nv_rebuild(path)) return false;
  }
  return diag_wrapper_write(DIAG_MODE_CONTROL) == 1 && is_ready() && nv_restore();
}

int modem_dload_end_process(const char* path) {
  int step = gNvStep;
  gNvStep = MODEM_NV_UNTOUCHED;  // of one update only
  if (gHasVersionInfo == 0 || step == MODEM_NV_RESTORED) return 1;
  sleep(BOOT_S);
  bool good = renew_nv_items(path, step);
  zop_close();
  return good ? 1 : 0;
}

void modem_resume_update(const char* old_version, const char* new_version, int nv_step) {
  snprintf(gModemVersion, sizeof gModemVersion, "%s", old_version);
  gHasVersionInfo = new_version != nullptr;
  snprintf(gVersionInfo, sizeof gVersionInfo, "%s", gHasVersionInfo != 0 ? new_version : "");
  gNvStep = nv_step;
}
