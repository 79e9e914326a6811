// Reads line by line: a recording of a day is too large to hold. Only a report over several lines
// is read as a whole.
#include "records/recording_reader.h"

#include <errno.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>

#include "records/changes.h"
#include "records/counted.h"
#include "records/file_error.h"
#include "records/report_form.h"
#include "records/utf8_text.h"

namespace records {

constexpr int MAX_NESTING = 32;
constexpr char MADE_BY[] =
    "it takes what monitor --record, report --json and parse-log write; remove other lines";

namespace {
class RecordingReader {
 public:
  RecordingReader(std::FILE* file, std::string name, const Callbacks& callbacks)
      : name_(std::move(name)), file_(file), callbacks_(callbacks) {}
  ~RecordingReader() { free(line_); }
  RecordingReader(const RecordingReader&) = delete;
  RecordingReader& operator=(const RecordingReader&) = delete;

  std::vector<Recording> read();

 private:
  bool next_line();
  void take_line();
  void leave_out();
  void take(Json object);
  void take_sample(Json line);
  void take_log_report(const Json& row, const Json& report);
  Recording& recording(const std::string& host);
  void read_whole();
  Json parsed(const std::string& text) const;
  void count_left_out();
  [[noreturn]] void fail(const std::string& why, const char* advice = MADE_BY) const;

