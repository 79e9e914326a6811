// A modem with fixed answers, behind a line that damages one of them.
//
// Each answer comes from a newly started simulated modem: no request changes a later answer, so
// that every row of the matrix meets the same modem.
#pragma once

#include "tests/support/far_ends.h"

namespace test {

enum class FaultKind {
  SILENCE,       // no answers from this one on
  LATE,          // the rest arrives after the time limit; the host waits before it reopens
  LATE_AT_ONCE,  // the same, but the host reopens before the rest has arrived
  CUT,           // the rest never arrives
  BAD_CHECK,     // wrong check bytes
  FLIPPED,       // a bit
  INSERTED,      // a byte
  LOST,          // a byte
  OTHER,         // the answer to another request
  REFUSAL,       // the modem's error answer: a code and the request
  TWICE,         // the answer, and the same again
  GONE,          // the device goes away and stays away
  BACK,          // the device goes away and returns at once, as a new device to the kernel
};
enum { FAULT_KINDS = static_cast<int>(FaultKind::BACK) + 1 };

struct Fault {
  FaultKind kind;
  size_t answer;     // which answer of the call is hit
  size_t at = 0;     // byte of its frame
  unsigned way = 0;  // which bit, which byte, which other answer
};

const char* name_of(FaultKind kind);

// All faults of a call whose answers are these frames. With few_bits, one bit per byte is flipped.
std::vector<Fault> all_faults(const std::vector<Bytes>& frames, bool few_bits);

class FaultyLine : public Script {
 public:
  FaultyLine() { keeps_requests = false; }
  void strike(const Fault& fault);  // answers are counted from here
  void mend();                      // bytes in transit still arrive

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
