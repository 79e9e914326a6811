// Finds the lines and joins them. A report waits a while for its lines; a device has few reports
// waiting, since it writes them one after the other.
#include "records/log_reports.h"

#include <algorithm>
#include <charconv>

namespace records {

constexpr std::string_view COUNT = ",n=";
constexpr uint64_t WINDOW = 50'000;     // log lines for which a report waits for its own
constexpr uint64_t SWEEP = 10'000;      // log lines between two checks for old reports
constexpr uint64_t MEMORY = 1'000'000;  // log lines for which a silent device is remembered
constexpr size_t MAX_PENDING = 4;       // incomplete reports of a device
constexpr size_t MAX_COMPLETE = 8;      // complete reports of a device that are remembered
constexpr size_t MAX_LINES = 64;        // of a report
constexpr size_t MAX_LENGTH = 1 << 16;  // of a line; a longer one is not of a log

static bool is_hex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }

static uint64_t hash_of(std::string_view text) { return std::hash<std::string_view>()(text); }

// ---- headers ----

static std::string_view take_word(std::string_view& text) {
  size_t start = std::min(text.find_first_not_of(' '), text.size());
  text.remove_prefix(start);
  size_t end = std::min(text.find(' '), text.size());
  std::string_view word = text.substr(0, end);
  text.remove_prefix(end);
  return word;
}

static bool is_month(std::string_view word) {
  constexpr std::string_view MONTHS = "JanFebMarAprMayJunJulAugSepOctNovDec";
  size_t at = MONTHS.find(word);
  return word.size() == 3 && at != std::string_view::npos && at % 3 == 0;
}

// "Jul 24 13:02:59 HOST ..." (RFC 3164), "1 2010-07-24T13:02:59Z HOST ..." (RFC 5424), and
// "2010-07-24T13:02:59+00:00 HOST ..."; a priority "<189>" may come first.
std::string_view host_of_header(std::string_view header) {
  if (header.starts_with('<')) header.remove_prefix(std::min(header.find('>') + 1, header.size()));
  std::string_view word = take_word(header);
  if (is_month(word)) {
    take_word(header);  // day
    take_word(header);  // time
    return take_word(header);
  }
  if (word == "1") word = take_word(header);
  bool date_and_time = word.size() >= 19 && word[4] == '-' && word[10] == 'T';
  return date_and_time ? take_word(header) : std::string_view();
}

// ---- lines ----

LogReports::LogReports(Take whole, Take broken, TakeStray stray)
    : whole_(std::move(whole)), broken_(std::move(broken)), stray_(std::move(stray)) {}

void LogReports::add_unended(std::string_view text) {
  unended_ += text.substr(0, MAX_LENGTH - unended_.size());
}

void LogReports::end_line() {
  if (!unended_.empty()) line(unended_);
  unended_.clear();
}

void LogReports::drop_line() { unended_.clear(); }

void LogReports::take(const LogPiece& piece) {
  add_unended(piece.head);
  if (piece.newlines > 0) {
    uint64_t start = line_;
    line(unended_);
    unended_.clear();
    for (const auto& [number, text] : piece.lines) {
      pass(start + number - line_);
      line(text.substr(0, MAX_LENGTH));
    }
    pass(start + piece.newlines - line_);
    add_unended(piece.tail);
  }
}

void LogReports::pass(uint64_t lines) {
  for (uint64_t end = line_ + lines; line_ < end;) {
    line_ = std::min(end, (line_ / SWEEP + 1) * SWEEP);
    if (line_ % SWEEP == 0) forget_old();
  }
}

void LogReports::line(std::string_view text) {
  pass(1);
  size_t mark = text.find(REPORT_MARK);
  if (mark != std::string_view::npos) return take_report_line(text, mark);
  mark = text.find(START_MARK);
  if (mark != std::string_view::npos) take_start(text, mark);
}

void LogReports::take_report_line(std::string_view text, size_t mark) {
  if (text.ends_with('\r')) text.remove_suffix(1);
  std::string_view body = text.substr(mark + REPORT_MARK.size());
  size_t length = 0;
  while (length < body.size() && is_hex(body[length])) ++length;
  bool cut = !body.ends_with(':');
  std::string_view pairs = body.substr(length, body.size() - length - (cut ? 0 : 1));
  if (length == 0 || !pairs.starts_with(',')) return stray_(line_, text);
  take(host_of_header(text.substr(0, mark)), body.substr(0, length), pairs.substr(1), cut);
}

// Takes what is before the mark off the text, and the mark; false without it.
static bool take_until(std::string_view& text, std::string_view mark, std::string& before) {
  size_t at = text.find(mark);
  if (at == std::string_view::npos) return false;
  before = text.substr(0, at);
  text.remove_prefix(at + mark.size());
  return true;
}

void LogReports::take_start(std::string_view text, size_t mark) {
  std::string_view host = host_of_header(text.substr(0, mark));
  text.remove_prefix(mark + START_MARK.size());
  Versions told;
  bool whole = take_until(text, ", fw = ", told.library) &&
               take_until(text, ", hw = ", told.firmware) &&
               take_until(text, ", awake = ", told.hardware);
  const Versions* known = versions_of(host);
  if (!whole || (known != nullptr && *known == told)) return;
  know(host, told);
  started_.emplace_back(host);
}

