// The pseudo-terminal that stands for the modem's device node.
#pragma once

#include <string>

#include "simulator/line/frame.h"

namespace sim {

class Terminal {
 public:
  // link, when not empty, is a symbolic link that points to the terminal while it exists.
  explicit Terminal(std::string link);
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void plug_in();  // a new terminal, raw from the start
  void unplug();   // the host sees its device hang up

  bool is_plugged_in() const { return master_ >= 0; }
  int descriptor() const { return master_; }
  const std::string& path() const { return path_; }

  Bytes read();            // what the host has written, possibly nothing
  void write(View bytes);  // drops what does not fit, like a modem whose host does not read

 private:
  void remove_dead_link();
  std::string link_;
  int claim_;  // of the link: its holder may replace one that a killed simulator has left
  std::string path_;
  int master_ = -1;
  int slave_ = -1;  // held open, or the master would read an error whenever the host closes
};

}  // namespace sim
