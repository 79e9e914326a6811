// A simulated modem on a pseudo-terminal of its own, which the module opens as its device. It
// answers at once and records its requests.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "bench/answering_terminal.h"
#include "simulator/modem.h"

class AnsweringModem {
 public:
  AnsweringModem();
  const std::string& device() const { return terminal_.path; }

  // The frames since the last call.
  std::vector<std::vector<uint8_t>> take_requests() { return std::exchange(requests_, {}); }

 private:
  std::span<const uint8_t> answer(std::span<const uint8_t> frame);

  sim::Modem modem_{sim::Scenario{}};
  sim::Time now_{0};
  std::vector<uint8_t> answer_;
  std::vector<std::vector<uint8_t>> requests_;
  AnsweringTerminal terminal_;  // the last: its thread uses the others
};
