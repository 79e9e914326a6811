// Far ends of the serial line for tests: a script of raw pieces, and a modem that answers each
// request by a function. Frames are made here with Boost's CRC, not with the codec under test.
#pragma once

#include <functional>

#include "tests/support/world.h"

namespace test {

// payload as a frame on the wire, without an opening flag.
Bytes frame(std::span<const uint8_t> payload);

// The payload of a frame without an opening flag; empty when its check sequence is wrong.
Bytes unframe(std::span<const uint8_t> wire);

// One piece of an answer, some time after the one before it.
struct Piece {
  Bytes bytes;
  Time after{0};
};
using Answer = std::vector<Piece>;

// A modem that gives each request (everything up to a flag) the next answer of a list; with the
// list used up it is silent.
class Script : public FarEnd {
 public:
  std::deque<Answer> answers;
  std::vector<Bytes> requests;  // as they came over the wire
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

// A modem that answers each good request with the payload that a function makes of it; no payload,
// no answer. Answers the link's probe by itself.
class AnsweringModem : public Script {
 public:
  using Function = std::function<std::optional<Bytes>(const Bytes& request)>;
  explicit AnsweringModem(Function function) : function_(std::move(function)) {}

  std::vector<Bytes> payloads;  // of the requests, the probe left out
  Time delay{0};                // before each answer

 protected:
  Answer answer_to(const Bytes& request) override;

 private:
  Function function_;
};

}  // namespace test
