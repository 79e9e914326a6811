// Lines of a log that another program writes to us, and what we tell it of them: the protocol of
// rsyslog's omprog. What is confirmed is kept; when something fails the program ends, and a new one
// begins with what is kept.
#pragma once

#include <functional>
#include <string_view>

#include "fleet/loader.h"

namespace fleet {

class Follower {
 public:
  using Answer = std::function<void(std::string_view line)>;

  Follower(Loader& loader, Answer answer);

  // A line of the log, or the beginning or the end of a transaction.
  void take(std::string_view line);

 private:
  Loader& loader_;
  Answer answer_;
  bool in_transaction_ = false;
};

}  // namespace fleet
