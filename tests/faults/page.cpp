// One line per function, one column per fault. A cell sums up the rows of every byte of every
// answer: a row fits if adding it leaves the cell unchanged.
#include "tests/faults/page.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace test {

static constexpr Time WORTH_SHOWING = std::chrono::milliseconds(50);

static double seconds(Time time) { return std::chrono::duration<double>(time).count(); }

// ---- cells ----

void Cell::add(const Row& row) {
  results.insert(row.result);
  longest = std::max(longest, row.took);
  wrong = wrong || row.output == Row::WRONG;
  partial = partial || row.output == Row::PARTIAL;
  next_wrong = next_wrong || row.next == Row::NEXT_WRONG;
}

std::string Cell::text() const {
  std::string text = fmt::format("{}", fmt::join(results, " "));
  if (wrong) text += '!';
  if (partial) text += '~';
  if (next_wrong) text += '>';
  if (longest >= WORTH_SHOWING) text += fmt::format(", {:.1f} s", seconds(longest));
  return text;
}

static Cell cell_of(const std::string& text) {
  Cell cell;
  std::istringstream words(text);
  for (int result; words >> result;) cell.results.insert(result);
  cell.wrong = text.find('!') != std::string::npos;
  cell.partial = text.find('~') != std::string::npos;
  cell.next_wrong = text.find('>') != std::string::npos;
  size_t comma = text.find(',');
  if (comma == std::string::npos) return cell;
  std::chrono::duration<double> longest(std::stod(text.substr(comma + 1)));
  cell.longest = std::chrono::duration_cast<Time>(longest);
  return cell;
}

std::string difference(const std::string& expected, const Row& row) {
  Cell alone, both = cell_of(expected);
  alone.add(row);
  both.add(row);
  return both.text() == expected ? "" : fmt::format("{}, not {}", alone.text(), expected);
}

// ---- the page ----

static bool is_row(const std::string& line) { return line.starts_with("| `"); }

static std::vector<std::string> lines_in(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

Page read_page(const std::string& path) {
  Page page;
  for (const std::string& line : lines_in(path)) {
    if (line.starts_with("- `")) page.without_row.insert(line.substr(3, line.find('`', 3) - 3));
    if (!is_row(line)) continue;
    Columns cells;
    for (size_t at = 2, end; (end = line.find(" |", at)) != std::string::npos; at = end + 3) {
      cells.push_back(line.substr(at, end - at));
    }
    if (cells.size() == CELLS + columns().size()) page.functions[cells[0]] = cells;
  }
  return page;
}

void rewrite_page(const std::string& path, const std::vector<Columns>& functions) {
  std::vector<std::string> lines = lines_in(path);
  auto first = std::ranges::find_if(lines, is_row);
  auto last = std::find_if_not(first, lines.end(), is_row);
  std::ofstream file(path);
  for (auto line = lines.begin(); line != first; ++line) file << *line << '\n';
  for (const Columns& cells : functions) file << fmt::format("| {} |\n", fmt::join(cells, " | "));
  for (auto line = last; line != lines.end(); ++line) file << *line << '\n';
}

}  // namespace test
