// The serial port. SER_SIG and the claim are atomics because the event listener and the alarm
// handlers look at them from outside the host's lock; the buffers belong to the callers.
#include "link/serial_port.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include "link/event_listener.h"

enum {
  FRAME_FLAG = 0x7E,
  MAX_WRITES = 15,
  MAX_EMPTY_READS = 16,
  MAX_BUSY_TESTS = 100,
  BUSY_PAUSE_US = 2000,
  ANSWER_LIMIT_S = 5,
  PROBE_LIMIT_S = 1,
  DLOAD_LIMIT_S = 4,
  ERASE_LIMIT_S = 30,
};

constinit std::atomic<int32_t> SER_SIG = 0;
constinit std::atomic<uint32_t> SIO_USED_LOCK = 0;
constinit uint8_t efs_clear = 0;

static constinit termios oldtio = {};  // settings found at open, restored at close
static constinit termios newtio = {};  // settings while open

// Uses under way in the upper half, a descriptor that waits for their end in the lower. One word,
// without a lock: a signal handler may close the port in the middle of anything.
enum : uint32_t { ONE_USE = 1u << 16, WAITING_DESCRIPTOR = ONE_USE - 1 };
static constinit std::atomic<uint32_t> port_uses = 0;

PortUse::PortUse() {
  port_uses += ONE_USE;
  fd = SER_SIG;
}

PortUse::~PortUse() {
  uint32_t left = port_uses -= ONE_USE;
  bool last_of_a_closed_port = left != 0 && left < ONE_USE;
  if (last_of_a_closed_port && port_uses.compare_exchange_strong(left, 0)) {
    close(static_cast<int>(left));
  }
}

// Gives the descriptor back, now or when its last use ends. The word holds one that waits: another
// port is opened only when the uses of the one before have ended.
static void release_descriptor(int fd) {
  tcsetattr(fd, TCSANOW, &oldtio);
  uint32_t uses = port_uses;
  while (uses >= ONE_USE && (uses & WAITING_DESCRIPTOR) == 0) {
    if (port_uses.compare_exchange_weak(uses, uses | static_cast<uint32_t>(fd))) return;
  }
  close(fd);
}

// The one way out of every fatal error. A port that somebody else has closed already is left alone.
static int32_t fail(const PortUse& port, int32_t result) {
  int32_t fd = port.fd;
  if (!SER_SIG.compare_exchange_strong(fd, 0)) return result;
  if (fd > 0) release_descriptor(fd);
  zop_debug_end_callback();
  SIO_USED_LOCK = 0;
  return result;
}

// In a host whose standard streams are closed the device may come as descriptor 0 to 2: 0 would
// read as "closed", and the host's own output would go to the modem. Such a one is moved up.
static int open_above_standard_streams(const char* path) {
  int fd;
  do fd = open(path, O_RDWR);
  while (fd < 0 && errno == EINTR);
  if (fd < 0 || fd > STDERR_FILENO) return fd;
  int moved = fcntl(fd, F_DUPFD, STDERR_FILENO + 1);
  close(fd);
  return moved;
}

static void apply_line_settings(int fd) {
  tcgetattr(fd, &oldtio);
  newtio = {};
  newtio.c_iflag = IGNPAR;
  newtio.c_oflag = OPOST;
  newtio.c_cflag = B115200 | CS8 | CREAD;  // no CLOCAL, no parity, one stop bit, no flow control
  newtio.c_cc[VTIME] = 0;
  newtio.c_cc[VMIN] = 0;  // a read returns at once with what is there
  tcflush(fd, TCIFLUSH);
  tcsetattr(fd, TCSANOW, &newtio);
}

// Nobody uses a closed port for longer than an answer may take.
void diag_settle() {
  constexpr int MOST_PAUSES = (ANSWER_LIMIT_S + 1) * (1'000'000 / BUSY_PAUSE_US);
  diag_close();
  for (int pause = 0; pause < MOST_PAUSES && port_uses >= ONE_USE; ++pause) usleep(BUSY_PAUSE_US);
  SIO_USED_LOCK = 0;
}

int32_t diag_open(const char* path) {
  diag_settle();
  int fd = open_above_standard_streams(path);
  if (fd >= FD_SETSIZE) {  // select can't watch it
    close(fd);
    fd = -1;
  }
  if (fd >= 0) apply_line_settings(fd);
  SER_SIG = fd;
  return fd >= 0 ? 1 : PORT_ERROR;
}

