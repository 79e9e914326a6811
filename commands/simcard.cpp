// SIM card operations: command byte 210 with an operation code. They clear the buffers before they
// test the link, so that a PIN never stays in a request buffer.
#include "commands/exchange.h"
#include "link/serial_port.h"

enum { SIM_COMMAND = 210, SIM_STATUS = 0 };

static unsigned begin_sim(uint8_t operation) {
  clear_memory();
  if (diag_status() == 0) return ZOP_ERR_NOT_OPEN;
  ft_buff[0] = SIM_COMMAND;
  ft_buff[SUBCOMMAND] = operation;
  return ZOP_SUCCESS;
}

unsigned zop_simcard_status(uint32_t* sim_status, uint32_t* lock_status, uint32_t* retries) {
  if (unsigned error = begin_sim(SIM_STATUS)) return error;
  if (unsigned error = exchange(PLAIN_REQUEST)) return error;
  if (unsigned error = status(STATUS_BYTE3)) return error;
  copy_fields({u8(6, sim_status), u8(7, lock_status), u8(8, retries)});
  return ZOP_SUCCESS;
}
