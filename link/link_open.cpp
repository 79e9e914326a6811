// Link open, probe and close. The probe's answer is not inspected: any bytes that end in a flag
// within one second count as "a modem is there".
#include "link/link_open.h"

#include <string.h>
#include <unistd.h>

#include "include/zop.h"
#include "link/event_listener.h"
#include "link/serial_port.h"
#include "link/upcalls.h"

enum { OPEN_ATTEMPTS = 5, SETTLE_US = 100 };
enum : unsigned { OPEN_OK = 0, OPEN_FAILED = 1, OPEN_READ_ERROR = 2, OPEN_RESERVED = 3 };

// The DIAG timestamp request 0x1D as it goes over the wire: with its CRC and closing flag.
static constexpr uint8_t PROBE[] = {0x1D, 0x1C, 0x3B, 0x7E};

constinit uint32_t block_init_event = 0;

int32_t diag_init_check_1() {
  block_init_event = 1;
  clear_memory();
  memcpy(ft_buff, PROBE, sizeof PROBE);
  if (diag_write(ft_buff, sizeof PROBE) == PORT_ERROR) return PORT_TIMEOUT;
  int32_t answer = diag_read_wait_1sec(fr_buff);
  if (answer == PORT_ERROR || answer == PORT_TIMEOUT) return answer;
  block_init_event = 0;
  return 1;
}

// The link starts free, and without a listener: one that ran before was stopped by zop_close.
static unsigned end_open(unsigned result) {
  SIO_USED_LOCK = 0;
  THREAD_STATUS = 0;
  return result;
}

unsigned int zop_open(const char* path) {
  for (int attempt = 0; attempt < OPEN_ATTEMPTS; ++attempt) {
    diag_settle();  // what still fails on the old link schedules no shutdown of the new one
    zop_debug_end_callback_status = 0;
    int32_t opened = diag_open(path);
    if (opened == PORT_TIMEOUT) return OPEN_RESERVED;  // a result that diag_open never gives
    if (opened == PORT_ERROR) {
      sleep(1);
      continue;
    }
    usleep(SETTLE_US);
    int32_t probe = diag_init_check_1();
    if (probe == 1) return end_open(OPEN_OK);
    diag_close();
    if (probe == PORT_ERROR) return OPEN_READ_ERROR;
  }
  return end_open(OPEN_FAILED);
}

void zop_close() {
  diag_close();
  zop_debug_stop();
}