void LogReports::know(std::string_view host, const Versions& versions) {
  const Versions* told = &*all_versions_.insert(versions).first;
  versions_.insert_or_assign(std::string(host), told);
  auto device = devices_.find(host);
  if (device != devices_.end()) device->second.versions = told;
}

const Versions* LogReports::versions_of(std::string_view host) const {
  auto found = versions_.find(host);
  return found == versions_.end() ? nullptr : found->second;
}

bool LogReports::was_done(const Device& device, std::string_view stamp) const {
  return std::ranges::find(device.done, stamp, &Done::stamp) != device.done.end();
}

bool LogReports::was_done(const Device& device, std::string_view stamp, uint64_t hash) const {
  return std::ranges::any_of(device.done, [&](const Done& done) {
    return done.stamp == stamp && std::ranges::find(done.hashes, hash) != done.hashes.end();
  });
}

LogReports::Pending& LogReports::pending_of(const std::string& host, Device& device,
                                            std::string_view stamp) {
  auto found = std::ranges::find_if(
      device.pending, [&](const Pending& pending) { return pending.report.stamp == stamp; });
  if (found != device.pending.end()) return *found;
  if (device.pending.size() == MAX_PENDING) {
    broken_(std::move(device.pending.front().report));
    device.pending.erase(device.pending.begin());
  }
  Pending& fresh = device.pending.emplace_back();
  fresh.report.host = host;
  fresh.report.stamp = stamp;
  fresh.report.first_line = line_;
  return fresh;
}

// The number behind the last ",n=", which ends the pairs; 0 when there is none.
static size_t lines_wanted(std::string_view pairs) {
  size_t at = pairs.rfind(COUNT);
  if (at == std::string_view::npos) return 0;
  size_t wanted = 0;
  const char* end = pairs.data() + pairs.size();
  auto [stop, error] = std::from_chars(pairs.data() + at + COUNT.size(), end, wanted);
  return error == std::errc{} && stop == end ? wanted : 0;
}

void LogReports::take(std::string_view host, std::string_view stamp, std::string_view pairs,
                      bool cut) {
  auto at = devices_.find(host);
  if (at == devices_.end()) {
    at = devices_.emplace(host, Device()).first;
    at->second.versions = versions_of(host);
  }
  Device& device = at->second;
  device.last_line = line_;
  uint64_t hash = hash_of(pairs);
  if (cut ? was_done(device, stamp) : was_done(device, stamp, hash)) {
    ++doubled_;
    return;
  }
  Pending& pending = pending_of(at->first, device, stamp);
  pending.last_line = line_;
  if (cut) {
    ++pending.report.cut;
    return;
  }
  if (std::ranges::find(pending.hashes, hash) != pending.hashes.end()) {
    ++doubled_;
    return;
  }
  size_t wanted = lines_wanted(pairs);
  auto& lines = pending.report.lines;
  bool last_has_come = pending.report.wanted != 0;
  if (lines.size() < MAX_LINES) {
    // The last line may come before another one.
    lines.emplace(lines.end() - (last_has_come ? 1 : 0), pairs);
    pending.hashes.push_back(hash);
  }
  if (wanted != 0 && last_has_come) pending.report.mixed = true;
  if (wanted != 0) pending.report.wanted = wanted;
  if (!pending.report.mixed && lines.size() == pending.report.wanted) finish(device, pending);
}

// ---- ends ----

void LogReports::finish(Device& device, Pending& pending) {
  pending.report.versions = device.versions;
  Done done = {pending.report.stamp, std::move(pending.hashes)};
  whole_(std::move(pending.report));
  if (device.done.size() < MAX_COMPLETE) {
    device.done.push_back(std::move(done));
  } else {
    device.done[device.next_done++ % MAX_COMPLETE] = std::move(done);
  }
  device.pending.erase(device.pending.begin() + (&pending - device.pending.data()));
}

void LogReports::forget_old() {
  for (auto at = devices_.begin(); at != devices_.end();) {
    auto& pending = at->second.pending;
    std::erase_if(pending, [&](Pending& waiting) {
      bool old = line_ - waiting.last_line > WINDOW;
      if (old) broken_(std::move(waiting.report));
      return old;
    });
    bool silent = pending.empty() && line_ - at->second.last_line > MEMORY;
    at = silent ? devices_.erase(at) : std::next(at);
  }
}

std::vector<WaitingLine> LogReports::waiting() const {
  std::vector<WaitingLine> lines;
  for (const auto& [host, device] : devices_) {
    for (const Pending& pending : device.pending) {
      for (const std::string& line : pending.report.lines)
        lines.push_back({host, pending.report.stamp, line});
    }
  }
  return lines;
}

void LogReports::end() {
  for (auto& [host, device] : devices_) {
    for (Pending& pending : device.pending) broken_(std::move(pending.report));
  }
  devices_.clear();
}

}  // namespace records
