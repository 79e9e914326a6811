// Threads in virtual time: one runs at a time, until it parks for a while or for something to
// happen. When all are parked, time jumps to the first that is due. The order is always the same.
#pragma once

#include <semaphore.h>

#include <chrono>
#include <deque>
#include <list>
#include <optional>

namespace test {

using Time = std::chrono::nanoseconds;  // since the World began

class Conductor {
 public:
  struct Player {
    sem_t turn;
    const void* channel = nullptr;  // what it waits for
    std::optional<Time> until;
    bool parked = false;
    bool woken = false;
    bool done = false;
    pthread_t handle{};
  };

  explicit Conductor(Time& now);  // the calling thread plays first
  ~Conductor();
  Conductor(const Conductor&) = delete;
  Conductor& operator=(const Conductor&) = delete;

  bool has_others() const { return players_.size() > 1; }

  // A thread to be: it plays when its turn comes.
  Player* add();
  void begin(Player* player);  // on that thread
  void finish();               // the same
  void join(pthread_t handle);

  // Waits for the channel, or until then. True when woken.
  bool park(const void* channel, std::optional<Time> until);

  // Those that wait for the channel are to play again, all or the first of them.
  void wake(const void* channel, bool all);

 private:
  void play_next();
  Player* next_due();
  Time& now_;
  std::list<Player> players_;
  std::deque<Player*> parked_;  // in the order of their parking
  std::deque<Player*> ready_;
};

}  // namespace test
