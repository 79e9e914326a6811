// The listener's thread, its exchanges, and how it is stopped.
//
// A stop wakes the listener if it sleeps, and makes it abandon its current exchange, whose late
// answer the next exchange drops. The listener uses the port only when it is free, and has its own
// buffers.
#include "link/event_listener.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "core/module_state.h"
#include "include/zop.h"
#include "link/exchange.h"
#include "link/serial_port.h"
#include "link/upcalls.h"

enum { TICK_MS = 500, TICKS_PER_SECOND = 2, SHUTDOWN_DELAY_S = 1 };
enum { BUFFER_SIZE = RESPONSE_SIZE, REQUEST_SIZE = 3, PAYLOAD = 5 };
enum { FLAGS_REQUEST = '=', SCREEN_REQUEST = '4' };
enum { NOTHING_DONE = 0, EXCHANGED = 1 };  // results besides PORT_ERROR

constinit std::atomic<uint32_t> THREAD_STATUS = LISTENER_STOPPED;
constinit std::atomic<uint32_t> call_end_timeout = 0;
constinit std::atomic<uint8_t> zop_debug_end_callback_status = 0;

static uint8_t* thread_ft_buff = nullptr;  // request; the listener's alone while it runs
static uint8_t* thread_fr_buff = nullptr;  // response

enum { THREAD_CREATED = 0, NO_THREAD = -1 };
static pthread_t listener_thread;
static constinit std::atomic<int> creation_result = NO_THREAD;  // whoever takes it must join

static constinit pthread_mutex_t wake_mutex = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t wake_condition;  // monotonic; initialised by the first start

// ---- buffers ----

static bool Debug_field_Item_malloc() {
  thread_ft_buff = static_cast<uint8_t*>(malloc(BUFFER_SIZE));
  thread_fr_buff = static_cast<uint8_t*>(malloc(BUFFER_SIZE));
  return thread_ft_buff != nullptr && thread_fr_buff != nullptr;
}

// Frees null pointers only. That is intended: a pair of buffers is never freed, and every start
// allocates a new one.
static void Debug_field_Item_free() {
  if (thread_ft_buff == nullptr) free(thread_ft_buff);
  if (thread_fr_buff == nullptr) free(thread_fr_buff);
}

static void debugThreadMemClr() {
  memset(thread_ft_buff, 0, BUFFER_SIZE);
  memset(thread_fr_buff, 0, BUFFER_SIZE);
}

// ---- exchanges ----

static bool is_wanted() { return THREAD_STATUS != LISTENER_STOPPED; }

static constexpr ExchangePolicy LISTENER_POLICY = {try_claim_port, 1, SILENCE_LIMIT_MS,
                                                   ANSWER_LIMIT_MS, is_wanted};

// One request without payload, if the port is free. EXCHANGED with the answer in thread_fr_buff,
// followed by zeros; NOTHING_DONE if the port is busy or the answer damaged.
static int32_t listener_exchange(uint8_t subcommand) {
  thread_ft_buff[0] = ZOP_VENDOR_COMMAND;
  thread_ft_buff[1] = subcommand;
  thread_ft_buff[2] = 0;
  if (diag_status() == 0) return PORT_ERROR;
  Response response = {thread_fr_buff};
  int32_t received = line_exchange({thread_ft_buff, REQUEST_SIZE}, LISTENER_POLICY, &response);
  if (received == PORT_BUSY) return NOTHING_DONE;
  if (received <= 0) return PORT_ERROR;
  return response.length < 0 ? NOTHING_DONE : EXCHANGED;
}

static bool is_failure(int32_t result) { return result == PORT_ERROR; }

// ---- events ----

static void deliver_deactivation(const uint8_t*) { pdp_deactivation_callback(); }

// The call is over, whichever side ended it.
static void deliver_call_end(const uint8_t* record) {
  call_end_callback(record);
  uint32_t state = THREAD_STATUS;
  while (state != LISTENER_STOPPED &&
         !THREAD_STATUS.compare_exchange_weak(state, LISTENER_RUNNING)) {
  }
}

