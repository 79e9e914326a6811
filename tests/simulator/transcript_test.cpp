// The modem in virtual time, by transcripts of what a host sends and what comes back:
//   modem        a new modem with the scenario in the lines that follow
//   fault TEXT   switches a fault on
//   send BYTES   sends bytes as they are
//   wait S       lets time pass
//   unplug       takes its power; replug gives it back, after taking it if need be
//   trace        shows the trace since the last time
//   BYTES        sends a request
#include "tests/support/transcript.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <optional>
#include <sstream>

#include "simulator/modem.h"
#include "tests/support/words.h"

using namespace sim;

// Runs of a word as 00*9.
static std::string shortened(const std::string& text) {
  std::istringstream source(text);
  std::vector<std::pair<std::string, int>> runs;
  for (std::string word; source >> word;) {
    if (runs.empty() || runs.back().first != word) runs.emplace_back(word, 0);
    ++runs.back().second;
  }
  std::string shown;
  for (const auto& [word, count] : runs) {
    if (count > 3) shown += fmt::format(" {}*{}", word, count);
    for (int i = 0; count <= 3 && i < count; ++i) shown += " " + word;
  }
  return shown;
}

// The payload of a good frame, or the bytes on the line.
static std::string shown_wire(const Bytes& wire) {
  Deframer deframer;
  Deframer::Verdict verdict = Deframer::PENDING;
  for (uint8_t byte : wire) verdict = deframer.take(byte);
  bool good = verdict == Deframer::GOOD;
  std::string kind = !good ? "bytes" : wire.front() == 0x7E ? "flagged answer" : "answer";
  View bytes = good ? deframer.payload() : wire;
  return kind + shortened(fmt::format(" {:02x}", fmt::join(bytes, " ")));
}

namespace {
class SimulatedModem : public test::Session {
 public:
  std::string answer(const std::string& input) override {
    size_t end = input.find_first_of(" \n");
    std::string word = input.substr(0, end);
    std::string rest = end == std::string::npos ? "" : input.substr(end + 1);
    if (word == "trace") return std::exchange(trace_, "");
    try {
      if (word == "modem") start(rest);
      if (word == "fault") modem_->faults().add(parse_fault(rest));
    } catch (const std::exception& error) {
      return error.what();
    }
    if (word == "wait") now_ += Time(static_cast<int64_t>(std::stod(rest) * 1e6));
    if (word == "unplug") modem_->unplug(now_);
    if (word == "replug") modem_->replug(now_);
    if (word == "send") modem_->receive(test::hex(rest), now_);
    if (word.size() == 2 || word.starts_with('"')) modem_->receive(frame(test::hex(input)), now_);
    return output();
  }

 private:
  void start(const std::string& toml) {
    modem_.emplace(parse_scenario(toml, "x"), 1,
                   [this](const std::string& line) { trace_ += shortened(line) + "\n"; });
    now_ = Time{0};
    trace_.clear();
  }

  std::string output() {
    std::string lines;
    while (auto output = modem_->take_output(now_)) {
      lines += fmt::format("{:.3f} ", static_cast<double>(output->at.count()) / 1e6);
      if (output->kind == Output::SENDS) lines += shown_wire(output->bytes);
      if (output->kind == Output::HANGS_UP) lines += "hangs up";
      if (output->kind == Output::COMES_BACK) lines += "comes back";
      lines += "\n";
    }
    auto due = modem_->next_due();
    if (due) lines += fmt::format("next at {:.3f}\n", static_cast<double>(due->count()) / 1e6);
    return lines;
  }

  std::optional<Modem> modem_{Scenario{}};
  Time now_{0};
  std::string trace_;
};

const bool REGISTERED = test::register_transcripts(
    TRANSCRIPTS "/simulator", [] { return std::make_unique<SimulatedModem>(); });
}  // namespace
