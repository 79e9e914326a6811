// The live view: what zopctl monitor shows on a terminal. Draws the newest sample only, so that a
// slow line is never behind.
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
  std::deque<std::string> events;  // newest last, with their time
  unsigned interval_s = 1;
  bool is_paused = false;
  std::string recording;  // file and count; empty without one

  void add(const Sample& newest);
};

class LiveScreen {
 public:
  // Null when the terminal is of no kind that is known.
  static std::unique_ptr<LiveScreen> open();
  ~LiveScreen();
  LiveScreen(const LiveScreen&) = delete;
  LiveScreen& operator=(const LiveScreen&) = delete;

  void draw(const LiveView& view);

  // The next key that was typed, -1 without one; RESIZED when the terminal has another size.
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
