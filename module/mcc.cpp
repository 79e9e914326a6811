// The country that the modem is in. A file remembers it, so that each change is logged once, also
// across restarts and reboots.
//
// vurn_get_mcc may be called on any thread and does not take gModuleMutex: it has its own buffers,
// and its own lock for the last country.
#define LOG_SOURCE "zop_module"

#include "module/mcc.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "commands/exchange.h"
#include "core/log.h"
#include "core/module_state.h"
#include "include/zop_diag_info.h"

static constexpr char MCC_FILE[] = "/var/local/wan/mcc";
enum { FILE_MODE = 0644 };
static constexpr uint8_t MCC_REQUEST[] = {ZOP_VENDOR_COMMAND, '0', 0};

// Three characters and a terminator.
using Mcc = char[ZOP_MCC_SIZE + 1];

static constinit pthread_mutex_t gMccMutex = PTHREAD_MUTEX_INITIALIZER;
static constinit Mcc gLastMcc = "";  // of the last call; under gMccMutex

static int prv_open_mcc_file(int flags) {
  int fd;
  do fd = open(MCC_FILE, flags | O_CLOEXEC, FILE_MODE);
  while (fd < 0 && errno == EINTR);
  return fd;
}

static void prv_log_open_error() {
  LOG_E("E zop:openfile:name=\"%s\",errno=%d:can't open file", MCC_FILE, errno);
}

static bool prv_read_mcc(int fd, Mcc& mcc) {
  errno = 0;
  for (size_t done = 0; done < ZOP_MCC_SIZE;) {
    ssize_t n = read(fd, mcc + done, ZOP_MCC_SIZE - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

static bool prv_write_mcc(int fd, const Mcc& mcc) {
  errno = 0;
  for (size_t done = 0; done < ZOP_MCC_SIZE;) {
    ssize_t n = write(fd, mcc + done, ZOP_MCC_SIZE - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

// An incomplete file would prevent all later reports; a missing one does not.
static void prv_remove_mcc_file() { unlink(MCC_FILE); }

// The file is not truncated first: it always holds three characters.
static void prv_remember_mcc(const Mcc& mcc) {
  LOG_I("I zop:mccchanged:mcc=%s:mcc has changed", mcc);
  int fd = prv_open_mcc_file(O_WRONLY | O_CREAT);
  if (fd < 0) return prv_log_open_error();
  if (!prv_write_mcc(fd, mcc)) {
    LOG_E("E zop:writefile:name=\"%s\",errno=%d:can't write file", MCC_FILE, errno);
    prv_remove_mcc_file();
  }
  close(fd);
}

// If the file can't be opened or read, no change is reported.
static void prv_report_mcc_change(const Mcc& mcc) {
  int fd = prv_open_mcc_file(O_RDONLY);
  if (fd < 0 && errno != ENOENT) return prv_log_open_error();
  if (fd < 0) {
    LOG_D(VURN_LOG_TRACE, "D def:current MCC = %s no previous MCC", mcc);
    return prv_remember_mcc(mcc);
  }
  Mcc previous = "";
  bool whole = prv_read_mcc(fd, previous);
  int error = errno;
  close(fd);
  if (!whole) {
    LOG_E("E zop:readfile:name=\"%s\",errno=%d:can't read file", MCC_FILE, error);
    if (error == 0) prv_remove_mcc_file();  // it can be read but is too short
    return;
  }
  LOG_D(VURN_LOG_TRACE, "D def:current MCC = %s previous MCC = %s", mcc, previous);
  if (strcmp(mcc, previous) != 0) prv_remember_mcc(mcc);
}

// An invalid MCC counts as a change too. After a failure the file is tried again at the next
// change.
static void prv_note_mcc(const Mcc& mcc) {
  ScopedLock lock(gMccMutex);
  if (strcmp(mcc, gLastMcc) == 0) return;
  prv_report_mcc_change(mcc);
  memcpy(gLastMcc, mcc, sizeof gLastMcc);
}

int vurn_get_mcc(int* mcc) {
  if (mcc == nullptr) return VURN_ERR_NULL_ARGUMENT;
  LOG_D(VURN_LOG_TRACE, "D zop:getting mcc to see if it has changed");
  uint8_t response[RESPONSE_SIZE];
  if (unsigned error = unlocked_exchange({MCC_REQUEST, sizeof MCC_REQUEST}, response)) {
    LOG_GET_ERROR("mcc", error);
    return VURN_ERR_FAILED;
  }
  Mcc text = "";
  memcpy(text, response + ANSWER_PAYLOAD, ZOP_MCC_SIZE);
  prv_note_mcc(text);
  *mcc = atoi(text);
  if (*mcc != 0) return VURN_OK;
  LOG_E("E zop:getmcc:mcc=%s:bad value for mcc", text);
  return VURN_ERR_FAILED;
}

void prv_report_mcc_mnc() {
  LOG_I("I zop:mccmnc:mcc=%.3s,mnc=%.3s:mcc mnc report", gDiagInfo.screen.mcc,
        gDiagInfo.screen.mnc);
}
