// A log is read in pieces by several threads. What comes of it is what comes of its lines one by
// one, wherever a piece or a file ends.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "records/counted.h"
#include "records/log_parser.h"
#include "records/log_pieces.h"
#include "tests/support/temporary_folder.h"

using namespace records;
using Files = std::vector<std::string>;

static std::string warnings;
static const Callbacks CALLBACKS = {[] {},
                                    [](const std::string& text) { warnings += text + '\n'; }};

// Rows, then where the other reports and lines are, and how many lines there were.
static std::string parsed(const Files& files, unsigned threads) {
  char* text = nullptr;
  size_t size = 0;
  std::FILE* out = open_memstream(&text, &size);
  warnings.clear();
  LogParser parser(out, CALLBACKS);
  parser.read(files, threads);
  parser.end();
  fclose(out);
  std::string all(text, size);
  free(text);
  std::istringstream lines(warnings);
  for (std::string line; std::getline(lines, line);) {
    size_t count = line.find("; ");
    all += count == line.npos ? line.substr(0, line.find(": ")) + '\n'
                              : line.substr(count, line.rfind(", ") - count);
  }
  return all;
}

static std::string line_by_line(const Files& files) {
  std::string rows, places;
  ReportText items;
  std::map<uint64_t, std::string> starts;  // the last file that starts at a line
  auto place = [&](uint64_t line) {
    auto [start, file] = *std::prev(starts.lower_bound(line));
    places += file + ':' + std::to_string(line - start) + '\n';
  };
  LogReports reports(
      [&](const LogReport& report) { append_row(rows, items, report), rows += '\n'; },
      [&](const LogReport& report) { place(report.first_line); },
      [&](uint64_t line, std::string_view) { place(line); });
  for (const std::string& file : files) {
    starts[reports.lines()] = file;
    std::ifstream stream(file, std::ios::binary);
    for (std::string line; std::getline(stream, line);) reports.line(line.substr(0, 65536));
  }
  reports.end();
  return rows + places +
         fmt::format("; {}, {} doubled", counted(reports.lines(), "line"), reports.doubled());
}

static std::string line_of(const char* host, const char* pairs) {
  return std::string("Jul 24 13:02:59 ") + host + " hostd: I zop:diag: t=" + pairs + '\n';
}

// Of three devices; a line comes twice, one has no stamp, and a report is not complete.
static const std::string LINES =
    line_of("one", "10,Bars=1:") + '\n' + line_of("two", "10,Bars=2,n=1:\r") +
    line_of("one", "10,Bars=1:") + line_of("two", ":") + line_of("one", "10,RSSI=-75,n=2:") +
    line_of("two", "11,Bars=2,n=2:") + line_of("three", "10,Bars=3,n=1:");

static void expect_the_same(const Files& files) {
  std::string expected = line_by_line(files);
  for (unsigned threads : {1U, 4U}) ASSERT_EQ(parsed(files, threads), expected) << threads;
}

// Within a report, a line, its mark, before and behind a newline. What is behind the first 64 KiB
// of a line does not count.
TEST(log_parser, pieces_end_anywhere) {
  TemporaryFolder folder;
  for (size_t at = 0; at <= LINES.size() + 1; at += at < 120 ? 1 : 7) {
    std::string too_long = line_of("long", "10,Bars=5,n=1:");
    std::string log = std::string(PIECE_SIZE - too_long.size() - at, 'x') + too_long + LINES;
    expect_the_same({folder.write("log", log)});
    ASSERT_FALSE(HasFatalFailure()) << at;
  }
}

// The same, and reports that are given up for their age, which is told in lines.
TEST(log_parser, files_end_anywhere) {
  TemporaryFolder folder;
  std::string empty = folder.write("empty", ""), blank = folder.write("blank", "\n");
  std::string long_pause = folder.write("pause", std::string(3 * PIECE_SIZE, '\n'));
  for (size_t at = 0; at <= LINES.size(); at += 19) {
    std::string begin = folder.write("begin", LINES.substr(0, at));
    std::string rest = folder.write("rest", LINES.substr(at));
    expect_the_same({empty, begin, empty, rest, blank, begin});
    if (at % 2 == 0) expect_the_same({begin, long_pause, rest, empty});
    ASSERT_FALSE(HasFatalFailure()) << at;
  }
}

namespace {
// Makes nothing of a piece, or fails.
struct Failing : LogWork {
  void join(const LogPiece&, size_t place) override {
    if (place == bad_join) throw Failure("joined badly");
  }
  void form(size_t place) override {
    if (place == bad_form) throw Failure("formed badly");
  }
  void take(const LogPiece&, size_t place) override { taken.push_back(place); }
  size_t bad_join = SIZE_MAX, bad_form = SIZE_MAX;
  std::vector<size_t> taken;
};
}  // namespace

TEST(log_pieces, what_fails_is_the_end) {
  TemporaryFolder folder;
  std::string log = folder.write("log", std::string(3 * PIECE_SIZE, '\n'));
  for (unsigned threads : {1U, 4U}) {
    Failing joining, forming;
    joining.bad_join = forming.bad_form = 1;
    for (Failing* work : {&joining, &forming}) {
      EXPECT_THROW(LogPieces({{log}}, threads, *work).run(), Failure);
      EXPECT_EQ(work->taken, std::vector<size_t>{0});
    }
  }
}
