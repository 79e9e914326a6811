// Each character counts as a column: texts of modems have no wide ones.
#include "zopctl/text/folding.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

namespace zopctl {

size_t terminal_columns() {
  winsize size = {};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

static bool begins_character(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

static size_t width_of(std::string_view text) {
  return static_cast<size_t>(std::ranges::count_if(text, begins_character));
}

// The last blank within the room, or the first one after it; none before the first word.
static size_t break_of(std::string_view line, size_t room) {
  size_t found = std::string_view::npos;
  for (size_t i = line.find_first_not_of(' '); i < line.size(); ++i) {
    bool fits = width_of(line.substr(0, i)) <= room;
    if (line[i] == ' ' && (fits || found == std::string_view::npos)) found = i;
    if (!fits && found != std::string_view::npos) break;
  }
  return found;
}

static std::string folded_line(std::string_view line, size_t of_first, size_t indent,
                               size_t columns) {
  std::string text;
  for (size_t at = of_first; at + width_of(line) > columns; at = indent) {
    size_t end = break_of(line, columns - std::min(at, columns));
    if (end == std::string_view::npos) break;
    std::string_view head = line.substr(0, line.find_last_not_of(' ', end) + 1);
    text += std::string(head) + '\n' + std::string(indent, ' ');
    line.remove_prefix(std::min(line.find_first_not_of(' ', end), line.size()));
  }
  return text + std::string(line);
}

std::string folded(std::string_view text, size_t of_first, size_t indent, size_t columns) {
  if (columns == 0) return std::string(text);
  constexpr size_t FURTHER = 2;
  size_t end = text.find('\n');
  std::string all = folded_line(text.substr(0, end), of_first, indent, columns);
  while (end != std::string_view::npos) {
    text.remove_prefix(end + 1);
    end = text.find('\n');
    std::string_view line = text.substr(0, end);
    size_t begin = std::min(line.find_first_not_of(' '), line.size());
    all += '\n' + folded_line(line, 0, begin + FURTHER, columns);
  }
  return all;
}

// Where the last column of the line begins: what stands behind at least two blanks.
static size_t last_column(std::string_view line) {
  size_t begin = std::min(line.find_first_not_of(' '), line.size());
  size_t gap = line.find("  ", begin);
  return gap == line.npos ? begin : std::min(line.find_first_not_of(' ', gap), line.size());
}

std::string folded_list(std::string_view text, size_t columns) {
  constexpr size_t NARROW = 4;  // in a terminal that has no room for two columns
  std::string all;
  while (!text.empty()) {
    std::string line(text.substr(0, text.find('\n')));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    size_t begin = std::min(line.find_first_not_of(' '), line.size()), indent = last_column(line);
    if (2 * indent > columns) indent = NARROW;
    if (2 * begin > columns) line.replace(0, begin, NARROW, ' ');
    all += folded_line(line, 0, indent, columns) + '\n';
  }
  return all;
}

}  // namespace zopctl
