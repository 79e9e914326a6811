// Records everything on the modem's line into a pcapng file, while it exists.
#pragma once

#include <cstdio>
#include <mutex>
#include <string>

#include "zopctl/host/host_calls.h"
#include "zopctl/host/redaction.h"

namespace zopctl {

class Capture {
 public:
  // To a file, or with "-" to standard output, and what the program prints goes to standard error.
  // Throws Failure.
  Capture(const std::string& path, bool redacted);
  ~Capture();
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;

 private:
  using Direction = sim::CapturedPacket::Direction;
  void take(Direction direction, std::span<const uint8_t> piece);
  void flush(Direction direction);
  void write(Direction direction, sim::Bytes bytes);

  FILE* file_;
  bool redacted_;
  std::mutex mutex_;  // a host thread and the listener use the line
  Redaction redaction_;
  sim::Bytes pending_[3];  // by direction: an incomplete frame
  bool gone_ = false;
};

}  // namespace zopctl
