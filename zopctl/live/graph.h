// Moving graphs in text.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace zopctl {

using Levels = std::deque<std::optional<int>>;

struct Scale {
  int bottom, top;  // levels beyond are drawn at the edge
};

// height lines of width columns, top first, with the newest level at the right. A missing level
// leaves its column empty. Drawn in eighths of a line with UTF-8 block characters, or in lines of
// '#'.
std::vector<std::string> graph(const Levels& levels, Scale scale, int width, int height, bool utf8);

}  // namespace zopctl
