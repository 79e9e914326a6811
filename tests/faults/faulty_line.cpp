// What each fault does to an answer. A damaged frame reaches the module in two pieces that meet at
// the damage: a read that ends there is the worst case for a reader that looks for flags.
#include "tests/faults/faulty_line.h"

#include <algorithm>
#include <map>

#include "simulator/modem.h"

namespace test {

using namespace std::chrono_literals;

enum : uint8_t { FLAG = 0x7E, ESCAPE = 0x7D, REFUSAL_SIZE_MOST = 250 };
static const Bytes PROBE = {0x1D};
static const Bytes QUERIES[] = {hex("cf 2f 00"), hex("cf 67 00")};  // RAC and IMEI
static constexpr uint8_t REFUSALS[] = {19, 20, 21, 24, 66, 71};
static constexpr uint8_t NOISE[] = {0x00, FLAG, ESCAPE};
static constexpr Time LATE_BY = 5500ms;    // over the limit of 5 s
static constexpr Time GOES_AFTER = 1ms;    // so that the bytes sent before are read
static constexpr Time SECOND_AFTER = 1ms;  // the copy after the first

const char* name_of(FaultKind kind) {
  static constexpr const char* NAMES[] = {
      "silence",       "late",      "late, reopened at once", "cut",     "bad check", "flipped bit",
      "byte inserted", "byte lost", "other answer",           "refusal", "twice",     "gone",
      "gone and back"};
  static_assert(std::size(NAMES) == FAULT_KINDS);
  return NAMES[static_cast<int>(kind)];
}

// ---- the list of faults ----

namespace {
struct Extent {
  FaultKind kind;
  bool every_byte;
  unsigned ways;
};
}  // namespace
static constexpr Extent EXTENTS[] = {
    {FaultKind::SILENCE, false, 1},
    {FaultKind::LATE, true, 1},
    {FaultKind::LATE_AT_ONCE, true, 1},
    {FaultKind::CUT, true, 1},
    {FaultKind::BAD_CHECK, false, 1},
    {FaultKind::FLIPPED, true, 8},
    {FaultKind::INSERTED, true, std::size(NOISE)},
    {FaultKind::LOST, true, 1},
    {FaultKind::OTHER, false, std::size(QUERIES)},
    {FaultKind::REFUSAL, false, std::size(REFUSALS)},
    {FaultKind::TWICE, false, 2},
    {FaultKind::GONE, true, 1},
    {FaultKind::BACK, true, 1},
};

static void add_faults(const Extent& extent, size_t answer, size_t size, bool few_bits,
                       std::vector<Fault>& faults) {
  bool one_way = few_bits && extent.kind == FaultKind::FLIPPED;
  for (size_t at = 0; at < (extent.every_byte ? size : 1); ++at) {
    if (one_way) {
      faults.push_back({extent.kind, answer, at, static_cast<unsigned>(at) % extent.ways});
      continue;
    }
    for (unsigned way = 0; way < extent.ways; ++way) {
      faults.push_back({extent.kind, answer, at, way});
    }
  }
}

std::vector<Fault> all_faults(const std::vector<Bytes>& frames, bool few_bits) {
  std::vector<Fault> faults;
  for (const Extent& extent : EXTENTS) {
    for (size_t answer = 0; answer < frames.size(); ++answer) {
      add_faults(extent, answer, frames[answer].size(), few_bits, faults);
    }
  }
  return faults;
}

// ---- the modem ----

// Its values differ from each other, so that an answer shows which request it belongs to.
static sim::Scenario scenario() {
  sim::Scenario scenario;
  sim::Model& model = scenario.model;
  scenario.clock_is_set = true;
  model.network.roaming = 1;
  model.network.carrier = 23;
  model.sim.user = {{"262", "07"}};
  model.sim.forbidden = {{"234", "15"}, {"208", "20"}};
  model.state.mm_attach_error = 11;
  model.state.gmm_attach_error = 12;
  model.state.mm_lu_error = 13;
  model.state.gmm_rau_error = 14;
  model.state.rau_type = 15;
  model.device.backup_ready = 16;
  model.device.debug_mode = 1;
  model.device.events = sim::EVENT_ACTIVATED;
  return scenario;
}

static Bytes asked_of_a_fresh_modem(const Bytes& request) {
  sim::Modem modem(scenario());
  modem.receive(frame(request), sim::Time{0});
  while (auto output = modem.take_output(sim::Time{0})) {
    if (output->kind == sim::Output::SENDS) return unframe(output->bytes);
  }
  return {};
}

static const Bytes& payload_for(const Bytes& request) {
  static std::map<std::string, Bytes> known;  // by the request as hex
  auto [it, is_new] = known.try_emplace(to_hex(request));
  if (is_new) it->second = asked_of_a_fresh_modem(request);
  return it->second;
}

// ---- the line ----

void FaultyLine::watch() {
  frames_.clear();
  fault_.reset();
}

void FaultyLine::strike(const Fault& fault) {
  watch();
  fault_ = fault;
  has_struck_ = false;
}

void FaultyLine::mend() {
  fault_.reset();
  silent_ = false;
  stays_away_ = false;
}

std::optional<Time> FaultyLine::last_due() const {
  if (due_.empty()) return std::nullopt;
  return due_.back().at;
}

static Bytes part(const Bytes& bytes, size_t from, size_t to = SIZE_MAX) {
  from = std::min(from, bytes.size());
  to = std::min(to, bytes.size());
  return {bytes.begin() + static_cast<ptrdiff_t>(from), bytes.begin() + static_cast<ptrdiff_t>(to)};
}

static Answer split(const Bytes& wire, size_t at, Time pause) {
  return {{part(wire, 0, at)}, {part(wire, at), pause}};
}

// Changes the last check byte to one that needs no escape.
static Bytes with_bad_check(Bytes wire) {
  uint8_t& check = wire[wire.size() - 2];
  check ^= (check ^ 1) == FLAG || (check ^ 1) == ESCAPE ? 4 : 1;
  return wire;
}

static Bytes refusal_of(const Bytes& request, unsigned way) {
  Bytes payload = {REFUSALS[way]};
  payload.insert(payload.end(), request.begin(), request.end());
  payload.resize(std::min<size_t>(payload.size(), REFUSAL_SIZE_MOST));
  return payload;
}

static Bytes other_than(const Bytes& request, unsigned way) {
  const Bytes& query = QUERIES[way] == request ? PROBE : QUERIES[way];
  return payload_for(query);
}

Answer FaultyLine::damaged(const Bytes& request, const Bytes& payload) {
  Bytes wire = frame(payload);
  size_t at = std::min(fault_->at, wire.size() - 1);
  auto place = wire.begin() + static_cast<ptrdiff_t>(at);
  switch (fault_->kind) {
    case FaultKind::SILENCE:
      silent_ = true;
      return {};
    case FaultKind::LATE:
    case FaultKind::LATE_AT_ONCE:
      return split(wire, at, LATE_BY);
    case FaultKind::CUT:
      return {{part(wire, 0, at)}};
    case FaultKind::BAD_CHECK:
      return {{with_bad_check(wire)}};
    case FaultKind::FLIPPED:
      *place ^= static_cast<uint8_t>(1u << fault_->way);
      return split(wire, at + 1, Time{0});
    case FaultKind::INSERTED:
      wire.insert(place, NOISE[fault_->way]);
      return split(wire, at + 1, Time{0});
    case FaultKind::LOST:
      wire.erase(place);
      return split(wire, at, Time{0});
    case FaultKind::OTHER:
      return {{frame(other_than(request, fault_->way))}};
    case FaultKind::REFUSAL:
      return {{frame(refusal_of(request, fault_->way))}};
    case FaultKind::TWICE: {
      if (fault_->way != 0) return {{wire}, {wire, SECOND_AFTER}};
      Bytes both = wire;
      both.insert(both.end(), wire.begin(), wire.end());
      return {{both}};
    }
    case FaultKind::GONE:
    case FaultKind::BACK:
      stays_away_ = fault_->kind == FaultKind::GONE;
      leaves_ = World::current()->now() + GOES_AFTER;
      return {{part(wire, 0, at)}};
  }
  return {};
}

Answer FaultyLine::answer_to(const Bytes& wire) {
  Bytes request = unframe(wire);
  if (silent_ || request.empty()) return {};
  const Bytes& payload = payload_for(request);
  if (payload.empty()) return {};
  frames_.push_back(frame(payload));
  bool hit = fault_ && !has_struck_ && frames_.size() == fault_->answer + 1;
  if (!hit) return {{frames_.back()}};
  has_struck_ = true;
  return damaged(request, payload);
}

std::optional<Time> FaultyLine::next_due() const {
  if (due_.empty()) return leaves_;
  return leaves_ ? std::min(due_.front().at, *leaves_) : due_.front().at;
}

// Bytes in transit are lost with the device.
bool FaultyLine::gone(Time now) {
  if (leaves_ && *leaves_ <= now) {
    leaves_.reset();
    ++hang_ups_;
    due_.clear();
    request_.clear();
  }
  bool left = hang_ups_ > 0;
  return left && stays_away_;
}

}  // namespace test