namespace {
// Bit in the event flags, request for the event's record, and its handler. Only the first bit set
// is handled; the modem flags the other events again.
struct ModemEvent {
  uint8_t flag;
  uint8_t request;
  void (*deliver)(const uint8_t* record);
};
}  // namespace

static constexpr ModemEvent EVENTS[] = {
    {0x01, '>', call_orginate_callback},
    {0x02, '?', pdp_activation_callback},
    {0x04, '@', deliver_deactivation},
    {0x08, 'A', deliver_call_end},
};

static int32_t fetch_event(const ModemEvent& event) {
  debugThreadMemClr();
  int32_t result = listener_exchange(event.request);
  if (is_failure(result)) return result;
  if (result == EXCHANGED) event.deliver(thread_fr_buff + PAYLOAD);
  return EXCHANGED;
}

static int32_t poll_events() {
  int32_t result = listener_exchange(FLAGS_REQUEST);
  if (result != EXCHANGED) return result;
  uint8_t flags = thread_fr_buff[PAYLOAD];
  for (const ModemEvent& event : EVENTS) {
    if ((flags & event.flag) != 0) return fetch_event(event);
  }
  return EXCHANGED;
}

static int32_t fetch_screen() {
  debugThreadMemClr();
  int32_t result = listener_exchange(SCREEN_REQUEST);
  if (result != EXCHANGED) return result;
  uint8_t screen[BUFFER_SIZE] = {};
  memcpy(screen, thread_fr_buff + PAYLOAD, ZOP_SCREEN_SIZE);
  field_information_callback(screen);
  return EXCHANGED;
}

// ---- the thread ----

static void sleep_one_tick() {
  timespec end;
  clock_gettime(CLOCK_MONOTONIC, &end);
  end.tv_nsec += TICK_MS * 1'000'000L;
  end.tv_sec += end.tv_nsec / 1'000'000'000L;
  end.tv_nsec %= 1'000'000'000L;
  pthread_mutex_lock(&wake_mutex);
  while (is_wanted() && pthread_cond_timedwait(&wake_condition, &wake_mutex, &end) == 0) {
  }
  pthread_mutex_unlock(&wake_mutex);
}

// Counts the ticks of a timed call, and ends the call when its time is over and the port is free.
// If a call ended by itself, the next one continues its count.
static void time_call(uint64_t* ticks) {
  if (THREAD_STATUS != LISTENER_TIMES_CALL) return;
  ++*ticks;
  if (*ticks <= uint64_t{TICKS_PER_SECOND} * call_end_timeout) return;
  uint32_t state = LISTENER_TIMES_CALL;
  if (!THREAD_STATUS.compare_exchange_strong(state, LISTENER_ENDED_CALL)) return;
  state = LISTENER_ENDED_CALL;
  if (!end_call_if_port_is_free(is_wanted)) {  // retried at the next tick
    THREAD_STATUS.compare_exchange_strong(state, LISTENER_TIMES_CALL);
    return;
  }
  if (THREAD_STATUS == LISTENER_ENDED_CALL)
    call_end_timeout = 0;  // unless a newer call is being timed
  *ticks = 0;
}

// Requests one screen after polls + 1 successful event polls, and repeats a failed request.
static void* listen(void* argument) {
  uintptr_t polls = reinterpret_cast<uintptr_t>(argument);
  uintptr_t good_polls = 0;
  uint64_t call_ticks = 0;
  for (;;) {
    sleep_one_tick();
    if (!is_wanted()) break;
    time_call(&call_ticks);
    if (good_polls > polls) {
      if (!is_failure(fetch_screen())) good_polls = 0;
    } else if (!is_failure(poll_events())) {
      ++good_polls;
    }
  }
  Debug_field_Item_free();
  return nullptr;
}

int create_module_thread(pthread_t* thread, void* (*start)(void*), void* argument) {
  prv_note_process();
  sigset_t asynchronous;
  sigset_t before;
  sigfillset(&asynchronous);
  for (int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP}) {
    sigdelset(&asynchronous, fault);
  }
  pthread_sigmask(SIG_SETMASK, &asynchronous, &before);
  int error = pthread_create(thread, nullptr, start, argument);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return error;
}

// ---- start and stop ----

