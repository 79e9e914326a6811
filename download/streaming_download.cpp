// Multi-byte fields are little-endian in this protocol.
#include "download/streaming_download.h"

#include <string.h>
#include <unistd.h>

#include "core/bytes.h"
#include "download/command_table.h"
#include "download/dmss_download.h"
#include "download/image_set.h"
#include "link/frame_codec.h"
#include "link/serial_port.h"

enum { MAX_STREAM = 2048, STREAM_DATA = 5, PARTITION_DATA = 2 };
enum { PASSES = 10, RETRY_PAUSE_US = 5000, REPLY_PAUSE_US = 500 };
enum { AFTER_LOST_REPLY_US = 1000, AROUND_IMAGE_US = 2000 };
enum : uint8_t { VERSION = 3, FEATURES = 0x09, UNTRUSTED = 0x01 };
enum : uint8_t { STATUS_GOOD = 0 };

static constexpr char HELLO[] = "QCOM fast download protocol host";  // 32 characters are sent

static constinit uint32_t gChunk = 0;           // bytes of the current write
static constinit bool gReplyIsPending = false;  // the reply to a write was lost

static uint32_t build_hello(uint8_t* packet) {
  packet[0] = STREAM_HELLO;
  memcpy(packet + 1, HELLO, 32);
  packet[33] = VERSION;
  packet[34] = VERSION;  // the oldest compatible one
  packet[35] = FEATURES;
  return 36;
}

static uint32_t build_security(uint8_t* packet) {
  packet[0] = STREAM_SECURITY;
  packet[1] = UNTRUSTED;
  return 2;
}

static uint32_t build_partition(uint8_t* packet) {
  packet[0] = STREAM_PARTITION;
  packet[1] = efs_clear;  // 1: overrides the modem's table
  return PARTITION_DATA + read_image(packet + PARTITION_DATA, MAX_STREAM);
}

// If the table differs from the modem's, the file system is erased and all images are written.
static bool accept_partition(const Reply& reply) {
  if (reply.length < 2) return false;
  bool differs = reply.bytes[1] != STATUS_GOOD;
  efs_clear = differs ? 1 : 0;
  if (differs) gModemOnly = 0;
  return true;
}

static uint32_t build_open(uint8_t* packet) {
  packet[0] = STREAM_OPEN;
  packet[1] = static_cast<uint8_t>(gImages[gCurrentImage].type);
  return 2;
}

static bool accept_open(const Reply& reply) {
  return reply.length >= 2 && reply.bytes[1] == STATUS_GOOD;
}

static uint32_t build_stream(uint8_t* packet) {
  packet[0] = STREAM_WRITE;
  put_le32(packet + 1, gImages[gCurrentImage].sent);
  gChunk = read_image(packet + STREAM_DATA, MAX_STREAM);
  return gChunk == 0 ? 0 : STREAM_DATA + gChunk;
}

static bool accept_stream(const Reply& reply) {
  Image& image = gImages[gCurrentImage];
  if (reply.length < 5 || get_le32(reply.bytes + 1) != image.sent) return false;
  image.sent += gChunk;
  return true;
}

static constexpr DownloadCommand COMMANDS[] = {
    {STREAM_HELLO, 0x02, build_hello, nullptr},
    {STREAM_SECURITY, 0x18, build_security, nullptr},
    {STREAM_PARTITION, 0x1A, build_partition, accept_partition},
    {STREAM_OPEN, 0x1C, build_open, accept_open},
    {STREAM_WRITE, 0x08, build_stream, accept_stream},
    {STREAM_CLOSE, 0x16, code_alone<STREAM_CLOSE>, nullptr},
    {STREAM_RESET, 0x0C, code_alone<STREAM_RESET>, nullptr},
};

// A write whose reply was lost is not repeated: a single flag makes the programmer reply again.
static bool ask_for_the_reply(const DownloadCommand& command) {
  static constexpr uint8_t LONE_FLAG[] = {FRAME_FLAG};
  if (diag_write(LONE_FLAG, sizeof LONE_FLAG) <= 0) return false;
  return receive_reply(command, REPLY_PAUSE_US);
}

