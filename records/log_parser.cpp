// Text goes from the log to the output without a JSON library: a log may be of any size.
#include "records/log_parser.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <charconv>
#include <cstring>

#include "records/counted.h"
#include "records/file_error.h"
#include "records/json_text.h"
#include "records/log_pieces.h"

namespace records {

constexpr size_t MAX_LINE_LENGTH = 1 << 16;  // a longer one is not of a log

LogParser::LogParser(std::FILE* out, const Callbacks& callbacks)
    : out_(out),
      callbacks_(callbacks),
      reports_([this](const LogReport& report) { print(report); },
               [this](const LogReport& report) { warn_of_broken(report); },
               [this](uint64_t line) { warn_of_stray(line); }) {}

// ---- reading ----

void LogParser::take_rest(std::string_view text) {
  rest_ += text.substr(0, MAX_LINE_LENGTH - rest_.size());
}

void LogParser::end_line() {
  reports_.line(rest_);
  rest_.clear();
}

void LogParser::take(const LogPiece& piece) {
  take_rest(piece.head);
  if (piece.newlines > 0) {
    uint64_t start = reports_.lines();
    end_line();
    for (const auto& [number, text] : piece.lines) {
      reports_.pass(start + number - reports_.lines());
      reports_.line(text.substr(0, MAX_LINE_LENGTH));
    }
    reports_.pass(start + piece.newlines - reports_.lines());
    take_rest(piece.tail);
  }
  if (piece.ends_file && !rest_.empty()) end_line();  // a last line without its newline
}

void LogParser::read(const std::vector<std::string>& files, unsigned threads) {
  LogPieces pieces(files, threads);
  while (const LogPiece* piece = pieces.next()) {
    callbacks_.check();
    const std::string& name = files[piece->file];
    if (piece->file == files_.size()) {
      files_.push_back({name == "-" ? "standard input" : name, reports_.lines()});
    }
    if (piece->error != 0) throw file_failure(files_.back().name, piece->error);
    take(*piece);
    write_out();
  }
}

// ---- whole reports ----

void LogParser::write_out() {
  bool is_written = fwrite(text_.data(), 1, text_.size(), out_) == text_.size();
  if (!is_written || fflush(out_) != 0)
    throw Failure("the output could not be written", "is the disk full?");
  text_.clear();
}

static void append_two_digits(std::string& out, int number) {
  out += static_cast<char>('0' + number / 10);
  out += static_cast<char>('0' + number % 10);
}

// "2010-07-24T13:02:59Z". A library's formats take as long as all else of a short report.
static void append_time(std::string& out, std::string_view stamp) {
  uint32_t seconds = 0;
  std::from_chars(stamp.data(), stamp.data() + stamp.size(), seconds, 16);
  std::tm time = fmt::gmtime(static_cast<std::time_t>(seconds));
  append_two_digits(out, time.tm_year / 100 + 19);
  append_two_digits(out, time.tm_year % 100);
  const std::pair<char, int> parts[] = {{'-', time.tm_mon + 1},
                                        {'-', time.tm_mday},
                                        {'T', time.tm_hour},
                                        {':', time.tm_min},
                                        {':', time.tm_sec}};
  for (const auto& [mark, number] : parts) {
    out += mark;
    append_two_digits(out, number);
  }
  out += 'Z';
}

void append_row(std::string& out, ReportText& items, const LogReport& report) {
  out += "{\"host\":";
  append_text(out, report.host);
  out += R"(,"stamp":")";
  out += report.stamp;
  out += R"(","time":")";
  append_time(out, report.stamp);
  out += R"(","lines":)";
  out += std::to_string(report.wanted);
  out += R"(,"report":)";
  if (report.versions != nullptr) {
    items.add("Library", report.versions->library);
    items.add("Firmware", report.versions->firmware);
    items.add("Hardware", report.versions->hardware);
  }
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
                              counted(whole_, "report"), broken_, counted(reports_.lines(), "line"),
                              reports_.doubled(), strays_));
}

}  // namespace records
