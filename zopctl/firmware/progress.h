// Progress of long work: a moving bar on a terminal, plain lines in a log, one JSON object per line
// for programs.
#pragma once

#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

namespace zopctl {

// Bytes transferred, of the current part and of everything.
struct Amount {
  std::string part;
  uint64_t part_done, part_total;
  uint64_t done, total;  // total 0: unknown
};

class Progress {
 public:
  using Json = nlohmann::ordered_json;
  enum Style { BAR, LINES, EVENTS };

  // Writes to out, which the caller closes.
  Progress(FILE* out, Style style);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // A bar on a terminal, lines elsewhere, events for programs.
  static Style style_for(FILE* out, bool json);

  // Starts a stage: programs get its key, people its text.
  void stage(const std::string& key, const std::string& text);
  const std::string& stage_key() const { return stage_; }

  // Shown at most ten times a second on a terminal, otherwise every 10 % (for programs: every 1 %).
  void amount(const Amount& amount);

  // Seconds left of a pause; shown only on a terminal.
  void countdown(unsigned seconds);

  // A remark within a stage.
  void note(const std::string& text);

  // What a second signal says before it ends the program. exit_code 0: that of the signal.
  void on_hard_exit(const std::string& text, const std::string& advice, int exit_code);

  // Printed only for programs.
  void event(const char* name, const Json& fields);

 private:
  using Clock = std::chrono::steady_clock;
  double speed_of(const Amount& amount) const;  // bytes per second
  void show_bar(const Amount& amount);
  void show_transient(const std::string& text);
  void print_line(const std::string& text);
  void clear_bar();

  FILE* out_;
  Style style_;
  std::string stage_;
  std::string part_;
  Clock::time_point start_ = Clock::now();  // when this stage's transfer began
  Clock::time_point shown_{};
  uint64_t done_at_start_ = 0;
  bool counting_ = false;
  bool bar_is_shown_ = false;
  unsigned steps_shown_ = 0;  // of 10 % or 1 %
};

}  // namespace zopctl
