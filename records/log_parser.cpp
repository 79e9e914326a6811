// Text goes from the log to the output without a JSON library: a log may be of any size.
#include "records/log_parser.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "records/counted.h"
#include "records/file_error.h"
#include "records/json_text.h"
#include "records/log_pieces.h"

namespace records {

LogParser::LogParser(std::FILE* out, const Callbacks& callbacks)
    : out_(out),
      callbacks_(callbacks),
      reports_([this](LogReport&& report) { batch_->reports.push_back(std::move(report)); },
               [this](const LogReport& report) { warn_of_broken(report); },
               [this](uint64_t line, std::string_view) { warn_of_stray(line); }) {}

// ---- pieces ----

void LogParser::read(const std::vector<std::string>& files, unsigned threads) {
  names_ = files;
  std::ranges::replace(names_, "-", "standard input");
  batches_.resize(LogPieces::places(threads));
  batch_ = batches_.data();
  std::vector<LogFile> log(files.size());
  std::ranges::transform(files, log.begin(), [](const std::string& name) { return LogFile{name}; });
  LogPieces(std::move(log), threads, *this).run();
}

void LogParser::join(const LogPiece& piece, size_t place) {
  if (piece.file == lines_before_.size()) lines_before_.push_back(reports_.lines());
  batch_ = &batches_[place];
  reports_.take(piece);
  if (piece.ends_file) reports_.end_line();
}

void LogParser::form(size_t place) {
  Batch& batch = batches_[place];
  for (const LogReport& report : batch.reports) {
    append_row(batch.rows, batch.items, report);
    batch.rows += '\n';
  }
}

void LogParser::take(const LogPiece& piece, size_t place) {
  callbacks_.check();
  write(batches_[place]);
  if (piece.error != 0) throw file_failure(names_[piece.file], piece.error);
}

// Warnings in between the rows are where they are whatever the threads.
void LogParser::write(Batch& batch) {
  for (const std::string& text : batch.warnings) callbacks_.warn(text);
  bool is_written = fwrite(batch.rows.data(), 1, batch.rows.size(), out_) == batch.rows.size();
  if (!is_written || fflush(out_) != 0)
    throw Failure("the output could not be written", "is the disk full?");
  rows_ += batch.reports.size();
  batch.reports.clear();
  batch.rows.clear();
  batch.warnings.clear();
}

// ---- whole reports ----

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

// ---- broken ones ----

std::string LogParser::place(uint64_t line) const {
  size_t file = 0;
  for (size_t i = 0; i < lines_before_.size(); ++i) {
    if (lines_before_[i] < line) file = i;
  }
  return fmt::format("{}:{}", names_[file], line - lines_before_[file]);
}

void LogParser::warn_of_broken(const LogReport& report) {
  ++broken_;
  std::string host = report.host.empty() ? "a device" : report.host;
  std::string lines = report.wanted == 0
                          ? counted(report.lines.size(), "line") + ", and not the last one"
                          : fmt::format("{} of {} lines", report.lines.size(), report.wanted);
  std::string cut = report.cut == 0 ? "" : fmt::format(", {} cut", report.cut);
  const char* mixed = report.mixed ? ", of two devices" : "";
  batch_->warnings.push_back(fmt::format("{}: report {} of {} is broken: {}{}{}",
                                         place(report.first_line), report.stamp, host, lines, cut,
                                         mixed));
}

void LogParser::warn_of_stray(uint64_t line) {
  ++strays_;
  batch_->warnings.push_back(fmt::format("{}: a line of a report without its stamp", place(line)));
}

void LogParser::end() {
  reports_.end();
  write(*batch_);
  callbacks_.warn(fmt::format("{}, {} broken; {}, {} doubled, {} without a stamp",
                              counted(rows_, "report"), broken_, counted(reports_.lines(), "line"),
                              reports_.doubled(), strays_));
}

}  // namespace records