void diag_close() {
  int fd = SER_SIG.exchange(0);
  if (fd > 0) release_descriptor(fd);
}

int32_t diag_status() { return SER_SIG != 0 ? 1 : 0; }

bool try_claim_port(const PortUse& port) {
  uint32_t idle = 0;
  if (!SIO_USED_LOCK.compare_exchange_strong(idle, 1)) return false;
  if (port.is_current()) return true;
  SIO_USED_LOCK = 0;
  return false;
}

bool claim_port(const PortUse& port) {
  for (int test = 0; test < MAX_BUSY_TESTS; ++test) {
    if (try_claim_port(port)) return true;
    if (!port.is_current()) return false;
    usleep(BUSY_PAUSE_US);
  }
  fail(port, PORT_ERROR);
  return false;
}

int32_t write_claimed(const PortUse& port, const uint8_t* buffer, uint32_t length) {
  if (port.fd <= 0) return fail(port, PORT_ERROR);  // closed: 0 is the host's standard input
  uint32_t sent = 0;
  for (int writes = 0; writes < MAX_WRITES && sent < length;) {
    ssize_t n = write(port.fd, buffer + sent, length - sent);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return fail(port, PORT_ERROR);
    sent += static_cast<uint32_t>(n);
    ++writes;
  }
  if (sent < length) return fail(port, 0);
  return static_cast<int32_t>(length);
}

int32_t diag_write(const uint8_t* buffer, uint32_t length) {
  PortUse port;
  if (!claim_port(port)) return PORT_ERROR;
  return write_claimed(port, buffer, length);
}

// 1 when there is input, 0 when the limit passed, -1 on error. A signal does not start the limit
// anew: select leaves the time that remains in it.
static int wait_for_input(int fd, int seconds) {
  if (fd <= 0) return -1;
  timeval limit = {seconds, 0};
  for (;;) {
    fd_set input;
    FD_ZERO(&input);
    FD_SET(fd, &input);
    int ready = select(fd + 1, &input, nullptr, nullptr, &limit);
    if (ready >= 0 || errno != EINTR) return ready;
  }
}

static ssize_t read_some(int fd, uint8_t* buffer, size_t size) {
  ssize_t n;
  do n = read(fd, buffer, size);
  while (n < 0 && errno == EINTR);
  return n;
}

static int32_t read_frame(const PortUse& port, uint8_t* buffer, int limit_s) {
  int32_t held = 0;
  for (int empty_reads = 0;;) {
    int ready = wait_for_input(port.fd, limit_s);
    if (ready < 0) return fail(port, PORT_ERROR);
    if (ready == 0) return fail(port, PORT_TIMEOUT);
    if (!port.is_current()) return PORT_ERROR;  // what has come is another exchange's
    ssize_t n = read_some(port.fd, buffer + held, static_cast<size_t>(RESPONSE_SIZE - held));
    if (n < 0) return fail(port, PORT_ERROR);
    if (n == 0 && ++empty_reads == MAX_EMPTY_READS) return fail(port, PORT_ERROR);
    held += static_cast<int32_t>(n);
    if (held > 0 && buffer[held - 1] == FRAME_FLAG) {
      if (!port.is_current()) return PORT_ERROR;  // the claim is another exchange's
      SIO_USED_LOCK = 0;
      return held;
    }
    if (held == RESPONSE_SIZE) return fail(port, PORT_ERROR);  // full, and no frame ends here
  }
}

int32_t read_answer(const PortUse& port, uint8_t* buffer) {
  return read_frame(port, buffer, ANSWER_LIMIT_S);
}

int32_t diag_read(uint8_t* buffer) {
  PortUse port;
  return read_answer(port, buffer);
}

int32_t diag_read_wait_1sec(uint8_t* buffer) {
  PortUse port;
  return read_frame(port, buffer, PROBE_LIMIT_S);
}

int32_t dload_read(uint8_t* buffer) {
  PortUse port;
  int32_t total = 0;
  if (wait_for_input(port.fd, efs_clear ? ERASE_LIMIT_S : DLOAD_LIMIT_S) > 0) {
    // The second read takes what followed the first piece. An error counts as the -1 it returns;
    // the caller's frame check refuses what is left.
    ssize_t first = read_some(port.fd, buffer, DLOAD_SIZE);
    size_t held = first > 0 ? static_cast<size_t>(first) : 0;
    ssize_t second = read_some(port.fd, buffer + held, DLOAD_SIZE - held);
    total = static_cast<int32_t>(first + second);
  }
  SIO_USED_LOCK = 0;
  return total;
}
