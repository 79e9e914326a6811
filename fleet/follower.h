// Lines of a log that another program writes to us, and what we tell it of them: the protocol of
// rsyslog's omprog. A confirmed line is in the journal at least, so whoever is killed loses none;
// it is kept soon after. When something fails the program ends, and a new one begins with what is
// there. Lines are confirmed one by one: of a transaction that breaks off, rsyslog would repeat
// only the lines that come after.
#pragma once

#include <functional>
#include <string_view>

#include "fleet/journal.h"
#include "fleet/loader.h"

namespace fleet {

class Follower {
 public:
  using Answer = std::function<void(std::string_view line)>;

  Follower(Loader& loader, Journal& journal, Answer answer);

  void take(std::string_view line);
  // When no line has come for a while, and at the end.
  void keep();

 private:
  Loader& loader_;
  Journal& journal_;
  Answer answer_;
  int unkept_ = 0;  // lines
};

}  // namespace fleet
