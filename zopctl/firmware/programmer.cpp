// Greets it, as each command must follow a greeting, and sends the reset of the streaming download.
// In diagnostics the greeting is a request for the serial number, of a wrong length.
#include "zopctl/firmware/programmer.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string_view>

#include "simulator/line/frame.h"
#include "zopctl/host/host_calls.h"
#include "zopctl/host/signals.h"

namespace zopctl {

constexpr std::string_view HOST = "QCOM fast download protocol host", MODEM = "QCOM fast download";
constexpr uint8_t HELLO = 0x01, HELLO_ANSWER = 0x02, RESTART = 0x0B;
constexpr std::chrono::seconds ANSWER_TIME{2};

// The flag in front ends what a killed program may have begun.
static bool send(int fd, const sim::Bytes& packet) {
  sim::Bytes wire = sim::frame(packet);
  wire.insert(wire.begin(), sim::FLAG);
  return write(fd, wire.data(), wire.size()) == static_cast<ssize_t>(wire.size());
}

static sim::Bytes hello() {
  constexpr uint8_t VERSION = 3, FEATURES = 0x09;
  sim::Bytes packet = {HELLO};
  packet.insert(packet.end(), HOST.begin(), HOST.end());
  packet.insert(packet.end(), {VERSION, VERSION, FEATURES});
  return packet;
}

// A boot ROM's acknowledgement has the same code, but no text.
static bool is_hello_answer(const sim::Bytes& packet) {
  std::string_view text(reinterpret_cast<const char*>(packet.data()), packet.size());
  return !packet.empty() && packet[0] == HELLO_ANSWER && text.substr(1).starts_with(MODEM);
}

// Waits in real time even when a simulated modem's runs faster: the module would take a later
// answer for one to its first request.
static bool answers_hello(int fd) {
  sim::Deframer deframer;
  auto end = std::chrono::steady_clock::now() + ANSWER_TIME;
  while (std::chrono::steady_clock::now() < end) {
    pollfd input = {fd, POLLIN, 0};
    poll(&input, 1, 50);
    check_signals();
    uint8_t piece[256];
    ssize_t size = read(fd, piece, sizeof piece);
    if (size == 0 || (size < 0 && errno != EAGAIN && errno != EINTR)) return false;  // it is gone
    for (ssize_t i = 0; i < size; ++i) {
      if (deframer.take(piece[i]) == sim::Deframer::GOOD)
        return is_hello_answer(deframer.payload());
    }
  }
  return false;
}

static void make_raw(int fd) {
  termios line = {};
  tcgetattr(fd, &line);
  cfmakeraw(&line);
  cfsetspeed(&line, B115200);
  tcsetattr(fd, TCSANOW, &line);
  tcflush(fd, TCIFLUSH);  // answers to the killed program
}

namespace {
struct Port {
  int fd = open(MODULE_DEVICE, O_RDWR | O_NOCTTY | O_NONBLOCK);
  ~Port() {
    if (fd >= 0) close(fd);
  }
};
}  // namespace

bool end_running_programmer() {
  Port port;
  if (port.fd < 0) return false;
  make_raw(port.fd);
  bool runs = send(port.fd, hello()) && answers_hello(port.fd);
  if (runs) send(port.fd, {RESTART});
  tcdrain(port.fd);
  return runs;
}

}  // namespace zopctl
