// The speed of zopctl parse-log is that of this search.
#include "records/log_piece.h"

#include <algorithm>

namespace records {

constexpr size_t BLOCK = 128;                 // its newlines fit in a byte
constexpr std::string_view BEGIN = "I zop:";  // of each mark
static_assert(REPORT_MARK.starts_with(BEGIN) && START_MARK.starts_with(BEGIN));

// Passes blocks in which no mark begins, and counts their newlines. What is left may begin with
// one, or is short. Comparing 16 bytes at a step takes a fifth of the time of std::count and
// memmem.
static uint64_t pass_blocks(std::string_view& text) {
  constexpr size_t Z = 2, P = 4;  // few lines have these letters at this distance
  uint64_t newlines = 0;
  for (; text.size() >= BLOCK + P; text.remove_prefix(BLOCK)) {
    const char* block = text.data();
    uint8_t in_block = 0, marks = 0;
    for (size_t i = 0; i < BLOCK; ++i) {
      in_block = static_cast<uint8_t>(in_block + (block[i] == '\n'));
      bool is_z = block[i + Z] == BEGIN[Z], is_p = block[i + P] == BEGIN[P];
      marks = static_cast<uint8_t>(marks | (is_z & is_p));
    }
    if (marks != 0) break;
    newlines += in_block;
  }
  return newlines;
}

static uint64_t count_newlines(std::string_view text) {
  return static_cast<uint64_t>(std::ranges::count(text, '\n'));
}

static size_t find_mark(std::string_view text) {
  size_t at = text.find(BEGIN);
  while (at != text.npos && !text.substr(at).starts_with(REPORT_MARK) &&
         !text.substr(at).starts_with(START_MARK))
    at = text.find(BEGIN, at + BEGIN.size());
  return at;
}

void LogPiece::search() {
  std::string_view all(bytes.data(), size);
  lines.clear();
  head = all.substr(0, all.find('\n'));
  tail = {};
  newlines = 0;
  if (head.size() == all.size()) return;
  size_t last = all.rfind('\n');
  tail = all.substr(last + 1);
  newlines = 1;
  std::string_view text = all.substr(head.size() + 1, last - head.size());  // lines and newlines
  while (!text.empty()) {
    newlines += pass_blocks(text);
    size_t mark = find_mark(text.substr(0, BLOCK + START_MARK.size() - 1));
    if (mark == text.npos) {
      newlines += count_newlines(text.substr(0, BLOCK));
      text.remove_prefix(std::min(text.size(), BLOCK));
      continue;
    }
    newlines += count_newlines(text.substr(0, mark));
    size_t place = static_cast<size_t>(text.data() - all.data()) + mark;
    size_t start = all.rfind('\n', place) + 1, end = all.find('\n', place);
    lines.push_back({newlines++, all.substr(start, end - start)});
    text = all.substr(end + 1, last - end);
  }
}

}  // namespace records
