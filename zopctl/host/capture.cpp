// Joins pieces of the line into frames. A failed write is reported once, and the work goes on.
#include "zopctl/host/capture.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "simulator/line/private_file.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/text/failure.h"

namespace zopctl {

static FILE* open_capture(const std::string& path) {
  if (path != "-") {
    int fd = sim::make_private_file(path);
    return fd < 0 ? nullptr : fdopen(fd, "wb");
  }
  FILE* output = duplicate_standard_output("wb");
  dup2(STDERR_FILENO, STDOUT_FILENO);
  return output;
}

Capture::Capture(const std::string& path, bool redacted)
    : file_(open_capture(path)), redacted_(redacted) {
  signal(SIGPIPE, SIG_IGN);  // a capture without a reader ends, and nothing else
  if (file_ == nullptr) throw file_failure("can't write the capture to " + path, errno);
  try {
    sim::write_capture_header(file_);
  } catch (const std::runtime_error& error) {
    fclose(file_);
    throw Failure(error.what(), 1, "name a file on another disk with --capture");
  }
  capture_line([this](zopctl::Direction direction, std::span<const uint8_t> piece) {
    std::lock_guard lock(mutex_);
    take(direction == zopctl::Direction::TO_MODEM ? sim::CapturedPacket::TO_MODEM
                                                  : sim::CapturedPacket::FROM_MODEM,
         piece);
  });
}

Capture::~Capture() {
  capture_line({});
  flush(sim::CapturedPacket::TO_MODEM);
  flush(sim::CapturedPacket::FROM_MODEM);
  if (file_ != nullptr) fclose(file_);
}

// A frame that is cut short, or a lone flag, ends when the other side sends.
void Capture::take(Direction direction, std::span<const uint8_t> piece) {
  bool to_modem = direction == sim::CapturedPacket::TO_MODEM;
  flush(to_modem ? sim::CapturedPacket::FROM_MODEM : sim::CapturedPacket::TO_MODEM);
  if (piece.empty()) {
    flush(direction);
    if (!gone_) write(sim::CapturedPacket::FROM_MODEM, {});
    gone_ = true;
    return;
  }
  gone_ = false;
  for (uint8_t byte : piece) {
    pending_[direction].push_back(byte);
    bool whole = byte == sim::FLAG && pending_[direction].size() > 1;
    if (whole) flush(direction);
  }
}

void Capture::flush(Direction direction) {
  if (pending_[direction].empty()) return;
  write(direction, std::move(pending_[direction]));
  pending_[direction].clear();
}

void Capture::write(Direction direction, sim::Bytes bytes) {
  if (file_ == nullptr) return;
  auto now = std::chrono::system_clock::now().time_since_epoch();
  sim::CapturedPacket packet = {std::chrono::duration_cast<std::chrono::microseconds>(now),
                                direction, std::move(bytes)};
  if (redacted_ && !packet.bytes.empty()) packet.bytes = redaction_.blank(packet);
  try {
    sim::write_captured(file_, packet);
  } catch (const std::runtime_error& error) {
    fprintf(stderr, "zopctl: %s; the capture ends here\n", error.what());
    fclose(file_);
    file_ = nullptr;
  }
}

}  // namespace zopctl
