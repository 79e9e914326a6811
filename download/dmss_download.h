// The boot ROM's download protocol (DMSS download): loads the RAM programmer, and reads memory.
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

// One attempt, and up to ten of them 5 ms apart. 1 when the expected reply came, else 0.
int dload_cmd_write(uint8_t code);
int dload_wrapper_write(uint8_t code);

// Loads the RAM programmer and starts it. 1, or 0.
int dload_process();

// 1 while the current image has bytes to send.
int stream_is_translating();
