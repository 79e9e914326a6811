// Notices that a transfer does not go on: the modem refuses the same request again and again, or
// says nothing.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace zopctl {

class StallWatch {
 public:
  using Time = std::chrono::system_clock::time_point;  // of the modem's clock
  using Seconds = std::chrono::seconds;

  void progress(Time now) {
    since_ = now;
    refusal_.clear();
    reported_ = false;
  }
  void refused(const std::string& what) { refusal_ = what; }

  // Time without progress.
  Seconds lasts(Time now) const { return std::chrono::duration_cast<Seconds>(now - since_); }

  // What is refused; empty if the modem says nothing.
  const std::string& refusal() const { return refusal_; }

  // True once in each stall, when it has lasted so long that the user should know.
  bool is_to_be_reported(Time now) {
    constexpr Seconds NOTICED{10};
    bool late = !reported_ && lasts(now) >= NOTICED;
    reported_ = reported_ || late;
    return late;
  }

 private:
  Time since_{};
  std::string refusal_;
  bool reported_ = false;
};

}  // namespace zopctl
