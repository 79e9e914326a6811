// Multi-byte fields are big-endian in this protocol.
#include "download/dmss_download.h"

#include <string.h>
#include <unistd.h>

#include <iterator>

#include "core/bytes.h"
#include "download/command_table.h"
#include "download/image_set.h"
#include "download/memory_dump.h"
#include "link/serial_port.h"

enum : uint32_t { RAM_ADDRESS = 0x00800028 };
enum { WRITE_DATA = 7, MAX_WRITE = 1017 };  // offset and bytes of one write
enum { ATTEMPTS = 10, RETRY_PAUSE_US = 5000 };
enum : uint8_t { ACK = 0x02, PARAMETERS = 0x08, MEMORY_DEBUG_INFO = 0x11, MEMORY_DATA = 0x13 };

static constinit uint32_t gChunk = 0;  // bytes of the current write

static uint32_t build_write(uint8_t* packet) {
  packet[0] = DMSS_WRITE;
  gChunk = read_image(packet + WRITE_DATA, MAX_WRITE);
  put_be32(packet + 1, RAM_ADDRESS + gImages[gCurrentImage].sent);
  put_be16(packet + 5, gChunk);
  return gChunk == 0 ? 0 : WRITE_DATA + gChunk;
}

static bool count_written(const Reply&) {
  gImages[gCurrentImage].sent += gChunk;
  return true;
}

static uint32_t build_go(uint8_t* packet) {
  packet[0] = DMSS_GO;
  put_be32(packet + 1, RAM_ADDRESS);
  return 5;
}

static constexpr DownloadCommand COMMANDS[] = {
    {DMSS_NOP, ACK, code_alone<DMSS_NOP>, nullptr},
    {DMSS_PARAMETERS, PARAMETERS, code_alone<DMSS_PARAMETERS>, nullptr},
    {DMSS_WRITE, ACK, build_write, count_written},
    {DMSS_GO, ACK, build_go, nullptr},
    {DMSS_MEMORY_DEBUG, MEMORY_DEBUG_INFO, code_alone<DMSS_MEMORY_DEBUG>, accept_region_list},
    {DMSS_MEMORY_READ, MEMORY_DATA, build_memory_read, save_memory},
};

int dload_cmd_write(uint8_t code) {
  for (const DownloadCommand& command : COMMANDS) {
    if (command.code == code) return send_command(command, 0) ? 1 : 0;
  }
  return 0;
}

int dload_wrapper_write(uint8_t code) {
  for (int attempt = 1;; ++attempt) {
    if (dload_cmd_write(code) == 1) return 1;
    if (attempt == ATTEMPTS) return 0;
    usleep(RETRY_PAUSE_US);
  }
}

int stream_is_translating() {
  const Image& image = gImages[gCurrentImage];
  return image.sent < image.size ? 1 : 0;
}

// A chunk that fails is sent again, until the modem is gone. An image that can't be read ends the
// download.
int dload_process() {
  gCurrentImage = IMAGE_RAM;
  if (dload_wrapper_write(DMSS_NOP) == 0) return 0;
  if (dload_wrapper_write(DMSS_PARAMETERS) == 0) return 0;
  while (stream_is_translating() == 1) {
    bool good = dload_wrapper_write(DMSS_WRITE) == 1;
    if (!good && (diag_status() == 0 || gChunk == 0)) return 0;
  }
  (void)dload_cmd_write(DMSS_GO);  // the programmer may start before it replies
  return 1;
}