static void prepare_wake_condition() {
  static constinit bool prepared = false;
  if (prepared) return;
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&wake_condition, &attributes);
  pthread_condattr_destroy(&attributes);
  prepared = true;
}

static void wake_listener() {
  pthread_mutex_lock(&wake_mutex);
  pthread_cond_signal(&wake_condition);
  pthread_mutex_unlock(&wake_mutex);
}

static bool take_listener_thread() { return creation_result.exchange(NO_THREAD) == THREAD_CREATED; }

static void join_listener() {
  if (!take_listener_thread()) return;
  wake_listener();
  pthread_join(listener_thread, nullptr);
}

// Under the module's lock. A listener that an alarm has stopped is joined first.
unsigned zop_debug_start(unsigned polls) {
  if (is_wanted()) return ZOP_ERR_INVALID_ARGUMENT;
  prepare_wake_condition();
  join_listener();
  if (!Debug_field_Item_malloc()) {
    puts("zop_debug_start malloc fail !");
    return ZOP_ERR_NO_MEMORY;
  }
  THREAD_STATUS = LISTENER_RUNNING;
  void* argument = reinterpret_cast<void*>(uintptr_t{polls});
  if (create_module_thread(&listener_thread, listen, argument) != 0) {
    THREAD_STATUS = LISTENER_STOPPED;
    return ZOP_ERR_NO_MEMORY;
  }
  creation_result = THREAD_CREATED;
  (void)zop_debug_mode_start();  // a modem that refuses still answers the listener
  return ZOP_SUCCESS;
}

unsigned zop_debug_stop() {
  THREAD_STATUS = LISTENER_STOPPED;
  join_listener();
  return ZOP_SUCCESS;
}

// The lock may be held for good, by a thread whose signal handler has called exit.
void stop_listener_until(const timespec& end) {
  THREAD_STATUS = LISTENER_STOPPED;
  if (!take_listener_thread()) return;
  if (pthread_mutex_timedlock(&wake_mutex, &end) == 0) {
    pthread_cond_signal(&wake_condition);
    pthread_mutex_unlock(&wake_mutex);
  }
  pthread_timedjoin_np(listener_thread, nullptr, &end);
}

bool time_call_by_listener(uint32_t timeout_s) {
  uint32_t state = THREAD_STATUS;
  if (state == LISTENER_STOPPED) return false;
  call_end_timeout = timeout_s;
  while (!THREAD_STATUS.compare_exchange_weak(state, LISTENER_TIMES_CALL)) {
    if (state == LISTENER_STOPPED) return false;
  }
  return true;
}

// ---- alarms ----

void remove_alarm_handlers() {
  struct sigaction action;
  if (sigaction(SIGALRM, nullptr, &action) != 0) return;
  if (action.sa_handler != callback_debug_close && action.sa_handler != callback_function) return;
  alarm(0);
  action.sa_handler = SIG_IGN;
  sigaction(SIGALRM, &action, nullptr);
}

void zop_debug_end_callback() {
  if (zop_debug_end_callback_status == 1) return;
  uint32_t state = THREAD_STATUS;
  if (state == LISTENER_TIMES_CALL) alarm(0);
  if (state == LISTENER_STOPPED) return;
  struct sigaction action = {};  // act_debug: no flags, empty mask
  action.sa_handler = callback_debug_close;
  sigemptyset(&action.sa_mask);
  sigaction(SIGALRM, &action, nullptr);
  zop_debug_end_callback_status = 1;
  alarm(SHUTDOWN_DELAY_S);
}

// If the link has been reopened since the alarm was set, the status is clear and nothing is
// stopped. The handler may interrupt the host anywhere, with locks held: it only asks the listener
// to end, and the next start or stop joins it.
void callback_debug_close(int) {
  if (zop_debug_end_callback_status == 0) return;
  int saved_errno = errno;
  THREAD_STATUS = LISTENER_STOPPED;
  alarm(0);
  zop_debug_end_callback_status = 0;
  errno = saved_errno;
}

// The alarm is cancelled first: ending the call may fail, which sets an alarm for the listener.
void callback_function(int) {
  int saved_errno = errno;
  alarm(0);
  if (!end_call_if_port_is_free(nullptr)) alarm(1);
  errno = saved_errno;
}