int hostdl_cmd_write(uint8_t code) {
  for (const DownloadCommand& command : COMMANDS) {
    if (command.code != code) continue;
    bool again = code == STREAM_WRITE && gReplyIsPending;
    bool good = again ? ask_for_the_reply(command) : send_command(command, REPLY_PAUSE_US);
    return good ? 1 : 0;
  }
  return 0;
}

static int one_pass(uint8_t code) {
  if (hostdl_cmd_write(code) == 1) return 1;
  gReplyIsPending = true;
  usleep(RETRY_PAUSE_US);
  if (hostdl_cmd_write(code) == 0) return 0;
  if (code == STREAM_WRITE) usleep(AFTER_LOST_REPLY_US);
  return 1;
}

// A pending reply of an earlier command does not count.
int hostdl_wrapper_write(uint8_t code) {
  gReplyIsPending = false;
  int result = 0;
  for (int pass = 1; result == 0; ++pass) {
    result = one_pass(code);
    if (result == 1 || pass == PASSES) break;
    usleep(RETRY_PAUSE_US);
  }
  gReplyIsPending = false;
  return result;
}

static bool enter_programmer() {
  return hostdl_wrapper_write(STREAM_HELLO) == 1 && hostdl_wrapper_write(STREAM_SECURITY) == 1;
}

static bool send_partition_table() {
  gCurrentImage = IMAGE_PARTITION;
  return hostdl_wrapper_write(STREAM_PARTITION) == 1;
}

static bool fail_with(const char* message) {
  print_line(message);
  return false;
}

static bool partition_stage() {
  if (efs_clear != 0) print_line("STAGE2: Erasing Start");
  if (!send_partition_table()) return fail_with("STAGE2: Err-Erasing");
  if (efs_clear == 0) return true;
  print_line("STAGE2: Erasing Start");
  if (!enter_programmer() || !send_partition_table()) return fail_with("STAGE2: Err-Erasing");
  return true;
}

// Progress of the firmware image only, which is by far the longest.
static void report_progress(int32_t percent_at_open) {
  const Image& image = gImages[IMAGE_AMSS];
  int64_t left = 100 - percent_at_open;
  FW_DL_STATUS = percent_at_open + static_cast<int32_t>(image.sent * left / image.size);
  modem_status_update(FW_DL_STATUS);
}

static bool write_image(uint8_t row) {
  gCurrentImage = row;
  int32_t percent_at_open = FW_DL_STATUS;
  if (hostdl_wrapper_write(STREAM_OPEN) == 0) return false;
  usleep(AROUND_IMAGE_US);
  while (stream_is_translating() == 1) {
    if (row == IMAGE_AMSS) report_progress(percent_at_open);
    if (hostdl_wrapper_write(STREAM_WRITE) == 0) return false;
  }
  usleep(AROUND_IMAGE_US);
  (void)hostdl_wrapper_write(STREAM_CLOSE);  // every write has been acknowledged
  return true;
}

static bool write_stage() {
  print_line("STAGE3: Writing Start");
  uint8_t first = gModemOnly != 0 ? IMAGE_AMSS : IMAGE_DBL;
  for (uint8_t row = first; row < IMAGE_COUNT; ++row) {
    if (!write_image(row)) return fail_with("STAGE3: Err-Writing");
  }
  return true;
}

int hostdl_process() {
  print_line("STAGE1: Loading Success");
  (void)hostdl_wrapper_write(STREAM_HELLO);  // wakes the programmer, which has just started
  if (!enter_programmer()) return fail_with("STAGE1: Err-RAM Entry");
  if (!partition_stage() || !write_stage()) return 0;
  (void)hostdl_cmd_write(STREAM_RESET);  // the modem restarts instead of answering
  return 1;
}
