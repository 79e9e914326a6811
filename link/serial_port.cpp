// The serial port. SER_SIG and the claim are atomic because the event listener and the alarm
// handlers read them without the host's lock.
#include "link/serial_port.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include "core/module_state.h"
#include "link/event_listener.h"
#include "link/frame_codec.h"

enum {
  MAX_WRITES = 15,
  MAX_BUSY_TESTS = 100,
  BUSY_PAUSE_US = 2000,
  CHECK_INTERVAL_MS = 50,  // how often a wait checks whether it is still wanted
  WRITE_LIMIT_MS = 5000,
  SETTLE_LIMIT_MS = 5000,  // in case a thread is not scheduled
  DLOAD_LIMIT_MS = 4000,
  ERASE_LIMIT_MS = 30'000,
  DLOAD_PIECE_MS = 200,
};

constinit std::atomic<int32_t> SER_SIG = 0;
constinit std::atomic<uint32_t> SIO_USED_LOCK = 0;
constinit uint8_t efs_clear = 0;

static constinit termios oldtio = {};  // settings found at open, restored at close
static constinit std::atomic<uint32_t> last_open_id = 0;

// The number of uses in progress in the upper 12 bits, and in the lower 20 a closed port's
// descriptor that waits for them to end. One atomic word, because a signal handler may close the
// port at any point.
enum : uint32_t { ONE_USE = 1u << 20, WAITING_DESCRIPTOR = ONE_USE - 1 };
static constinit std::atomic<uint32_t> port_uses = 0;

// ---- time ----

uint32_t monotonic_ms() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint32_t>(now.tv_sec) * 1000 + static_cast<uint32_t>(now.tv_nsec / 1'000'000);
}

static int32_t ms_until(uint32_t moment) { return static_cast<int32_t>(moment - monotonic_ms()); }

// ---- uses and claims ----

// Restores the line's old settings only when nothing reads from it: with them it may echo what the
// modem sends.
static void close_descriptor(int fd) {
  tcsetattr(fd, TCSANOW, &oldtio);
  close(fd);
}

// open_id is read last because an open sets it first: so it is never older than the descriptor.
PortUse::PortUse(bool (*wanted)()) : wanted_(wanted) {
  port_uses += ONE_USE;
  fd = SER_SIG;
  open_id = last_open_id;
}

PortUse::~PortUse() {
  uint32_t left = port_uses -= ONE_USE;
  bool last_of_a_closed_port = left != 0 && left < ONE_USE;
  if (last_of_a_closed_port && port_uses.compare_exchange_strong(left, 0)) {
    close_descriptor(static_cast<int>(left));
  }
}

bool PortUse::is_current() const { return SER_SIG == fd && last_open_id == open_id; }

// Closes the descriptor, now or when its last use ends. There is room for one that waits, because
// the next open first waits for the uses to end.
static void release_descriptor(int fd) {
  uint32_t uses = port_uses;
  while (uses >= ONE_USE && (uses & WAITING_DESCRIPTOR) == 0) {
    if (port_uses.compare_exchange_weak(uses, uses | static_cast<uint32_t>(fd))) return;
  }
  close_descriptor(fd);
}

int32_t fail_port(const PortUse& port, int32_t result) {
  int32_t fd = port.fd;
  if (port.is_current() && SER_SIG.compare_exchange_strong(fd, 0)) {
    discard_unsent(port);
    if (fd > 0) release_descriptor(fd);
    zop_debug_end_callback();
  }
  release_port(port);
  return result;
}

bool try_claim_port(const PortUse& port) {
  uint32_t seen = SIO_USED_LOCK;
  while (seen != port.open_id && port.is_current()) {
    if (!SIO_USED_LOCK.compare_exchange_weak(seen, port.open_id)) continue;
    if (port.is_current()) return true;
    release_port(port);
    return false;
  }
  return false;
}

bool claim_port(const PortUse& port) {
  for (int test = 0; test < MAX_BUSY_TESTS; ++test) {
    if (try_claim_port(port)) return true;
    if (!port.is_current()) return false;
    usleep(BUSY_PAUSE_US);
  }
  fail_port(port, PORT_ERROR);
  return false;
}

void release_port(const PortUse& port) {
  uint32_t mine = port.open_id;
  SIO_USED_LOCK.compare_exchange_strong(mine, 0);
}

// ---- open and close ----

// If the host's standard streams are closed, open may return descriptor 0 to 2: 0 would mean
// "closed", and the host's output would go to the modem. The descriptor is then moved up.
// O_CLOEXEC, so that child processes do not keep the device busy.
static int open_above_standard_streams(const char* path) {
  int fd;
  do fd = open(path, O_RDWR | O_CLOEXEC);
  while (fd < 0 && errno == EINTR);
  if (fd < 0 || fd > STDERR_FILENO) return fd;
  int moved = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(fd);
  return moved;
}

// Reads and writes never block: the module waits in poll, at short intervals.
static void apply_line_settings(int fd) {
  fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
  tcgetattr(fd, &oldtio);
  termios newtio = {};
  newtio.c_iflag = IGNPAR;
  newtio.c_oflag = OPOST;
  newtio.c_cflag = B115200 | CS8 | CREAD;  // no CLOCAL, no parity, one stop bit, no flow control
  newtio.c_cc[VTIME] = 0;
  newtio.c_cc[VMIN] = 0;  // a read returns at once with the bytes available
  tcflush(fd, TCIFLUSH);
  tcsetattr(fd, TCSANOW, &newtio);
}

