// A transaction's lines are confirmed together, when all of them are kept.
#include "fleet/follower.h"

namespace fleet {

Follower::Follower(Loader& loader, Answer answer) : loader_(loader), answer_(std::move(answer)) {
  answer_("OK");
}

void Follower::take(std::string_view line) {
  if (line == "BEGIN TRANSACTION") {
    in_transaction_ = true;
    return answer_("OK");
  }
  bool ends = line == "COMMIT TRANSACTION";
  if (!ends) loader_.take_line(line);
  if (in_transaction_ && !ends) return answer_("DEFER_COMMIT");
  loader_.keep();
  in_transaction_ = false;
  answer_("OK");
}

}  // namespace fleet
