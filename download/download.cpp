// The whole download: image set, boot ROM, RAM programmer.
#include <unistd.h>

#include "download/dmss_download.h"
#include "download/image_set.h"
#include "download/streaming_download.h"
#include "include/modem_download.h"
#include "link/serial_port.h"

enum { PROGRAMMER_START_S = 10 };

static bool open_port() { return diag_status() == 1 || diag_open(MODEM_DEVICE) == 1; }

static bool fail_with(const char* message) {
  print_line(message);
  return false;
}

static bool reopen_port() {
  diag_close();
  sleep(PROGRAMMER_START_S);
  return diag_open(MODEM_DEVICE) == 1;
}

static bool download() {
  if (load_config() == 0) return fail_with("STAGE1: Err-Load Config");
  if (!open_port() || dload_process() == 0) return fail_with("STAGE1: Err-Load RAM");
  if (!reopen_port()) return false;
  return hostdl_process() == 1;
}

// The port is closed at the end: the modem restarts, or its state is unknown.
int modem_dload_process() {
  bool good = download();
  if (good) {
    FW_DL_STATUS = 100;
    modem_status_update(FW_DL_STATUS);
  }
  diag_close();
  free_config();
  return good ? 1 : 0;
}
