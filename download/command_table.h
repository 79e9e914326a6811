// Shared by both download protocols: each command is a row of a table, sent and checked by one
// function.
//
// Packets have an opening and a closing flag. The opening flag of a reply is optional.
#pragma once

#include <stdint.h>

// The payload of a reply, unframed, without its check bytes.
struct Reply {
  const uint8_t* bytes;
  uint32_t length;
};

struct DownloadCommand {
  uint8_t code;
  uint8_t reply;                       // first byte of the expected reply
  uint32_t (*build)(uint8_t* packet);  // fills the packet; its length, 0 on failure
  bool (*accept)(const Reply& reply);  // checks and stores the rest; null: nothing to check
};

// Sends command. True if the expected reply came and was accepted. pause_us is a pause before the
// reply is decoded.
bool send_command(const DownloadCommand& command, uint32_t pause_us);

// Reads a reply to command that was not sent by send_command.
bool receive_reply(const DownloadCommand& command, uint32_t pause_us);

// Builds a packet that consists of the code only.
template <uint8_t CODE>
uint32_t code_alone(uint8_t* packet) {
  packet[0] = CODE;
  return 1;
}
