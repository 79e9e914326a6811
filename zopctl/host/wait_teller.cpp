// Its thread takes no signals: they must reach what the module waits in.
#include "zopctl/host/wait_teller.h"

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <set>
#include <string>

#include "zopctl/host/host_calls.h"

namespace zopctl {

using std::chrono::milliseconds;

constexpr milliseconds LOOK_EVERY(200), LONG(1000);

static const char* text_of(const WaitState& state) {
  if (state.what == WaitState::NOTHING) return nullptr;
  if (state.what == WaitState::ANSWER) return "for the modem to answer";
  return state.has_heard ? "for the SIM to become ready" : "for the port to open";
}

// A sleep takes a second or more.
static bool is_long(const WaitState& state) {
  return state.what == WaitState::SLEEP || std::chrono::steady_clock::now() - state.since >= LONG;
}

WaitTeller::WaitTeller() {
  if (isatty(STDERR_FILENO) == 0) return;
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  thread_ = std::thread([this] { run(); });
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

WaitTeller::~WaitTeller() {
  if (!thread_.joinable()) return;
  {
    std::lock_guard lock(mutex_);
    ends_ = true;
  }
  end_.notify_one();
  thread_.join();
}

// Each thing once: the module may ask a silent modem many times.
void WaitTeller::run() {
  std::set<std::string> told;
  std::unique_lock lock(mutex_);
  while (!end_.wait_for(lock, LOOK_EVERY, [this] { return ends_; })) {
    WaitState state = wait_state();
    const char* text = text_of(state);
    if (text == nullptr || !is_long(state)) continue;
    if (told.insert(text).second) fprintf(stderr, "zopctl: waiting %s; Ctrl-C ends it\n", text);
  }
}

}  // namespace zopctl
