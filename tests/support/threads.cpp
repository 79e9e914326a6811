// The thread calls and malloc of the module and the tests, wrapped by the linker. A thread created
// in a World belongs to it, and to its conductor unless the World runs free.
#include <pthread.h>

#include <cerrno>
#include <memory>

#include "tests/support/world.h"

using test::Conductor;
using test::Time;
using test::World;

extern "C" {
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __real_pthread_join(pthread_t, void**);
int __real_pthread_mutex_lock(pthread_mutex_t*);
int __real_pthread_mutex_unlock(pthread_mutex_t*);
int __real_pthread_cond_wait(pthread_cond_t*, pthread_mutex_t*);
int __real_pthread_cond_timedwait(pthread_cond_t*, pthread_mutex_t*, const timespec*);
int __real_pthread_cond_signal(pthread_cond_t*);
}

extern "C" void* __real_malloc(size_t);
extern "C" void* __wrap_malloc(size_t size) {
  World* world = World::current();
  bool fails = world != nullptr && world->malloc_failures > 0;
  if (!fails) return __real_malloc(size);
  --world->malloc_failures;
  return nullptr;
}

static World* conducted() {
  World* world = World::current();
  return world != nullptr && !world->runs_free ? world : nullptr;
}

namespace {
struct Start {
  World* world;
  void* (*function)(void*);
  void* argument;
  Conductor::Player* player;
};
}  // namespace

static void* begin(void* argument) {
  std::unique_ptr<Start> start(static_cast<Start*>(argument));
  World* world = start->world;
  world->join();
  if (start->player != nullptr) world->conductor.begin(start->player);
  void* result = start->function(start->argument);
  if (start->player != nullptr) world->conductor.finish();
  return result;
}

extern "C" int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                     void* (*function)(void*), void* argument) {
  World* world = World::current();
  if (world == nullptr) return __real_pthread_create(thread, attributes, function, argument);
  if (world->thread_error != 0) return world->thread_error;
  ++world->threads_made;
  if (world->holds_threads) return world->held_thread = [=] { return function(argument); }, 0;
  auto start = new Start{world, function, argument, nullptr};
  if (!world->runs_free) start->player = world->conductor.add();
  Conductor::Player* player = start->player;
  int error = __real_pthread_create(thread, attributes, begin, start);
  if (player != nullptr) player->handle = *thread;
  return error;
}

extern "C" int __wrap_pthread_join(pthread_t thread, void** result) {
  World* world = conducted();
  if (world == nullptr) return __real_pthread_join(thread, result);
  if (world->holds_threads) return 0;
  world->conductor.join(thread);
  return 0;
}

extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
  World* world = conducted();
  if (world == nullptr) return __real_pthread_mutex_lock(mutex);
  while (pthread_mutex_trylock(mutex) == EBUSY) world->conductor.park(mutex, std::nullopt);
  return 0;
}

extern "C" int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
  int error = __real_pthread_mutex_unlock(mutex);
  if (World* world = conducted()) world->conductor.wake(mutex, true);
  return error;
}

extern "C" int __wrap_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
  World* world = conducted();
  if (world == nullptr) return __real_pthread_cond_wait(condition, mutex);
  __wrap_pthread_mutex_unlock(mutex);
  world->conductor.park(condition, std::nullopt);
  return __wrap_pthread_mutex_lock(mutex);
}

extern "C" int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                             const timespec* end) {
  World* world = World::current();
  if (world == nullptr) return __real_pthread_cond_timedwait(condition, mutex, end);
  Time until = std::chrono::seconds(end->tv_sec) + std::chrono::nanoseconds(end->tv_nsec) -
               World::MONOTONIC_START;
  __wrap_pthread_mutex_unlock(mutex);
  if (world->on_timed_wait) world->on_timed_wait();
  bool woken = false;
  if (world->runs_free) {
    world->sleep_free_until(until);
  } else {
    woken = world->conductor.park(condition, until);
  }
  __wrap_pthread_mutex_lock(mutex);
  return woken ? 0 : ETIMEDOUT;
}

extern "C" int __wrap_pthread_cond_signal(pthread_cond_t* condition) {
  if (World* world = conducted()) world->conductor.wake(condition, false);
  return __real_pthread_cond_signal(condition);
}
