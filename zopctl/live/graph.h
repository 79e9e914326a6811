// Moving graphs in characters.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace zopctl {

using Levels = std::deque<std::optional<int>>;

struct Scale {
  int bottom, top;  // what is beyond stands at the edge
};

// height lines of width columns each, top first; the newest level stands at the right. A level that
// is missing leaves its column empty. In eighths of a line by block characters of UTF-8, or in
// whole lines of '#'.
std::vector<std::string> graph(const Levels& levels, Scale scale, int width, int height, bool utf8);

}  // namespace zopctl