// Waits for exchanges on other threads, which end within 0.1 s of the port's close.
static void wait_for_uses_to_end() {
  uint32_t until = monotonic_ms() + SETTLE_LIMIT_MS;
  while (port_uses >= ONE_USE && ms_until(until) > 0) usleep(BUSY_PAUSE_US);
}

int32_t diag_open(const char* path) {
  diag_close();
  wait_for_uses_to_end();
  prv_note_process();
  int fd = open_above_standard_streams(path);
  if (fd > static_cast<int>(WAITING_DESCRIPTOR)) {
    close(fd);
    fd = -1;
  }
  if (fd >= 0) apply_line_settings(fd);
  if (++last_open_id == 0) ++last_open_id;  // 0 means "not claimed"
  SER_SIG = fd;
  return fd >= 0 ? 1 : PORT_ERROR;
}

void diag_close() {
  int fd = SER_SIG.exchange(0);
  if (fd > 0) release_descriptor(fd);
}

void discard_unsent(const PortUse& port) {
  if (port.fd > 0) tcflush(port.fd, TCOFLUSH);
}

int32_t diag_status() { return SER_SIG != 0 ? 1 : 0; }

// ---- waiting ----

// 1 when the port is ready for events; otherwise PORT_TIMEOUT, PORT_ABANDONED or PORT_ERROR. Input
// on a port that has been closed belongs to another exchange, and input after until is too late, so
// that a modem that sends without pause can't keep an exchange open.
static int32_t wait_for_port(const PortUse& port, short events, uint32_t until) {
  if (port.fd <= 0) return PORT_ERROR;
  for (;;) {
    if (!port.is_wanted()) return PORT_ABANDONED;
    int32_t left = ms_until(until);
    if (left < 0) return PORT_TIMEOUT;
    int limit = left < CHECK_INTERVAL_MS ? left : int{CHECK_INTERVAL_MS};
    pollfd line = {port.fd, events, 0};
    int ready = poll(&line, 1, limit);
    if (ready < 0 && errno != EINTR) return PORT_ERROR;
    if (!port.is_current()) return PORT_ERROR;
    if (ready > 0) return 1;
    if (left == 0) return PORT_TIMEOUT;
  }
}

// Waits until the line accepts bytes again.
static int32_t wait_to_write(const PortUse& port, uint32_t until) {
  int32_t result = wait_for_port(port, POLLOUT, until);
  if (result == 1 && ms_until(until) > 0) return 1;
  discard_unsent(port);
  return result == PORT_ABANDONED ? result : int32_t{PORT_ERROR};
}

// ---- reading and writing ----

int32_t write_port(const PortUse& port, const uint8_t* bytes, uint32_t length, uint32_t* sent) {
  *sent = 0;
  if (port.fd <= 0) return PORT_ERROR;  // closed; 0 would be the host's standard input
  uint32_t until = monotonic_ms() + WRITE_LIMIT_MS;
  for (int writes = 0; writes < MAX_WRITES && *sent < length;) {
    ssize_t n = write(port.fd, bytes + *sent, length - *sent);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && errno == EAGAIN) {
      int32_t ready = wait_to_write(port, until);
      if (ready < 0) return ready;
      writes = 0;  // the line has room again
      continue;
    }
    if (n < 0) return PORT_ERROR;
    *sent += static_cast<uint32_t>(n);
    ++writes;
  }
  return *sent == length ? static_cast<int32_t>(length) : 0;
}

int32_t read_port(const PortUse& port, uint8_t* bytes, uint32_t size, uint32_t until) {
  for (;;) {
    int32_t ready = wait_for_port(port, POLLIN, until);
    if (ready < 0) return ready;
    ssize_t n = read(port.fd, bytes, size);
    if (n >= 0) return static_cast<int32_t>(n);
    if (errno == EAGAIN) return 0;
    if (errno != EINTR) return PORT_ERROR;
  }
}

int32_t write_claimed(const PortUse& port, const uint8_t* bytes, uint32_t length) {
  uint32_t sent;
  int32_t written = write_port(port, bytes, length, &sent);
  return written <= 0 ? fail_port(port, written) : written;
}

int32_t diag_write(const uint8_t* buffer, uint32_t length) {
  PortUse port;
  return claim_port(port) ? write_claimed(port, buffer, length) : int32_t{PORT_ERROR};
}

// A reply may start with a flag, which does not end it.
static bool is_reply_whole(const uint8_t* reply, uint32_t length) {
  return length == DLOAD_SIZE || (length > 1 && reply[length - 1] == FRAME_FLAG);
}

// An error ends the reply like a time-out: the caller's frame check rejects what is incomplete.
int32_t dload_read(uint8_t* buffer) {
  PortUse port;
  uint32_t end = monotonic_ms() + (efs_clear ? ERASE_LIMIT_MS : DLOAD_LIMIT_MS);
  uint32_t until = end;
  uint32_t length = 0;
  while (!is_reply_whole(buffer, length)) {
    int32_t n = read_port(port, buffer + length, DLOAD_SIZE - length, until);
    if (n <= 0) break;
    length += static_cast<uint32_t>(n);
    until = monotonic_ms() + DLOAD_PIECE_MS;
    if (static_cast<int32_t>(end - until) < 0) until = end;
  }
  release_port(port);
  return static_cast<int32_t>(length);
}
