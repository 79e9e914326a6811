// Only the running thread touches the conductor's state; semaphores pass it to the next.
#include "tests/support/conductor.h"

#include <pthread.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

extern "C" int __real_pthread_join(pthread_t thread, void** result);

namespace test {

[[noreturn]] static void give_up(const char* why) {
  fprintf(stderr, "conductor: %s\n", why);
  abort();
}

static thread_local Conductor::Player* self = nullptr;

Conductor::Conductor(Time& now) : now_(now) {
  self = add();
  ready_.clear();
}

Conductor::~Conductor() {
  if (has_others()) give_up("a thread outlives its World");
}

Conductor::Player* Conductor::add() {
  Player& player = players_.emplace_back();
  sem_init(&player.turn, 0, 0);
  ready_.push_back(&player);
  return &player;
}

void Conductor::begin(Player* player) {
  self = player;
  while (sem_wait(&player->turn) != 0) {
  }
}

void Conductor::finish() {
  self->done = true;
  wake(self, true);
  play_next();
}

void Conductor::join(pthread_t handle) {
  auto player = std::ranges::find_if(players_, [&](const Player& p) { return p.handle == handle; });
  if (player == players_.end()) give_up("a thread is joined that is not there");
  while (!player->done) park(&*player, std::nullopt);
  __real_pthread_join(handle, nullptr);
  sem_destroy(&player->turn);
  players_.erase(player);
}

bool Conductor::park(const void* channel, std::optional<Time> until) {
  if (!has_others() && until) {  // nobody can wake it
    now_ = std::max(now_, *until);
    return false;
  }
  self->channel = channel;
  self->until = until;
  self->woken = false;
  parked_.push_back(self);
  Player* me = self;
  play_next();
  while (sem_wait(&me->turn) != 0) {
  }
  if (me != &players_.front()) ++wake_ups;
  return me->woken;
}

void Conductor::wake(const void* channel, bool all) {
  for (auto it = parked_.begin(); it != parked_.end();) {
    if ((*it)->channel != channel) {
      ++it;
      continue;
    }
    (*it)->woken = true;
    ready_.push_back(*it);
    it = parked_.erase(it);
    if (!all) return;
  }
}

Conductor::Player* Conductor::next_due() {
  Player* first = nullptr;
  for (Player* player : parked_) {
    if (player->until && (first == nullptr || *player->until < *first->until)) first = player;
  }
  return first;
}

void Conductor::play_next() {
  Player* next = nullptr;
  if (!ready_.empty()) {
    next = ready_.front();
    ready_.pop_front();
  } else {
    next = next_due();
    if (next == nullptr) give_up("every thread waits for another");
    std::erase(parked_, next);
    now_ = std::max(now_, *next->until);
  }
  sem_post(&next->turn);
}

}  // namespace test
