// The three styles of progress. The caller makes texts from a modem printable. Write errors are
// ignored: a closed pipe or a lost terminal must not end the work.
#include "zopctl/firmware/progress.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

#include "zopctl/host/signals.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"

namespace zopctl {

constexpr auto BAR_INTERVAL = std::chrono::milliseconds(100);
constexpr size_t BAR_WIDTH = 24;

static unsigned share(uint64_t done, uint64_t total, unsigned parts) {
  if (total == 0) return 0;
  return static_cast<unsigned>(std::min(done, total) * parts / total);
}

static std::string minutes(double seconds) {
  auto whole = static_cast<unsigned>(std::clamp(seconds, 0.0, 359999.0));
  return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

Progress::Style Progress::style_for(FILE* out, bool json) {
  if (json) return EVENTS;
  return isatty(fileno(out)) != 0 ? BAR : LINES;
}

Progress::Progress(FILE* out, Style style) : out_(out), style_(style) {}

Progress::~Progress() {
  clear_bar();
  forget_last_words();
}

void Progress::clear_bar() {
  if (bar_is_shown_) fputs("\r\033[K", out_);
  fflush(out_);
  bar_is_shown_ = false;
}

void Progress::print_line(const std::string& text) {
  clear_bar();
  fputs((text + "\n").c_str(), out_);
  fflush(out_);
}

void Progress::event(const char* name, const Json& fields) {
  if (style_ != EVENTS) return;
  Json object = {{"event", name}};
  object.update(fields);
  print_line(printable_json(object));
}

void Progress::on_hard_exit(const std::string& text, const std::string& advice, int exit_code) {
  Json event = {{"event", "end"},
                {"result", "interrupted"},
                {"error", error_object(exit_code, text, advice)}};
  LastWords words = {.text = "zopctl: " + text + (advice.empty() ? "" : "; " + advice) + "\n",
                     .event = {},
                     .event_fd = fileno(out_),
                     .exit_code = exit_code};
  if (style_ == EVENTS) words.event = printable_json(event) + "\n";
  set_last_words(words);
}

void Progress::stage(const std::string& key, const std::string& text) {
  stage_ = key;
  part_.clear();
  counting_ = false;
  steps_shown_ = 0;
  event("stage", {{"stage", key}, {"text", text}});
  if (style_ != EVENTS) print_line(text);
}

void Progress::note(const std::string& text) {
  event("note", {{"stage", stage_}, {"text", text}});
  if (style_ != EVENTS) print_line("  " + text);
}

double Progress::speed_of(const Amount& amount) const {
  double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  bool known = seconds > 0 && amount.done > done_at_start_;
  return known ? static_cast<double>(amount.done - done_at_start_) / seconds : 0;
}

// One less than the terminal's columns: a full line would wrap and could not be cleared.
static size_t columns(FILE* out) {
  winsize size = {};
  bool known = ioctl(fileno(out), TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
  return known ? size.ws_col - 1u : 79u;
}

void Progress::show_transient(const std::string& text) {
  fputs(fmt::format("\r{}\033[K", text.substr(0, columns(out_))).c_str(), out_);
  fflush(out_);
  bar_is_shown_ = true;
}

void Progress::show_bar(const Amount& amount) {
  if (bar_is_shown_ && Clock::now() - shown_ < BAR_INTERVAL) return;
  shown_ = Clock::now();
  double speed = speed_of(amount);
  size_t full = share(amount.done, amount.total, BAR_WIDTH);
  std::string line =
      fmt::format("  [{}{}] {:3} %  {} {} %", std::string(full, '#'),
                  std::string(BAR_WIDTH - full, '.'), share(amount.done, amount.total, 100),
                  amount.part, share(amount.part_done, amount.part_total, 100));
  if (speed > 0 && amount.total >= amount.done) {
    double left = static_cast<double>(amount.total - amount.done) / speed;
    line += fmt::format("  {}/s  {} left", size_text(static_cast<uint64_t>(speed)), minutes(left));
  }
  show_transient(line);
}

void Progress::countdown(unsigned seconds) {
  if (style_ == BAR) show_transient(fmt::format("  {} s", seconds));
}

void Progress::amount(const Amount& amount) {
  if (!counting_) {
    start_ = Clock::now();
    done_at_start_ = amount.done;
    counting_ = true;
  }
  if (style_ == BAR) return show_bar(amount);
  bool new_part = amount.part != part_;
  part_ = amount.part;
  unsigned step = share(amount.done, amount.total, style_ == EVENTS ? 100 : 10);
  if (step == steps_shown_ && !(new_part && style_ == EVENTS)) return;
  steps_shown_ = step;
  event("progress", {{"stage", stage_},
                     {"part", amount.part},
                     {"part_done_bytes", amount.part_done},
                     {"part_total_bytes", amount.part_total},
                     {"done_bytes", amount.done},
                     {"total_bytes", amount.total},
                     {"percent", share(amount.done, amount.total, 100)},
                     {"bytes_per_second", static_cast<uint64_t>(speed_of(amount))}});
  if (style_ == LINES) {
    print_line(fmt::format("  {:3} %  {} {} %", step * 10, amount.part,
                           share(amount.part_done, amount.part_total, 100)));
  }
}

}  // namespace zopctl
