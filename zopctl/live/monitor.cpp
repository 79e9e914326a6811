// zopctl monitor: a live screen on a terminal, elsewhere a line a sample. Sampling has a thread of
// its own: a silent modem must not hold up the keys.
#include "zopctl/live/monitor.h"

#include <errno.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <thread>

#include "records/changes.h"
#include "zopctl/host/signals.h"
#include "zopctl/live/live_screen.h"
#include "zopctl/live/sampler.h"
#include "zopctl/text/counted.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

static constexpr unsigned MAX_INTERVAL_S = 3600;

static std::string line_of(const Json& json) { return printable_json(json) + '\n'; }

// ---- the recording ----

// The program that wrote it died within a line.
static bool is_cut(const std::string& name) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(name, error)) return false;
  std::ifstream file(name, std::ios::binary);
  return file.seekg(-1, std::ios::end) && file.get() != '\n';
}

namespace {
// Appends to a file. A line is written completely or not at all.
class RecordingFile {
 public:
  explicit RecordingFile(const std::string& file)
      : file_(file),
        is_cut_(is_cut(file)),
        fd_(open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {
    if (fd_ < 0) fail();
  }
  ~RecordingFile() { close(fd_); }
  RecordingFile(const RecordingFile&) = delete;
  RecordingFile& operator=(const RecordingFile&) = delete;

  void add(const Sample& sample);
  std::string text() const { return fmt::format("{} ({})", file_, count_); }

 private:
  [[noreturn]] void fail() const {
    throw file_failure(
        fmt::format("the recording {}, which has {}", file_, counted(count_, "sample")), errno);
  }

  std::string file_;
  bool is_cut_;
  int fd_;
  uint64_t count_ = 0;
  records::ChangeWriter writer_;
};
}  // namespace

void RecordingFile::add(const Sample& sample) {
  std::string line = (is_cut_ ? "\n" : "") + line_of(writer_.line_of(as_json(sample)));
  struct stat before = {};
  bool is_file = fstat(fd_, &before) == 0 && S_ISREG(before.st_mode);
  for (size_t done = 0; done < line.size();) {
    ssize_t n = write(fd_, line.data() + done, line.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      int error = errno;
      if (is_file && ftruncate(fd_, before.st_size) != 0) error = errno;
      errno = error;
      fail();
    }
    done += static_cast<size_t>(n);
  }
  is_cut_ = false;
  ++count_;
}

// ---- sampling ----

namespace {
class Sampling {
 public:
  Sampling(const ModuleLibrary& module, const Arguments& arguments, bool log_lines_go_on)
      : sampler_(module, log_lines_go_on) {
    if (arguments.has("--interval")) {
      interval_s = arguments.number("--interval");
    }
    if (arguments.has("--count")) {
      left_ = arguments.number("--count");
      is_counted_ = true;
    }
    if (arguments.has("--record")) recording_.emplace(arguments.text("--record"));
  }

  // Until the user ends it or the last sample is taken. Throws Interrupted and Failure.
  void run(const std::function<void(const Sample&)>& show) {
    for (;;) {
      Sample sample = sampler_.take();
      if (recording_) recording_->add(sample);
      show(sample);
      if (is_counted_ && --left_ == 0) return;
      wait_seconds(interval_s);
    }
  }

  std::string recording() const { return recording_ ? recording_->text() : ""; }

  std::atomic<unsigned> interval_s = 1;

 private:
  Sampler sampler_;
  std::optional<RecordingFile> recording_;
  uint32_t left_ = 0;
  bool is_counted_ = false;
};
}  // namespace

static void print_lines(Sampling& sampling, bool json) {
  sampling.run([json](const Sample& sample) {
    fmt::print("{}", json ? line_of(as_json(sample)) : as_line(sample) + '\n');
    if (fflush(stdout) != 0) throw Failure("the output could not be written; is the disk full?");
  });
}

// ---- the live view ----

namespace {
class LiveMonitor {
 public:
  LiveMonitor(Sampling& sampling, LiveScreen& screen);
  ~LiveMonitor();
  LiveMonitor(const LiveMonitor&) = delete;
  LiveMonitor& operator=(const LiveMonitor&) = delete;

  void run();  // until the user ends it, or the last sample

 private:
  void take_samples();
  void announce() const;
  bool wait_for_news() const;
  bool take_keys();
  void change_interval(int step);
  void draw();

