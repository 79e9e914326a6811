// Parsing faults, and choosing the one that hits a request.
#include "simulator/scenario/faults.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "simulator/download/download_mode.h"

namespace sim {

namespace {
struct KindRow {
  const char* name;
  FaultKind kind;
  int min, max;  // of the value
  int usual;     // value when none is given
};
}  // namespace

static const KindRow KINDS[] = {
    {"silence", FaultKind::SILENCE, 0, 0, 0},
    {"delay", FaultKind::DELAY, 1, 3'600'000, 1000},
    {"bad-crc", FaultKind::BAD_CRC, 0, 0, 0},
    {"cut", FaultKind::CUT, 0, 4096, 1},
    {"shorten", FaultKind::SHORTEN, 1, 4096, 1},
    {"pieces", FaultKind::PIECES, 1, 4096, 1},
    {"wrong-echo", FaultKind::WRONG_ECHO, 0, 2, 0},
    {"extra", FaultKind::EXTRA, 1, 4096, 1},
    {"insert", FaultKind::INSERT, 0, 255, 0},
    {"lose", FaultKind::LOSE, 0, 4096, 0},
    {"hang-up", FaultKind::HANG_UP, 0, 4096, 0},
    {"duplicate", FaultKind::DUPLICATE, 0, 3'600'000, 0},
    {"other", FaultKind::OTHER, 0, 255, '/'},  // the RAC
    {"error", FaultKind::ERROR, 1, 255, BAD_COMMAND},
    {"status", FaultKind::STATUS, 0, 0xFFFF, 1},
    {"flip", FaultKind::FLIP, 0, 8 * 4096, 0},
};

const char* fault_name(FaultKind kind) {
  return std::ranges::find(KINDS, kind, &KindRow::kind)->name;
}

template <typename Number>
static Number number(const std::string& text, const std::string& what) {
  Number value{};
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) {
    throw std::invalid_argument(what + ": \"" + text + "\" is not a number");
  }
  return value;
}

static void set_kind(Fault& fault, const std::string& text) {
  std::string name = text.substr(0, text.find('='));
  auto row = std::ranges::find(KINDS, name, &KindRow::name);
  if (row == std::end(KINDS)) {
    std::string known;
    for (const KindRow& kind : KINDS) known += std::string(known.empty() ? "" : ", ") + kind.name;
    throw std::invalid_argument("unknown fault \"" + name + "\"; known are " + known);
  }
  fault.kind = row->kind;
  fault.value = row->usual;
  if (name.size() == text.size()) return;
  fault.value = number<int>(text.substr(name.size() + 1), name);
  if (fault.value < row->min || fault.value > row->max) {
    throw std::invalid_argument(name + " takes " + std::to_string(row->min) + " to " +
                                std::to_string(row->max));
  }
}

namespace {
struct CountRow {
  const char* name;
  int Fault::*member;
};
}  // namespace

static const CountRow COUNTS[] = {
    {"at", &Fault::at}, {"back", &Fault::back}, {"skip", &Fault::skip}, {"count", &Fault::count}};

static void set_option(Fault& fault, const std::string& option) {
  size_t equals = option.find('=');
  std::string key = option.substr(0, equals);
  std::string value = equals == std::string::npos ? "" : option.substr(equals + 1);
  auto count = std::ranges::find(COUNTS, key, &CountRow::name);
  if (key == "request") {
    if (find_request_named(value) == nullptr && !is_packet_name(value)) {
      throw std::invalid_argument("unknown request \"" + value +
                                  "\"; zop-modem-sim --list-requests shows them");
    }
    fault.request = value;
  } else if (count != std::end(COUNTS)) {
    fault.*count->member = number<int>(value, key);
  } else if (key == "chance") {
    fault.chance = number<double>(value, key);
  } else {
    throw std::invalid_argument("unknown option \"" + key +
                                "\"; it is one of request, at, back, skip, count, chance");
  }
}

Fault parse_fault(const std::string& text) {
  Fault fault;
  size_t colon = text.find(':');
  set_kind(fault, text.substr(0, colon));
  while (colon != std::string::npos) {
    size_t end = text.find(',', colon + 1);
    size_t length = end == std::string::npos ? end : end - colon - 1;
    set_option(fault, text.substr(colon + 1, length));
    colon = end;
  }
  bool good = fault.skip >= 0 && fault.count >= -1 && fault.at >= 0 && fault.back >= -1 &&
              fault.chance >= 0 && fault.chance <= 1;
  if (!good)
    throw std::invalid_argument("at, back, skip and count can't be negative, chance is 0 to 1");
  return fault;
}

std::optional<Fault> Faults::strike(const std::string& request) {
  for (Fault& fault : faults_) {
    if (!fault.request.empty() && fault.request != request) continue;
    if (fault.count == 0) continue;
    if (fault.chance < 1.0 && std::uniform_real_distribution<>()(random_) >= fault.chance) continue;
    if (fault.skip > 0) {
      --fault.skip;
      continue;
    }
    if (fault.count > 0) --fault.count;
    return fault;
  }
  return std::nullopt;
}

}  // namespace sim
