// Opens, probes and closes the link. The content of the probe's answer does not matter: any bytes
// that end with a flag within one second mean that a modem is there.
#include <string.h>
#include <unistd.h>

#include "include/zop.h"
#include "link/event_listener.h"
#include "link/exchange.h"
#include "link/owed_answers.h"
#include "link/serial_port.h"
#include "link/upcalls.h"

enum { OPEN_ATTEMPTS = 5, SETTLE_US = 100 };

// The DIAG time stamp request 0x1D as it is on the wire, with its CRC and closing flag.
static constexpr uint8_t PROBE[] = {0x1D, 0x1C, 0x3B, 0x7E};
enum { PROBE_REQUEST = 1 };

// Sends the probe and waits one second for any frame. 1 if one arrives, PORT_TIMEOUT if none
// arrives or the probe can't be written, PORT_ERROR if the read fails.
static int32_t diag_init_check_1() {
  clear_memory();
  memcpy(ft_buff, PROBE, sizeof PROBE);
  Response response = {fr_buff};
  int32_t received = line_exchange({ft_buff, PROBE_REQUEST}, PROBE_POLICY, &response);
  if (received == PORT_UNSENT || received == PORT_TIMEOUT) return PORT_TIMEOUT;
  return received > 0 ? 1 : int32_t{PORT_ERROR};
}

// An open link starts without a listener.
static unsigned end_open(unsigned result) {
  THREAD_STATUS = LISTENER_STOPPED;
  return result;
}

unsigned int zop_open(const char* path) {
  for (int attempt = 0; attempt < OPEN_ATTEMPTS; ++attempt) {
    bool opened = diag_open(path) == 1;
    zop_debug_end_callback_status = 0;  // cancels a stop scheduled by the old link
    if (!opened) {
      sleep(1);
      continue;
    }
    usleep(SETTLE_US);
    int32_t probe = diag_init_check_1();
    if (probe == 1 && is_any_owed()) read_owed_answers();  // from earlier probes of a slow modem
    if (probe == 1 && diag_status() == 1) return end_open(ZOP_OPEN_UP);
    diag_close();
    if (probe == PORT_ERROR) return ZOP_OPEN_READ_ERROR;
  }
  return end_open(ZOP_OPEN_NO_ANSWER);
}

void zop_close() {
  diag_close();
  zop_debug_stop();
}
