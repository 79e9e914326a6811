// The World's clock and port. A read returns at most one piece of the far end's output, as with a
// USB modem's packets.
#include "tests/support/world.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <regex>

namespace test {

// Per thread: other threads of a test runner or fuzzer belong to no World.
static thread_local World* current_world = nullptr;

// The port's descriptors are real and unique, but need no file: they are duplicates of this one.
static const int NO_FILE = static_cast<int>(syscall(SYS_memfd_create, "port", 0));

World::World() { join(); }
World::~World() {
  while (!ports_.empty()) close_port(*ports_.begin());
  current_world = nullptr;
}
World* World::current() { return current_world; }
void World::join() { current_world = this; }

std::string World::log_text() const {
  std::string text;
  for (const LogLine& line : log) text += line.text + "\n";
  return text;
}

std::string World::log_lines() const {
  static const std::regex place(" \\(\\w+:\\w+:\\d+\\)\n");
  return std::regex_replace(log_text(), place, "\n");
}

int World::open_port() {
  ++opens;
  if (far_end != nullptr && far_end->gone(now_)) return errno = ENOENT, -1;
  hang_ups_at_open_ = far_end != nullptr ? far_end->hang_ups() : 0;
  input_.clear();
  return *ports_.insert(static_cast<int>(syscall(SYS_dup, NO_FILE))).first;
}

// Discards the input that is due by now, as a terminal does; later input still arrives.
void World::flush_port() {
  ++flushes;
  do input_.clear();
  while (fetch());
}

void World::close_port(int fd) {
  ports_.erase(fd);
  syscall(SYS_close, fd);
}

static std::optional<PortCall> next(std::deque<PortCall>& plan) {
  if (plan.empty()) return std::nullopt;
  PortCall call = plan.front();
  plan.pop_front();
  return call;
}

ssize_t World::write_port(const uint8_t* bytes, size_t size) {
  if (is_dead()) return errno = EIO, -1;
  if (write_room == 0) return errno = EAGAIN, -1;
  if (auto call = next(writes)) {
    if (call->error != 0) return errno = call->error, -1;
    size = std::min(size, *call->at_most);
  }
  size = std::min(size, write_room);
  write_room -= size;
  if (keeps_history) written.insert(written.end(), bytes, bytes + size);
  if (far_end != nullptr) far_end->receive({bytes, size}, now_);
  if (!runs_free) conductor.wake(&ports_, true);
  return static_cast<ssize_t>(size);
}

ssize_t World::read_port(uint8_t* bytes, size_t size) {
  if (is_dead()) return 0;
  fetch();
  size = std::min(size, input_.size());
  if (auto call = next(reads)) {
    if (call->error != 0) return errno = call->error, -1;
    size = std::min(size, *call->at_most);
  }
  std::copy_n(input_.begin(), size, bytes);
  input_.erase(input_.begin(), input_.begin() + static_cast<ptrdiff_t>(size));
  return static_cast<ssize_t>(size);
}

bool World::is_dead() {
  return far_end != nullptr && (far_end->gone(now_) || far_end->hang_ups() != hang_ups_at_open_);
}

bool World::fetch() {
  if (input_.empty() && far_end != nullptr) {
    Bytes piece = far_end->take(now_);
    input_.insert(input_.end(), piece.begin(), piece.end());
  }
  return !input_.empty();
}

int World::wait_for_port(short events, Time limit) {
  ++polls_made;
  if (auto call = next(polls)) {
    if (call->error != 0) return errno = call->error, -1;
    return static_cast<int>(*call->at_most);
  }
  Time end = now_ + limit;
  for (;;) {
    if (is_dead()) return 1;
    Time due = end;
    if ((events & POLLOUT) != 0 && write_room > 0) return 1;
    if ((events & POLLIN) != 0) {
      if (fetch()) return 1;
      if (far_end != nullptr) due = std::min(due, far_end->next_due().value_or(end));
    }
    if (now_ >= end) return 0;
    if (runs_free) {
      now_ = std::max(now_, due);
    } else {
      conductor.park(&ports_, std::max(now_, due));
    }
  }
}

void World::let_pass(Time by) {
  if (runs_free || !conductor.has_others()) {
    now_ += by;
  } else {
    conductor.park(nullptr, now_ + by);
  }
}

void World::advance(Time by) { let_pass(by); }

void World::pass(Time time) {
  if (keeps_history) sleeps.push_back(time);
  let_pass(time);
  if (on_sleep) on_sleep(time);
}

void World::sleep_free_until(Time end) {
  Time left;
  {
    std::unique_lock lock(mutex);
    left = end - now_;
  }
  sleep_free(left);
}

void World::sleep_free(Time time) {
  {
    std::unique_lock lock(mutex);
    pass(std::max(time, Time{0}));
  }
  timespec moment = {0, 20'000};  // lets other threads run
  syscall(SYS_nanosleep, &moment, nullptr);
}

}  // namespace test