  Sampling& sampling_;
  LiveScreen& screen_;
  int news_;  // an eventfd: a new sample, or the end of sampling
  std::mutex mutex_;
  LiveView view_;               // newest; under the mutex
  std::exception_ptr failure_;  // of sampling; under the mutex
  bool has_ended_ = false;      // sampling; under the mutex
  LiveView shown_;
  std::thread thread_;
};
}  // namespace

// The sampling thread takes no signals: they wake the one that draws.
LiveMonitor::LiveMonitor(Sampling& sampling, LiveScreen& screen)
    : sampling_(sampling), screen_(screen), news_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  thread_ = std::thread([this] { take_samples(); });
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

LiveMonitor::~LiveMonitor() {
  ask_to_end();
  thread_.join();
  close(news_);
}

void LiveMonitor::announce() const {
  uint64_t one = 1;
  if (write(news_, &one, sizeof one) < 0) return;  // full: a wake-up is pending
}

void LiveMonitor::take_samples() {
  std::exception_ptr failure;
  try {
    sampling_.run([this](const Sample& sample) {
      std::lock_guard lock(mutex_);
      view_.add(sample);
      view_.recording = sampling_.recording();
      announce();
    });
  } catch (const Interrupted&) {  // the drawing thread knows
  } catch (...) {
    failure = std::current_exception();
  }
  std::lock_guard lock(mutex_);
  failure_ = failure;
  has_ended_ = true;
  announce();
}

// False when the terminal is gone.
bool LiveMonitor::wait_for_news() const {
  pollfd sources[] = {{STDIN_FILENO, POLLIN, 0}, {news_, POLLIN, 0}, {end_descriptor(), POLLIN, 0}};
  if (poll(sources, std::size(sources), -1) < 0) return true;  // a signal: the size has changed
  uint64_t count;
  if (sources[1].revents != 0 && read(news_, &count, sizeof count) < 0) return true;
  return (sources[0].revents & (POLLHUP | POLLERR)) == 0;
}

void LiveMonitor::change_interval(int step) {
  int changed = static_cast<int>(sampling_.interval_s) + step;
  if (changed >= 1 && changed <= static_cast<int>(MAX_INTERVAL_S)) {
    sampling_.interval_s = static_cast<unsigned>(changed);
  }
}

// False when the user wants to leave.
bool LiveMonitor::take_keys() {
  for (int key; (key = screen_.key()) != -1;) {
    if (key == 'q' || key == 'Q') return false;
    if (key == 'p' || key == ' ') shown_.is_paused = !shown_.is_paused;
    if (key == '+') change_interval(1);
    if (key == '-') change_interval(-1);
  }
  return true;
}

void LiveMonitor::draw() {
  bool is_paused = shown_.is_paused;
  if (!is_paused) {
    std::lock_guard lock(mutex_);
    shown_ = view_;
  }
  shown_.is_paused = is_paused;
  shown_.interval_s = sampling_.interval_s;
  screen_.draw(shown_);
}

void LiveMonitor::run() {
  for (draw(); wait_for_news() && take_keys(); draw()) {
    check_signals();
    std::lock_guard lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
    if (has_ended_) return;
  }
}

static void check_monitor(const Arguments& arguments) {
  if (arguments.has("--record") && arguments.text("--record") == "-")
    throw UsageError("--record needs a file; monitor --json prints the samples");
}

static Findings monitor(const ModuleLibrary& m, const Arguments& arguments) {
  bool wants_screen = !arguments.json && isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
  bool log_lines_go_on = !wants_screen || isatty(STDERR_FILENO) == 0;
  Sampling sampling(m, arguments, log_lines_go_on);
  auto screen = wants_screen ? LiveScreen::open() : nullptr;
  if (screen) {
    LiveMonitor(sampling, *screen).run();
  } else {
    if (wants_screen)
      fmt::print(stderr, "zopctl: no live view on a terminal of this type ($TERM)\n");
    print_lines(sampling, arguments.json);
  }
  return {};
}

const Verb MONITOR = {
    .name = "monitor",
    .help = "watch signal, cells, state and events of the modem",
    .need = Session::MODULE,
    .samples = true,
    .arguments = {{.name = "--record",
                   .help = "append the samples to this file, one JSON object per line"},
                  {.name = "--interval",
                   .help = "seconds between samples (default 1)",
                   .range = Range{1, MAX_INTERVAL_S}},
                  {.name = "--count",
                   .help = "end after this many samples",
                   .range = Range{1, std::numeric_limits<uint32_t>::max()}}},
    .check = check_monitor,
    .run = monitor};

}  // namespace zopctl
