// What both download protocols share: a command is a row, and is sent and checked by one function.
//
// Packets go out with an opening and a closing flag. A reply's opening flag, when it has one, is
// not part of the frame.
#pragma once

#include <stdint.h>

// The payload of a reply, unframed and without its check bytes.
struct Reply {
  const uint8_t* bytes;
  uint32_t length;
};

struct DownloadCommand {
  uint8_t code;
  uint8_t reply;                       // first byte of a good reply
  uint32_t (*build)(uint8_t* packet);  // fills in the packet and gives its length; 0 fails
  bool (*accept)(const Reply& reply);  // looks at the rest, and takes note; null when all is said
};

// Whether a reply to command came and was good. pause_us: before it is decoded.
bool send_command(const DownloadCommand& command, uint32_t pause_us);

// The reply to something that was sent already.
bool receive_reply(const DownloadCommand& command, uint32_t pause_us);

// A packet of the code alone.
template <uint8_t CODE>
uint32_t code_alone(uint8_t* packet) {
  packet[0] = CODE;
  return 1;
}
