// A port that is open or reserved elsewhere is left alone: a question would take another program's
// answers. The port is reserved and locked meanwhile, and its settings are restored.
#include "zopctl/host/probe.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>

#include "simulator/line/frame.h"
#include "zopctl/host/device_sharing.h"
#include "zopctl/host/port_lock.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"

namespace zopctl {

constexpr auto ANSWER_TIME = std::chrono::milliseconds(250);

constexpr uint8_t VENDOR_REQUEST = 0xCF;
constexpr size_t TEXT = 5;  // where the text of a vendor answer begins

namespace {
class Line {
 public:
  explicit Line(const std::string& device)
      : fd_(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    if (fd_ < 0) throw Failure("can't be opened: " + std::string(strerror(errno)));
    bool free = lock_device(fd_);
    if (!free || tcgetattr(fd_, &before_) != 0) {
      close(fd_);
      throw Failure(free ? "is not a serial device" : "is in use by another program");
    }
    make_raw();
  }
  ~Line() {
    tcsetattr(fd_, TCSANOW, &before_);
    close(fd_);
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  // The payload of the answer; empty if none comes.
  sim::Bytes ask(const sim::Bytes& request);

 private:
  using Clock = std::chrono::steady_clock;
  void make_raw() {
    termios raw = before_;
    cfmakeraw(&raw);
    tcsetattr(fd_, TCSANOW, &raw);
    tcflush(fd_, TCIOFLUSH);
  }
  bool wait_for_bytes(Clock::time_point until) const;

  int fd_;
  termios before_ = {};
};
}  // namespace

bool Line::wait_for_bytes(Clock::time_point until) const {
  for (;;) {
    check_signals();
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now());
    if (left.count() <= 0) return false;
    pollfd line = {fd_, POLLIN, 0};
    int ready = poll(&line, 1, static_cast<int>(left.count()));
    if (ready > 0) return (line.revents & POLLIN) != 0;
  }
}

// Reports that come unasked begin with other bytes.
sim::Bytes Line::ask(const sim::Bytes& request) {
  sim::Bytes wire = sim::frame(request);
  if (write(fd_, wire.data(), wire.size()) != static_cast<ssize_t>(wire.size())) return {};
  sim::Deframer deframer;
  for (auto until = Clock::now() + ANSWER_TIME; wait_for_bytes(until);) {
    uint8_t piece[512];
    ssize_t size = read(fd_, piece, sizeof piece);
    for (ssize_t i = 0; i < size; ++i) {
      if (deframer.take(piece[i]) != sim::Deframer::GOOD) continue;
      const sim::Bytes& answer = deframer.payload();
      size_t echoed = request[0] == VENDOR_REQUEST ? 2 : 1;
      if (answer.size() > echoed &&
          std::equal(request.begin(), request.begin() + static_cast<ptrdiff_t>(echoed),
                     answer.begin()))
        return answer;
    }
  }
  return {};
}

static std::string vendor_text(Line& line, uint8_t subcommand) {
  sim::Bytes answer = line.ask({VENDOR_REQUEST, subcommand, 0});
  bool good = answer.size() > TEXT && answer[3] == 0 && answer[4] == 0;
  return good ? printable(std::span(answer).subspan(TEXT)) : "";
}

// Every modem tells its time, whatever else it can do.
static std::optional<Identity> ask_identity(Line& line) {
  constexpr uint8_t TIMESTAMP = 0x1D;
  if (line.ask({TIMESTAMP}).empty()) return std::nullopt;
  return Identity{vendor_text(line, 'H'), vendor_text(line, ']'), vendor_text(line, 'g')};
}

static ProbedPort probe(const Port& port) {
  ProbedPort probed = {port, "", std::nullopt};
  try {
    if (auto holder = holder_of(port.device)) throw Failure("is in use by " + *holder);
    PortLock lock(port.device, "devices");
    Line line(port.device);
    probed.modem = ask_identity(line);
  } catch (const Failure& failure) {
    probed.unused = failure.what();
  }
  return probed;
}

std::vector<ProbedPort> probe_ports() {
  std::vector<ProbedPort> probed;
  for (const Port& port : modem_ports()) probed.push_back(probe(port));
  return probed;
}

}  // namespace zopctl
