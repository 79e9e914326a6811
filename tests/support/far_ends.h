// Modems for tests: one with scripted raw answers, and one whose answers a function returns.
// Frames are the simulated modem's, written independently of the codec under test.
#pragma once

#include <functional>

#include "tests/support/world.h"

namespace test {

// The payload as a frame on the wire, without a leading flag.
Bytes frame(std::span<const uint8_t> payload);

// The payload of a frame without a leading flag; empty if its check sequence is wrong.
Bytes unframe(std::span<const uint8_t> wire);

// One piece of an answer, and its delay after the previous one.
struct Piece {
  Bytes bytes;
  Time after{0};
};
using Answer = std::vector<Piece>;

// A modem that answers each request (everything up to a flag) with the next answer of a list, and
// is silent when the list is empty.
class Script : public FarEnd {
 public:
  std::deque<Answer> answers;
  std::vector<Bytes> requests;  // as received on the wire
  bool keeps_requests = true;
  bool unplugged = false;

  void receive(std::span<const uint8_t> bytes, Time now) override;
  std::optional<Time> next_due() const override;
  Bytes take(Time now) override;
  bool gone(Time) override { return unplugged; }

 protected:
  virtual Answer answer_to(const Bytes& request);
  struct Due {
    Time at;
    Bytes bytes;
  };
  Bytes request_;
  std::deque<Due> due_;
};

// A modem that answers each request with the payload that the function returns, or not at all if it
// returns none. The link's probe is always answered.
class AnsweringModem : public Script {
 public:
  using Function = std::function<std::optional<Bytes>(const Bytes& request)>;
  explicit AnsweringModem(Function function) : function_(std::move(function)) {}

  std::vector<Bytes> payloads;  // of the requests, without probes
  Time delay{0};                // before each answer

 protected:
  Answer answer_to(const Bytes& request) override;

 private:
  Function function_;
};

}  // namespace test
