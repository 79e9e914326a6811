// A modem whose answers are always the same, behind a line that damages one of them.
//
// The answers are the simulated modem's, each asked for once of a modem that was just started: no
// request changes what a later one finds, so that every row of the matrix meets the same modem.
#pragma once

#include "tests/support/far_ends.h"

namespace test {

enum class FaultKind {
  SILENCE,       // no answer, from this one on
  LATE,          // the rest comes after the time limit; the host waits before it opens again
  LATE_AT_ONCE,  // the same, and the host opens again while the rest is still to come
  CUT,           // the rest never comes
  BAD_CHECK,     // wrong check bytes
  FLIPPED,       // a bit
  INSERTED,      // a byte
  LOST,          // a byte
  OTHER,         // the answer to another request
  REFUSAL,       // the modem's error answer: a code and the request
  TWICE,         // the answer, and the same again
  GONE,          // the device goes away and stays away
  BACK,          // the device goes away and is back at once, another one to the kernel
};
enum { FAULT_KINDS = static_cast<int>(FaultKind::BACK) + 1 };

struct Fault {
  FaultKind kind;
  size_t answer;     // which of the call is hit
  size_t at = 0;     // byte of its frame
  unsigned way = 0;  // which bit, which byte, which other answer
};

const char* name_of(FaultKind kind);

// All faults of a call whose answers are these frames. With few_bits a byte loses one bit only.
std::vector<Fault> all_faults(const std::vector<Bytes>& frames, bool few_bits);

class FaultyLine : public Script {
 public:
  FaultyLine() { keeps_requests = false; }
  void strike(const Fault& fault);  // counted from here
  void mend();                      // what is still under way comes all the same

  // Frames of the answers since strike or watch.
  void watch();
  const std::vector<Bytes>& frames() const { return frames_; }
  bool has_struck() const { return has_struck_; }
  std::optional<Time> last_due() const;

  std::optional<Time> next_due() const override;
  bool gone(Time now) override;
  int hang_ups() const override { return hang_ups_; }

 protected:
  Answer answer_to(const Bytes& wire) override;

 private:
  Answer damaged(const Bytes& request, const Bytes& payload);

  std::optional<Fault> fault_;
  std::vector<Bytes> frames_;
  bool has_struck_ = false;
  bool silent_ = false;
  bool stays_away_ = false;
  std::optional<Time> leaves_;
  int hang_ups_ = 0;
};

}  // namespace test
