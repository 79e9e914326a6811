// Says on a terminal what the module waits for, once it has taken more than a second: a modem that
// does not answer, a SIM that is not ready. Nothing is said to a file or another program.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace zopctl {

class WaitTeller {
 public:
  WaitTeller();
  ~WaitTeller();
  WaitTeller(const WaitTeller&) = delete;
  WaitTeller& operator=(const WaitTeller&) = delete;

 private:
  void run();

  std::mutex mutex_;
  std::condition_variable end_;
  bool ends_ = false;   // guarded by mutex_
  std::thread thread_;  // on a terminal only
};

}  // namespace zopctl