  struct Closer {
    void operator()(FILE* file) const { fclose(file); }
  };
  std::string name_;
  std::unique_ptr<FILE, Closer> file_;
  Callbacks callbacks_;
  char* line_ = nullptr;  // of getline
  size_t room_ = 0;
  std::string_view text_;  // in line_
  bool ended_ = false;     // the line, by its newline
  uint64_t number_ = 0;
  std::vector<Recording> recordings_;
  std::unordered_map<std::string, size_t> by_host_;
  ChangeReader changes_;
  size_t cut_ = 0, without_base_ = 0;  // lines left out
};
}  // namespace

void RecordingReader::fail(const std::string& why, const char* advice) const {
  throw Failure(fmt::format("{}:{}: {}", name_, number_, why), advice);
}

static std::string_view without_spaces(std::string_view line) {
  line.remove_prefix(std::min(line.find_first_not_of(" \t\r"), line.size()));
  return line.substr(0, line.find_last_not_of(" \t\r") + 1);
}

bool RecordingReader::next_line() {
  callbacks_.check();
  errno = 0;
  ssize_t length = getline(&line_, &room_, file_.get());
  if (length < 0) {
    if (ferror(file_.get()) != 0) throw file_failure(name_, errno);
    return false;
  }
  text_ = {line_, static_cast<size_t>(length)};
  ended_ = text_.ends_with('\n');
  if (ended_) text_.remove_suffix(1);
  ++number_;
  return true;
}

Recording& RecordingReader::recording(const std::string& host) {
  auto [place, is_new] = by_host_.try_emplace(host, recordings_.size());
  if (is_new) {
    Recording& made = recordings_.emplace_back();
    made.source = name_;
    made.title = host.empty() ? std::filesystem::path(name_).filename().string() : host;
  }
  return recordings_[place->second];
}

void RecordingReader::take_log_report(const Json& row, const Json& report) {
  std::string host = text_of(member_of(row, "host"));
  recording(host).add_log_report(member_of(row, "time"), report);
}

static bool has_a_section(const Json& object) {
  for (const Json& value : object) {
    if (value.is_object()) return true;
  }
  return false;
}

void RecordingReader::take_sample(Json line) {
  const Json& format = member_of(line, "format");
  if (format.is_number() && format > RECORDING_FORMAT) {
    fail(fmt::format("recorded by a newer zopctl, in format {}", format.dump()),
         "read it with that version");
  }
  const Json* sample = changes_.sample_of(std::move(line));
  if (sample == nullptr) {
    ++without_base_;
  } else {
    const Json& report = member_of(*sample, "report");
    recording("").add_sample(*sample, has_labels(report) ? without_labels(report) : report);
  }
}

// Logs were parsed into objects of labels once.
static bool is_old_row(const Json& object) { return member_of(object, "items").is_object(); }

static bool is_row(const Json& object) { return object.contains("stamp"); }

static bool is_sample(const Json& object) {
  return object.contains("link") || object.contains("report") || ChangeReader::is_change(object);
}

// What zopctl prints for programs instead of a report.
static bool is_failure(const Json& object) {
  return member_of(member_of(object, "error"), "text").is_string();
}

void RecordingReader::take(Json object) {
  if (is_failure(object)) {
    fail("a failure of zopctl: " + shortened(text_of(object["error"]), 160),
         "it is no report: make it again");
  } else if (is_old_row(object)) {
    take_log_report(object, without_labels({{"items", object["items"]}}));
  } else if (object.is_object() && is_row(object)) {
    take_log_report(object, member_of(object, "report"));
  } else if (object.is_object() && is_sample(object)) {
    take_sample(std::move(object));
  } else if (object.is_object() && has_a_section(object)) {
    recording("").set_report(has_labels(object) ? without_labels(object) : object);
  } else {
    fail("neither a report nor a sample nor a report of a log");
  }
}

// The parser's reason without the parser's name and position.
static std::string reason_of(const Json::exception& error) {
  std::string_view reason = error.what();
  for (std::string_view mark : {"] ", " - "}) {
    size_t at = reason.find(mark);
    if (at != std::string_view::npos) reason.remove_prefix(at + mark.size());
  }
  return shortened(as_utf8(reason), 160);
}

static bool is_too_deep(std::string_view text) {
  int depth = 0;
  bool quoted = false;
  for (size_t i = 0; i < text.size() && depth <= MAX_NESTING; ++i) {
    if (text[i] == '"') quoted = !quoted;
    if (quoted && text[i] == '\\') ++i;
    if (!quoted && (text[i] == '{' || text[i] == '[')) ++depth;
    if (!quoted && (text[i] == '}' || text[i] == ']')) --depth;
  }
  return depth > MAX_NESTING;
}

// Deep nesting would exhaust the stack when a value is copied.
Json RecordingReader::parsed(const std::string& text) const {
  if (is_too_deep(text)) fail("lists or objects nested too deep");
  return Json::parse(text);
}

// A program that died leaves half a line, to which the next one may have appended; and the end of a
// file may begin within a line.
static bool is_half(std::string_view line) { return line.starts_with('{') != line.ends_with('}'); }
static bool is_mixed(std::string_view line, const Json::exception& error) {
  constexpr int SYNTAX = 101;
  return error.id == SYNTAX && line.starts_with('{');
}

void RecordingReader::take_line() {
  std::string_view line = without_spaces(text_);
  if (line.empty()) return;
  if (is_half(line)) return leave_out();
  Json object;
  try {
    object = parsed(as_utf8(line));
  } catch (const Json::exception& error) {
    if (ended_ && !is_mixed(line, error)) fail("no JSON: " + reason_of(error));
    return leave_out();
  }
  take(std::move(object));
}

void RecordingReader::leave_out() {
  callbacks_.warn(fmt::format("{}:{}: the line is cut, and left out", name_, number_));
  ++cut_;
  changes_.miss();
}

// A report over several lines; its first line is in text_.
void RecordingReader::read_whole() {
  std::string text;
  uint64_t lines = 0;
  do {
    text += text_;
    text += '\n';
    ++lines;
  } while (next_line());
  text = as_utf8(text);
  try {
    take(parsed(text));
  } catch (const Json::parse_error& error) {
    auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
    number_ = 1 + static_cast<uint64_t>(std::count(text.begin(), end, '\n'));
    number_ = std::min(number_, lines);
    fail("no JSON: " + reason_of(error));
  } catch (const Json::exception& error) {
    fail("no JSON: " + reason_of(error));
  }
}

void RecordingReader::count_left_out() {
  if (without_base_ > 0) {
    callbacks_.warn(fmt::format("{}: {} left out, without the line that comes before", name_,
                                counted(without_base_, "line")));
  }
  if (by_host_.contains("")) recording("").left_out = cut_ + without_base_;
}

std::vector<Recording> RecordingReader::read() {
  bool more = next_line();
  if (more && without_spaces(text_) == "{") {
    read_whole();
  } else {
    for (; more; more = next_line()) take_line();
  }
  count_left_out();
  if (recordings_.empty()) throw Failure(name_ + ": there is nothing in it to show", MADE_BY);
  for (Recording& made : recordings_) made.finish();
  return std::move(recordings_);
}

std::vector<Recording> read_recordings(std::FILE* file, const std::string& name,
                                       const Callbacks& callbacks) {
  return RecordingReader(file, name, callbacks).read();
}

std::vector<Recording> read_recordings(const std::string& path, const Callbacks& callbacks) {
  bool is_standard = path == "-";
  std::string name = is_standard ? "standard input" : path;
  FILE* file = is_standard ? fdopen(dup(STDIN_FILENO), "r") : fopen(path.c_str(), "re");
  if (file == nullptr) throw file_failure(name, errno);
  return read_recordings(file, name, callbacks);
}

}  // namespace records
