// The simulated modem at the other end of the World's serial line, in virtual time.
#pragma once

#include "simulator/modem.h"
#include "tests/support/world.h"

namespace test {

class SimulatedFarEnd : public FarEnd {
 public:
  explicit SimulatedFarEnd(sim::Scenario scenario = {}, Time start = Time{0},
                           sim::Modem::Trace trace = {})
      : modem(std::move(scenario), 1, std::move(trace)), start_(start) {}

  sim::Modem modem;

  void receive(std::span<const uint8_t> bytes, Time now) override { modem.receive(bytes, us(now)); }
  std::optional<Time> next_due() const override {
    auto due = modem.next_due();
    if (!pieces_.empty()) return start_;
    if (!due) return std::nullopt;
    return start_ + *due;
  }
  Bytes take(Time now) override {
    run(now);
    if (pieces_.empty()) return {};
    Bytes piece = std::move(pieces_.front());
    pieces_.pop_front();
    return piece;
  }
  bool gone(Time now) override {
    run(now);
    return modem.is_gone();
  }
  int hang_ups() const override { return hang_ups_; }

 private:
  // Collects the modem's output up to now. A hang-up discards what was not yet taken.
  void run(Time now) {
    while (auto output = modem.take_output(us(now))) {
      if (output->kind == sim::Output::SENDS) pieces_.push_back(output->bytes);
      if (output->kind == sim::Output::HANGS_UP) {
        ++hang_ups_;
        pieces_.clear();
      }
    }
  }
  std::deque<Bytes> pieces_;
  int hang_ups_ = 0;

  Time start_;

  sim::Time us(Time time) const { return std::chrono::duration_cast<sim::Time>(time - start_); }
};

}  // namespace test
