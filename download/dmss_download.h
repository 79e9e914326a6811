// The boot ROM's download protocol (DMSS download): loads the RAM programmer and reads memory.
#pragma once

#include <stdint.h>

enum DmssCode : uint8_t {
  DMSS_GO = 0x05,
  DMSS_NOP = 0x06,
  DMSS_PARAMETERS = 0x07,
  DMSS_WRITE = 0x0F,
  DMSS_MEMORY_DEBUG = 0x10,
  DMSS_MEMORY_READ = 0x12,
};

// dload_cmd_write sends a command once, dload_wrapper_write up to ten times, 5 ms apart. 1 if the
// expected reply came, otherwise 0.
int dload_cmd_write(uint8_t code);
int dload_wrapper_write(uint8_t code);

// Loads the RAM programmer and starts it. 1 on success, otherwise 0.
int dload_process();

// 1 if the current image has bytes left to send, otherwise 0.
int stream_is_translating();
