// A modem that answers each write of the host, a request, with what the target's function returns.
#pragma once

#include <functional>
#include <utility>

#include "fuzz/fuzz.h"
#include "tests/support/far_ends.h"

class FuzzedModem : public test::FarEnd {
 public:
  using Function = std::function<test::Bytes(std::span<const uint8_t> request)>;
  explicit FuzzedModem(Function answer) : answer_(std::move(answer)) {}

  bool unplugged = false;

  void receive(std::span<const uint8_t> request, test::Time) override {
    test::Bytes answer = answer_(request);
    due_.insert(due_.end(), answer.begin(), answer.end());
  }
  std::optional<test::Time> next_due() const override {
    return due_.empty() ? std::nullopt : std::optional<test::Time>(0);
  }
  test::Bytes take(test::Time) override { return std::exchange(due_, {}); }
  bool gone(test::Time) override { return unplugged; }

 private:
  Function answer_;
  test::Bytes due_;
};
