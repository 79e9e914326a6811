// Text goes from the log to the output without a JSON library: a log may be of any size.
#include "records/log_parser.h"

#include <errno.h>
#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include <charconv>
#include <cstring>

#include "records/counted.h"
#include "records/json_text.h"

namespace records {

constexpr size_t CHUNK = 1 << 20;
constexpr size_t MAX_LINE_LENGTH = 1 << 16;  // a longer one is not of a log

LogParser::LogParser(std::FILE* out, const Callbacks& callbacks)
    : out_(out),
      callbacks_(callbacks),
      reports_([this](const LogReport& report) { print(report); },
               [this](const LogReport& report) { warn_of_broken(report); },
               [this](uint64_t line) { warn_of_stray(line); }) {}

// ---- reading ----

void LogParser::take_lines(std::string_view text) {
  while (!text.empty()) {
    const void* newline = memchr(text.data(), '\n', text.size());
    if (newline == nullptr) {
      if (rest_.size() < MAX_LINE_LENGTH) rest_ += text;
      return;
    }
    auto length = static_cast<size_t>(static_cast<const char*>(newline) - text.data());
    ++lines_;
    if (rest_.empty()) {
      reports_.line(text.substr(0, length));
    } else {
      rest_ += text.substr(0, length);
      reports_.line(rest_);
      rest_.clear();
    }
    text.remove_prefix(length + 1);
  }
}

void LogParser::read(int fd) {
  std::vector<char> chunk(CHUNK);
  for (;;) {
    ssize_t size = ::read(fd, chunk.data(), chunk.size());
    callbacks_.check();
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) throw Failure(files_.back().name + ": " + strerror(errno));
    if (size == 0) break;
    take_lines({chunk.data(), static_cast<size_t>(size)});
    write_out();
  }
  if (!rest_.empty()) take_lines("\n");  // a last line without its newline
}

void LogParser::read(const std::string& name) {
  bool standard_input = name == "-";
  files_.push_back({standard_input ? "standard input" : name, lines_});
  int fd = standard_input ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) throw Failure(name + ": " + strerror(errno));
  read(fd);
  if (!standard_input) close(fd);
}

// ---- whole reports ----

void LogParser::write_out() {
  fwrite(text_.data(), 1, text_.size(), out_);
  if (fflush(out_) != 0) throw Failure("the output could not be written; is the disk full?");
  text_.clear();
}

static std::string time_of(std::string_view stamp) {
  uint32_t seconds = 0;
  std::from_chars(stamp.data(), stamp.data() + stamp.size(), seconds, 16);
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(static_cast<std::time_t>(seconds)));
}

void append_row(std::string& out, ReportText& items, const LogReport& report) {
  out += "{\"host\":";
  append_text(out, report.host);
  fmt::format_to(std::back_inserter(out), R"(,"stamp":"{}","time":"{}","lines":{},"report":)",
                 report.stamp, time_of(report.stamp), report.wanted);
  for (const std::string& line : report.lines) {
    std::string_view pairs = line;
    if (&line == &report.lines.back()) pairs = pairs.substr(0, pairs.rfind(",n="));
    while (!pairs.empty()) {
      Pair pair = take_pair(pairs);
      items.add(pair.label, pair.value);
    }
  }
  items.append_to(out);
  out += '}';
}

void LogParser::print(const LogReport& report) {
  ++whole_;
  append_row(text_, items_, report);
  text_ += '\n';
}

// ---- broken ones ----

std::string LogParser::place(uint64_t line) const {
  const File* file = &files_.front();
  for (const File& candidate : files_) {
    if (candidate.lines_before < line) file = &candidate;
  }
  return fmt::format("{}:{}", file->name, line - file->lines_before);
}

void LogParser::warn_of_broken(const LogReport& report) {
  ++broken_;
  std::string host = report.host.empty() ? "a device" : std::string(report.host);
  std::string lines = report.wanted == 0
                          ? counted(report.lines.size(), "line") + ", and not the last one"
                          : fmt::format("{} of {} lines", report.lines.size(), report.wanted);
  std::string cut = report.cut == 0 ? "" : fmt::format(", {} cut", report.cut);
  const char* mixed = report.mixed ? ", of two devices" : "";
  callbacks_.warn(fmt::format("{}: report {} of {} is broken: {}{}{}", place(report.first_line),
                              report.stamp, host, lines, cut, mixed));
}

void LogParser::warn_of_stray(uint64_t line) {
  ++strays_;
  callbacks_.warn(fmt::format("{}: a line of a report without its stamp", place(line)));
}

void LogParser::end() {
  reports_.end();
  write_out();
  callbacks_.warn(fmt::format("{}, {} broken; {}, {} doubled, {} without a stamp",
                              counted(whole_, "report"), broken_, counted(lines_, "line"),
                              reports_.doubled(), strays_));
}

}  // namespace records
