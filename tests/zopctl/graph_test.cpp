// The columns of the live view's graphs.
#include "zopctl/live/graph.h"

#include <gtest/gtest.h>

TEST(Graph, fills_columns_in_eighths_from_the_right) {
  struct Row {
    zopctl::Levels levels;
    bool utf8;
    std::vector<std::string> lines;
  } rows[] = {
      {{}, false, {"   ", "   "}},           {{0, std::nullopt, 16}, false, {"  #", ". #"}},
      {{4, 12}, false, {"  .", " .#"}},      {{-50, 3, 11}, true, {"  ▃", "▁▃█"}},
      {{1, 2, 3, 99}, true, {"  █", "▂▃█"}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(zopctl::graph(row.levels, {0, 16}, 3, 2, row.utf8), row.lines);
  }
}
