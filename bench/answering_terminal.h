// A pseudo-terminal whose far end answers every frame. A function on a thread of its own makes the
// answers.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

class AnsweringTerminal {
 public:
  // The answer as sent; valid until the next call.
  using Answer = std::function<std::span<const uint8_t>(std::span<const uint8_t> frame)>;

  explicit AnsweringTerminal(Answer answer) : answer_(std::move(answer)) {
    master_ = posix_openpt(O_RDWR | O_NOCTTY);
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) {
      throw std::runtime_error("no pseudo-terminal");
    }
    termios raw;
    tcgetattr(master_, &raw);
    cfmakeraw(&raw);
    tcsetattr(master_, TCSANOW, &raw);
    path = ptsname(master_);
    held_open_ = open(path.c_str(), O_RDWR | O_NOCTTY);
    thread_ = std::thread([this] { run(); });
  }
  ~AnsweringTerminal() {
    stop_ = true;
    thread_.join();
    close(held_open_);
    close(master_);
  }
  std::string path;

 private:
  void run() {
    std::vector<uint8_t>& frame = frame_;
    size_t held = 0;
    while (!stop_) {
      pollfd input = {master_, POLLIN, 0};
      if (poll(&input, 1, 10) <= 0) continue;
      ssize_t size = read(master_, frame.data() + held, frame.size() - held);
      if (size <= 0) return;
      held += static_cast<size_t>(size);
      if (held == 1 || frame[held - 1] != 0x7E) continue;  // its opening flag, or a part
      std::span<const uint8_t> answer = answer_({frame.data(), held});
      held = 0;
      if (write(master_, answer.data(), answer.size()) < 0) return;
    }
  }
  Answer answer_;
  std::vector<uint8_t> frame_ = std::vector<uint8_t>(8192);  // made before measuring
  int master_;
  int held_open_;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};
