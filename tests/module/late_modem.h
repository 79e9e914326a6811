// A modem on a sick line: it is late or silent, sends slowly, or sends what nobody asked for.
#pragma once

#include "tests/support/far_ends.h"

namespace test {

// Answers each request after a delay and in order. The answer holds the number of requests of its
// kind, so that an old one is noticed.
class LateModem : public Script {
 public:
  Time latency{0};
  bool one_at_a_time = false;  // the latency is processing time, not transit time
  Time gap{0};                 // between two bytes; 0: whole answers
  std::function<bool(const Bytes& request)> ignores = [](const Bytes&) { return false; };
  bool babbles = false;  // sends a frame every 7 ms that answers no request
  Answer instead;        // of the next answer
  std::map<Bytes, uint8_t> asked;
  int requests_seen = 0;

  // Answers in transit arrive within half a second.
  void recover(Time now) {
    latency = gap = Time{0};
    ignores = [](const Bytes&) { return false; };
    for (Due& due : due_) due.at = std::min(due.at, now + std::chrono::milliseconds(500));
  }
  std::optional<Time> next_due() const override {
    return babbles ? next_babble_ : Script::next_due();
  }
  Bytes take(Time now) override {
    if (babbles && now < next_babble_) return {};
    if (babbles) return next_babble_ = now + std::chrono::milliseconds(7), frame(hex("d0 01 02"));
    Bytes all;
    for (Bytes piece; !(piece = Script::take(now)).empty();) {
      all.insert(all.end(), piece.begin(), piece.end());
    }
    return all;
  }

 protected:
  Answer answer_to(const Bytes& wire) override {
    Bytes request = unframe(wire);
    if (request.empty()) return {};  // damaged, or nothing between two flags
    ++requests_seen;
    if (ignores(request)) return {};
    Answer answer = std::exchange(instead, {});
    if (answer.empty()) answer = {{frame(payload_for(request))}};
    if (gap != Time{0}) answer = byte_by_byte(answer[0].bytes);
    answer[0].after += latency;
    Time now = World::current()->now();
    if (one_at_a_time || due_.empty()) return answer;
    answer[0].after -= std::clamp(due_.back().at - now, Time{0}, latency);
    return answer;
  }

 private:
  Bytes payload_for(const Bytes& request) {
    bool vendor = request.size() >= 3;
    uint8_t count = ++asked[vendor ? Bytes(request.begin(), request.begin() + 3) : request];
    Bytes answer(350, count);
    std::copy(request.begin(), request.begin() + (vendor ? 3 : 1), answer.begin());
    if (vendor) answer[3] = answer[4] = 0;
    if (request[0] == 0xD2 && request[1] == 0) answer = hex("d2 00 00 00 00 00 02 01 03");
    if (request[0] == 0xD2 && request[1] == 1) answer = hex("d2 01 00 00 00 00 00 00 00");
    if (request[0] == 0xCF && request[1] == '=') answer[5] = 0;
    return answer;
  }
  Answer byte_by_byte(const Bytes& wire) const {
    Answer answer;
    for (uint8_t byte : wire) answer.push_back({{byte}, gap});
    return answer;
  }
  Time next_babble_{0};
};

}  // namespace test
