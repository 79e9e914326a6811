#include "bench/answering_modem.h"

#include <fcntl.h>
#include <stdarg.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>

static std::string module_device;  // opened by the module as its device

// The module's open: the linker finds this one first.
extern "C" int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  if (strcmp(path, "/dev/tts/USB1") == 0) path = module_device.c_str();
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

AnsweringModem::AnsweringModem()
    : terminal_([this](std::span<const uint8_t> frame) { return answer(frame); }) {
  module_device = terminal_.path;
}

std::span<const uint8_t> AnsweringModem::answer(std::span<const uint8_t> frame) {
  requests_.emplace_back(frame.begin(), frame.end());
  now_ += std::chrono::seconds(1);
  modem_.receive({frame.data(), frame.size()}, now_);
  answer_.clear();
  while (auto output = modem_.take_output(now_ + std::chrono::milliseconds(900))) {
    answer_.insert(answer_.end(), output->bytes.begin(), output->bytes.end());
  }
  return answer_;
}
