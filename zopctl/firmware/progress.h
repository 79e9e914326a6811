// What long work tells while it goes on: to a person at a terminal by a bar that moves, to a log by
// plain lines, to a program by JSON objects, one a line.
#pragma once

#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

namespace zopctl {

// How far the work is, in bytes: the part under way, and all of it.
struct Amount {
  std::string part;
  uint64_t part_done, part_total;
  uint64_t done, total;  // total 0: not known
};

class Progress {
 public:
  using Json = nlohmann::ordered_json;
  enum Face { BAR, LINES, EVENTS };

  // Writes to out, which stays the caller's.
  Progress(FILE* out, Face face);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // A bar on a terminal, lines elsewhere, events for programs.
  static Face face_for(FILE* out, bool json);

  // What is under way from now on: for programs by its key, for people by a line.
  void stage(const std::string& key, const std::string& text);
  const std::string& stage_key() const { return stage_; }

  // Shown ten times a second on a terminal, and each tenth (for programs: each hundredth)
  // elsewhere.
  void amount(const Amount& amount);

  // The work rests for so many seconds more; seen on a terminal alone.
  void resting(unsigned seconds);

  // Something worth knowing, within a stage.
  void note(const std::string& text);

  // For programs alone.
  void event(const char* name, const Json& fields);

 private:
  using Clock = std::chrono::steady_clock;
  double speed_of(const Amount& amount) const;  // bytes a second
  void show_bar(const Amount& amount);
  void show_moving(const std::string& text);
  void print_line(const std::string& text);
  void clear_bar();

  FILE* out_;
  Face face_;
  std::string stage_;
  std::string part_;
  Clock::time_point start_ = Clock::now();  // of the first byte of this stage
  Clock::time_point shown_{};
  uint64_t done_at_start_ = 0;
  bool counting_ = false;
  bool bar_is_shown_ = false;
  unsigned steps_shown_ = 0;  // tenths or hundredths
};

}  // namespace zopctl
