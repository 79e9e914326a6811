// A fresh module in its World, with a modem whose answers the test sets.
#pragma once

#include <cstring>
#include <regex>

#include "tests/support/fresh_module.h"
#include "tests/support/link_test.h"

namespace test {

class ModuleWorld {
 public:
  ModuleWorld() {
    setenv("TZ", "UTC", 1);
    tzset();
    for (const char* path : {"/proc/uptime", "/proc/net/dev", "/etc/resolv.conf", "/proc"}) {
      world.missing[path] = ENOENT;
    }
    vurn_set_log_mask(0);
    world.far_end = &modem;
    fresh_module(world);
    world.advance(-world.now());
    world.threads_made = 0;
  }
  ~ModuleWorld() { close_module(); }

  // Answer payloads by request payload, both as hex; "" for an answer that can't be unframed. Other
  // requests are answered with zeros.
  std::map<std::string, std::string> answers = {
      {"d2 00 00", "d2 00 00 00 00 00 02 01 03"},
      {"cf 5d 00", "cf 5d 00 00 00 46 57 2d 31"},  // FW-1
      {"cf 48 00", "cf 48 00 00 00 48 57 2d 31"},  // HW-1
  };

  std::deque<Bytes> next_answers;  // in place of those

  std::optional<Bytes> answer_to(const Bytes& request) {
    if (!next_answers.empty()) {
      Bytes next = next_answers.front();
      next_answers.pop_front();
      return next;
    }
    auto it = answers.find(to_hex(request));
    if (it != answers.end()) return hex(it->second);
    Bytes zeros(350);  // a good status and nothing else
    std::copy_n(request.begin(), std::min<size_t>(3, request.size()), zeros.begin());
    return zeros;
  }

  World world;
  AnsweringModem modem{[this](const Bytes& request) { return answer_to(request); }};
};

class ModuleTest : public testing::Test, public ModuleWorld {};

}  // namespace test
