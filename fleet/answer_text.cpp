// Numbers stand to the right in a table, and texts to the left.
#include "fleet/answer_text.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>

namespace fleet {

std::string time_text(int64_t seconds) {
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(static_cast<std::time_t>(seconds)));
}

std::string short_time_text(int64_t seconds) {
  return fmt::format("{:%Y-%m-%d %H:%M}", fmt::gmtime(static_cast<std::time_t>(seconds)));
}

const Cell& named(const Answer& answer, size_t row, std::string_view column) {
  auto found = std::ranges::find(answer.names, column);
  return answer.rows.at(row).at(static_cast<size_t>(found - answer.names.begin()));
}

std::string word(const Cell& cell) {
  if (cell.type == Cell::NUMBER) return std::to_string(cell.number);
  return cell.type == Cell::TEXT ? cell.text : "unknown";
}

double number(const Cell& cell) {
  return cell.type == Cell::REAL ? cell.real : static_cast<double>(cell.number);
}

bool is_time(const Answer& answer, size_t column) { return answer.names[column].ends_with("time"); }

std::string cell_text(const Answer& answer, size_t row, size_t column) {
  const Cell& cell = answer.rows[row][column];
  switch (cell.type) {
    case Cell::NUMBER:
      return is_time(answer, column) ? time_text(cell.number) : std::to_string(cell.number);
    case Cell::REAL:
      return fmt::format("{}", cell.real);
    case Cell::TEXT:
      return cell.text;
    default:
      return "";
  }
}

// ---- for people ----

static std::string padded(const std::string& text, size_t width, bool to_the_right) {
  size_t characters = static_cast<size_t>(
      std::ranges::count_if(text, [](char c) { return (static_cast<uint8_t>(c) & 0xC0) != 0x80; }));
  std::string blanks(width - std::min(width, characters), ' ');
  return to_the_right ? blanks + text : text + blanks;
}

std::string as_table(const Answer& answer) {
  std::vector<std::string> lines(answer.rows.size() + 1);
  for (size_t column = 0; column < answer.names.size(); ++column) {
    std::vector<std::string> texts = {answer.names[column]};
    bool numbers = true;
    for (size_t row = 0; row < answer.rows.size(); ++row) {
      texts.push_back(cell_text(answer, row, column));
      numbers = numbers && answer.rows[row][column].type != Cell::TEXT;
    }
    size_t width = std::ranges::max(texts, {}, &std::string::size).size();
    for (size_t row = 0; row < lines.size(); ++row) {
      lines[row] += (column == 0 ? "" : "  ") + padded(texts[row], width, numbers);
    }
  }
  std::string table;
  for (const std::string& line : lines) {
    table.append(line, 0, line.find_last_not_of(' ') + 1) += '\n';
  }
  return table;
}

// ---- for programs ----

static std::string quoted(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

std::string as_csv(const Answer& answer) {
  std::string text;
  auto add = [&](size_t column, const std::string& cell) {
    text.append(column == 0 ? "" : ",").append(quoted(cell));
    if (column + 1 == answer.names.size()) text += "\r\n";
  };
  for (size_t column = 0; column < answer.names.size(); ++column) add(column, answer.names[column]);
  for (size_t row = 0; row < answer.rows.size(); ++row) {
    for (size_t column = 0; column < answer.names.size(); ++column) {
      add(column, cell_text(answer, row, column));
    }
  }
  return text;
}

static nlohmann::ordered_json value_of(const Answer& answer, size_t row, size_t column) {
  const Cell& cell = answer.rows[row][column];
  if (cell.type == Cell::NOTHING) return nullptr;
  if (cell.type == Cell::REAL) return cell.real;
  if (cell.type == Cell::NUMBER && !is_time(answer, column)) return cell.number;
  return cell_text(answer, row, column);
}

nlohmann::ordered_json as_json(const Answer& answer) {
  auto rows = nlohmann::ordered_json::array();
  for (size_t row = 0; row < answer.rows.size(); ++row) {
    nlohmann::ordered_json object;
    for (size_t column = 0; column < answer.names.size(); ++column) {
      object[answer.names[column]] = value_of(answer, row, column);
    }
    rows.push_back(std::move(object));
  }
  return rows;
}

}  // namespace fleet
