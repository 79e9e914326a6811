// Captures of the line as pcapng files: every frame as it went over the wire, with its flags and
// check bytes, of link type USER0, direction in the packet's flags. What is no frame (a lone flag,
// the rest before a hang-up) is a packet as well, and so is a hang-up: it has no bytes and a
// comment.
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
// Both throw CaptureError for what is no capture of such a line; name stands for the file.
std::vector<CapturedPacket> parse_capture(View file, const std::string& name);
std::vector<CapturedPacket> load_capture(const std::string& path);

}  // namespace sim
