// Bringing the link up: open the port, prove that a modem answers, retry. zop_open and zop_close
// are declared in zop.h.
#pragma once

#include <stdint.h>

// 1 while a probe is in flight, and after a probe without an answer.
extern uint32_t block_init_event;

// Sends the probe and waits one second for any frame. 1 when one came, PORT_TIMEOUT when none came
// or the probe could not be written, PORT_ERROR when the read failed.
int32_t diag_init_check_1();
