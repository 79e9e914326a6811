// Many lines are kept together, for the disk's sake.
#include "fleet/follower.h"

namespace fleet {

constexpr int KEPT_TOGETHER = 2000;

Follower::Follower(Loader& loader, Journal& journal, Answer answer)
    : loader_(loader), journal_(journal), answer_(std::move(answer)) {
  journal_.replay([this](std::string_view line) { loader_.take_line(line); });
  keep();
  answer_("OK");
}

void Follower::take(std::string_view line) {
  journal_.add(line);
  loader_.take_line(line);
  if (++unkept_ >= KEPT_TOGETHER) keep();
  answer_("OK");
}

void Follower::keep() {
  loader_.keep();
  journal_.clear();
  unkept_ = 0;
}

}  // namespace fleet
