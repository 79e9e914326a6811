// One line a function, one column a fault. A cell holds all that was seen at any byte of any
// answer.
#include "tests/faults/table.h"

#include <fmt/format.h>

#include <ostream>

namespace test {

static constexpr Time WORTH_TELLING = std::chrono::milliseconds(50);

static double seconds(Time time) { return std::chrono::duration<double>(time).count(); }

static const char TITLE[] = R"(# What a host sees when the line fails

Written by `make faults`. Each function of the module is asked once while one of its answers is
damaged: at every byte of every answer that the call gets, in virtual time. Then the line is mended,
the host closes and opens, and asks again.

)";

static const char LEGEND[] = R"(
## How to read it

A cell shows the results that were seen, and the longest time that the call took when that is worth
telling. `zop_` results are those of `zop.h` (0 success, 1 not open, 2 no response, 7 bad response,
10 and 11 the modem refuses), `vurn_` results those of `vurn.h` (0 success, 2 failed, 13 no time
yet).

| mark | meaning |
|---|---|
| `!` | a good result with a wrong output |
| `~` | a good result; what could not be read is missing, or older |
| `>` | whatever the call ends with, the next one on the same link gets a wrong answer |

| fault | what happens |
|---|---|
| silence | this answer and all later ones do not come |
| late | from this byte on the answer is 5.5 s late; the host opens again when it has passed |
| late, reopened at once | the same, and the host opens again at the time-out |
| cut | the answer ends at this byte, without its flag |
| bad check | the check bytes are wrong |
| flipped bit | each bit of this byte (in calls of many answers, one) |
| byte in | 00, 7D or 7E is put in before this byte |
| lost | this byte is missing |
| other answer | the modem answers as to another request |
| refusal | the modem's error answer: 19, 20, 21, 24, 66 or 71, then the request |
| twice | the answer comes twice, at once or one behind the other |
| gone | the device goes away at this byte and comes back after the call |
| gone and back | the device goes away at this byte and is back at once |

Every fault closes the link or leaves it usable; no row needs more than closing and opening. The
longest wait is the 5 s of one answer: a time-out closes the link, and what a call still wanted to
ask then fails at once. Opening waits 5 times 1 s for a modem that does not answer its probe. The
limit begins anew with each piece of an answer: a modem that trickles, a byte every few seconds, is
waited for until it has sent a flag or 360 bytes. `zop_debug_start` is watched with its listener at
work for four seconds.

## What hosts should make of it

- **A refusal or another request's answer is accepted** (`!`): only `zop_get_rssi` compares what
  comes with what it asked. A modem that refuses a query often reads as 0. Judge implausible values
  by a second query.
- **An answer that comes twice shifts the following ones** (`>`): each question then gets the answer
  of the one before, until the link is opened again. An answer that a damaged byte ends too early
  makes the next call fail as well, and is then out of the way.
- **A late answer is dropped when it comes**, also behind a new open: after a time-out a host may
  close and open at once.
- **The report shows what it could get** (`~`): `vurn_get_log_string`, `vurn_log_message`,
  `vurn_enable_logging` and `vurn_open` do not fail for a value that is missing.
- **The versions of the report and of the first log line are read once a process**, by the first
  `vurn_open` that gets a hardware version: if that one was wrong by another's answer, it stays.
  `vurn_get_firmware_version` asks anew each time.
- **`zop_end_call_test` does not look at its answer**, and `zop_set_backup` step 3 has none.
)";

static std::string text_of(const Cell& cell) {
  std::string text;
  for (int result : cell.results) text += fmt::format("{}{}", text.empty() ? "" : " ", result);
  if (cell.wrong) text += '!';
  if (cell.partial) text += '~';
  if (cell.next_wrong) text += '>';
  if (cell.longest >= WORTH_TELLING) text += fmt::format(", {:.1f} s", seconds(cell.longest));
  return text;
}

void write_markdown(std::ostream& out, const std::vector<FunctionRow>& functions) {
  out << TITLE << "| function | good line |";
  for (int kind = 0; kind < FAULT_KINDS; ++kind) {
    out << ' ' << name_of(static_cast<FaultKind>(kind)) << " |";
  }
  out << "\n|---|---|";
  for (int kind = 0; kind < FAULT_KINDS; ++kind) out << "---|";
  out << '\n';
  for (const FunctionRow& function : functions) {
    out << "| `" << function.name << "` | " << function.healthy_result << " |";
    for (const Cell& cell : function.cells) out << ' ' << text_of(cell) << " |";
    out << '\n';
  }
  out << LEGEND << "\n## Functions without a row\n\n";
  for (const Silent& function : silent_functions()) {
    out << "- `" << function.name << "`: " << function.why << "\n";
  }
}

JsonRows::JsonRows(std::ostream& out) : out_(out) {
  out_
      << R"({"columns": ["function", "fault", "answer", "byte", "way", "result", "output", "next",)"
      << R"( "milliseconds", "recovered"],)"
      << "\n\"rows\": [";
}

JsonRows::~JsonRows() { out_ << "\n]}\n"; }

void JsonRows::add(const std::string& function, const Row& row) {
  static constexpr const char* OUTPUTS[] = {"failed", "right", "partial", "wrong"};
  static constexpr const char* NEXTS[] = {"closed", "fails", "right", "wrong"};
  out_ << fmt::format("{}\n[\"{}\", \"{}\", {}, {}, {}, {}, \"{}\", \"{}\", {}, {}]",
                      first_ ? "" : ",", function, name_of(row.fault.kind), row.fault.answer,
                      row.fault.at, row.fault.way, row.result, OUTPUTS[row.output], NEXTS[row.next],
                      row.took / std::chrono::milliseconds(1), row.recovered);
  first_ = false;
}

}  // namespace test
