// The RAM programmer's download protocol (streaming download): partition table, boot loaders,
// firmware.
#pragma once

#include <stdint.h>

enum StreamingCode : uint8_t {
  STREAM_HELLO = 0x01,
  STREAM_WRITE = 0x07,
  STREAM_RESET = 0x0B,
  STREAM_CLOSE = 0x15,
  STREAM_SECURITY = 0x17,
  STREAM_PARTITION = 0x19,
  STREAM_OPEN = 0x1B,
};

// hostdl_cmd_write sends a command once, hostdl_wrapper_write up to twenty times, in ten passes. 1
// if the expected reply came, otherwise 0.
int hostdl_cmd_write(uint8_t code);
int hostdl_wrapper_write(uint8_t code);

// Stages 2 and 3: the partition table, then the images. 1, or 0 after printing a message.
int hostdl_process();
