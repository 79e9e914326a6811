// Threads in virtual time. One thread runs at a time, until it parks to wait for a time or an
// event. When all are parked, time jumps to the earliest deadline. Every run has the same order.
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
    bool woken = false;
    bool done = false;
    pthread_t handle{};
  };

  explicit Conductor(Time& now);  // the calling thread runs first
  ~Conductor();
  Conductor(const Conductor&) = delete;
  Conductor& operator=(const Conductor&) = delete;

  bool has_others() const { return players_.size() > 1; }
  int wake_ups = 0;  // of all threads but the first

  // Registers a thread before it is created; it runs when its turn comes.
  Player* add();
  void begin(Player* player);  // on the new thread
  void finish();               // on the thread that ends
  void join(pthread_t handle);

  // Waits until the channel is woken or the time is reached. True if woken.
  bool park(const void* channel, std::optional<Time> until);

  // Makes all threads that wait for the channel ready, or only the first.
  void wake(const void* channel, bool all);

 private:
  void play_next();
  Player* next_due();
  Time& now_;
  std::list<Player> players_;
  std::deque<Player*> parked_;  // longest parked first
  std::deque<Player*> ready_;
};

}  // namespace test
