// One line per function, one column per fault. A cell sums up the rows of every byte of every
// answer: a row fits if adding it leaves the cell unchanged.
#include "tests/faults/table.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <istream>
#include <sstream>

namespace test {

static constexpr Time WORTH_TELLING = std::chrono::milliseconds(50);

static double seconds(Time time) { return std::chrono::duration<double>(time).count(); }

static const char TITLE[] = R"(# What a host sees when the line fails

Written by `make faults`. Each function of the module is called once while one of its answers is
damaged, at every byte of every answer in turn, in virtual time. Then the line works again: the host
closes, opens and calls once more.

)";

static const char LEGEND[] = R"(
## How to read it

A cell shows the results that occurred, and the longest time of a call if it is 0.05 s or more. `zop_`
results are those of `zop.h` (0 success, 1 not open, 2 no response, 7 bad response, 10 and 11 the
modem refuses), `vurn_` results those of `vurn.h` (0 success, 2 failed, 13 no time yet).

`cases` counts the answers and bytes that were damaged, in each way.

| mark | meaning |
|---|---|
| `!` | success, with a wrong output |
| `~` | success; values that could not be read are missing or old |
| `>` | the next call on the same link gets a wrong answer, whatever the result of this one |

| fault | what happens |
|---|---|
| silence | this answer and all later ones do not come |
| late | from this byte on the answer is 5.5 s late; the host opens again after it has come |
| late, reopened at once | the same, but the host opens again right after the time-out |
| cut | the answer ends at this byte, without its flag |
| bad check | the check bytes are wrong |
| flipped bit | each bit of this byte in turn (only one in calls with many answers) |
| byte inserted | 00, 7D or 7E is inserted before this byte |
| byte lost | this byte is missing |
| other answer | the modem answers another request |
| refusal | the modem's error answer: 19, 20, 21, 24, 66 or 71, then the request |
| twice | the answer comes twice, in one piece or in two |
| gone | the device goes away at this byte and comes back after the call |
| gone and back | the device goes away at this byte and comes back immediately |

After every fault the link is closed or still usable; to recover, closing and opening is always
enough. The longest wait here is the 5 s for one answer: a time-out closes the link, and the call's
remaining exchanges fail at once. Opening waits 5 times 1 s for a modem that does not answer its
probe. The 5 s start again with each piece of an answer, which may take 15 s in all. `zop_debug_start`
is observed for four seconds while its listener runs.

## What this means for hosts

- **A refusal, or the answer to another request, is accepted** (`!`): only `zop_get_rssi` compares the
  answer with its request. A query that the modem refuses often reads as 0. Check implausible values
  with a second query.
- **A duplicated answer shifts the following ones** (`>`): each request then gets the answer to the
  one before, until the link is opened again. An answer that a damaged byte cuts short makes the next
  call fail too, and only that one.
- **A late answer is dropped when it comes**, even after a new open: after a time-out a host may close
  and open at once.
- **The report shows what could be read** (`~`): `vurn_get_log_string`, `vurn_log_message`,
  `vurn_enable_logging` and `vurn_open` do not fail when a value is missing.
- **The versions in the report and in the first log line are read once per process**, by the first
  `vurn_open` that gets a hardware version. If that was the answer to another request, the wrong value
  stays. `vurn_get_firmware_version` asks each time.
- **`zop_end_call_test` ignores its answer**, and `zop_set_backup` step 3 has none.
)";

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
  if (longest >= WORTH_TELLING) text += fmt::format(", {:.1f} s", seconds(longest));
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

Table read_markdown(std::istream& in) {
  Table table;
  for (std::string line; std::getline(in, line);) {
    if (!line.starts_with("| `zop_") && !line.starts_with("| `vurn_")) continue;
    Columns columns;
    for (size_t at = 2, end; (end = line.find(" |", at)) != std::string::npos; at = end + 3) {
      columns.push_back(line.substr(at, end - at));
    }
    if (columns.size() == CELLS + FAULT_KINDS) table[columns[0]] = columns;
  }
  return table;
}

void write_markdown(std::ostream& out, const std::vector<Columns>& functions) {
  out << TITLE << "| function | good line | cases |";
  for (int kind = 0; kind < FAULT_KINDS; ++kind) {
    out << ' ' << name_of(static_cast<FaultKind>(kind)) << " |";
  }
  out << "\n|";
  for (size_t column = 0; column < CELLS + FAULT_KINDS; ++column) out << "---|";
  for (const Columns& columns : functions) {
    out << fmt::format("\n| {} |", fmt::join(columns, " | "));
  }
  out << '\n' << LEGEND << "\n## Functions without a row\n\n";
  for (const Silent& function : silent_functions()) {
    out << "- `" << function.name << "`: " << function.why << "\n";
  }
}

}  // namespace test
