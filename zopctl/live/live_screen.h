// The live view of zopctl monitor. It draws only the newest sample, so that a slow terminal never
// falls behind.
#pragma once

#include <cstdio>
#include <deque>
#include <memory>

#include "zopctl/host/standard_output.h"
#include "zopctl/live/graph.h"
#include "zopctl/live/sample.h"

struct screen;  // of curses

namespace zopctl {

class TerminalRescue;

// What there is to show.
struct LiveView {
  Sample sample;
  bool has_sample = false;
  Levels rssi, ecio;
  std::deque<std::string> events;  // with their time, newest last
  unsigned interval_s = 1;
  bool is_paused = false;
  std::string recording;  // file and count; empty when not recording

  void add(const Sample& newest);
};

class LiveScreen {
 public:
  // Null on a terminal of unknown type.
  static std::unique_ptr<LiveScreen> open();
  ~LiveScreen();
  LiveScreen(const LiveScreen&) = delete;
  LiveScreen& operator=(const LiveScreen&) = delete;

  void draw(const LiveView& view);

  // The next key, -1 when there is none; RESIZED when the size of the terminal has changed.
  static constexpr int RESIZED = -2;
  int key();

 private:
  LiveScreen(FILE* output, screen* terminal);

  FILE* output_;  // the terminal
  screen* screen_;
  QuietOutput quiet_;
  bool utf8_;
  std::unique_ptr<TerminalRescue> rescue_;
};

}  // namespace zopctl
