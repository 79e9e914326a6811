// Captures of the line as pcapng files: every frame as sent, with its flags and check bytes, of
// link type USER0, direction in the packet's flags. Bytes outside a frame (a lone flag, the rest
// before a hang-up) are packets too, and so is a hang-up: a packet with a comment and no bytes.
#pragma once

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/line/frame.h"

namespace sim {

struct CapturedPacket {
  enum Direction { FROM_MODEM = 1, TO_MODEM = 2 };  // as pcapng counts them
  std::chrono::microseconds at;                     // since 1970
  Direction direction;
  Bytes bytes;  // none: the device was gone
};

// The file's beginning, and a packet of it. Throw std::runtime_error when they can't be written.
void write_capture_header(FILE* file);
void write_captured(FILE* file, const CapturedPacket& packet);

// What is wrong with a capture, as "FILE: reason".
struct CaptureError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The packets of a capture, in order. A file that is cut within a packet gives those before it.
// Both throw CaptureError for any other file; name is the file's in its message.
std::vector<CapturedPacket> parse_capture(View file, const std::string& name);
std::vector<CapturedPacket> load_capture(const std::string& path);

}  // namespace sim
