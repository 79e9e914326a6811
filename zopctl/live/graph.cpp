// A column is filled from the bottom; the lowest level still shows.
#include "zopctl/live/graph.h"

#include <algorithm>

namespace zopctl {

constexpr int EIGHTHS = 8;
static const char* const BLOCKS[] = {" ",      "\u2581", "\u2582", "\u2583", "\u2584",
                                     "\u2585", "\u2586", "\u2587", "\u2588"};

// Height of a column in eighths of a line, at least one.
static int eighths_of(int level, Scale scale, int height) {
  int range = std::max(scale.top - scale.bottom, 1);
  int above = std::clamp(level, scale.bottom, scale.top) - scale.bottom;
  return std::max(1, (above * height * EIGHTHS + range / 2) / range);
}

static const char* cell(int eighths, bool utf8) {
  int full = std::clamp(eighths, 0, EIGHTHS);
  if (utf8) return BLOCKS[full];
  return full > EIGHTHS / 2 ? "#" : full > 0 ? "." : " ";
}

std::vector<std::string> graph(const Levels& levels, Scale scale, int width, int height,
                               bool utf8) {
  std::vector<std::string> lines(static_cast<size_t>(std::max(height, 0)));
  for (int column = 0; column < width; ++column) {
    int age = width - 1 - column;
    bool is_there = static_cast<size_t>(age) < levels.size();
    std::optional<int> level;
    if (is_there) level = levels[levels.size() - 1 - static_cast<size_t>(age)];
    int filled = level ? eighths_of(*level, scale, height) : 0;
    for (int line = 0; line < height; ++line) {
      int below = (height - 1 - line) * EIGHTHS;
      lines[static_cast<size_t>(line)] += cell(filled - below, utf8);
    }
  }
  return lines;
}

}  // namespace zopctl
