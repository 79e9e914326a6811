// The SIM card: PIN1 with its tries and its unblocking key, PLMN lists, files.
#include "simulator/requests/sim_requests.h"

#include <algorithm>

namespace sim {

constexpr size_t FIRST_CODE = 11;
constexpr size_t SECOND_CODE = 19;
constexpr size_t CODE_SIZE = 8;
constexpr int PIN_TRIES = 3;
constexpr int KEY_TRIES = 10;
constexpr size_t BLOCK_ENTRIES = 20;

void sim_status(const Incoming& in, Answer& a) {
  a.u8(0).u8(in.model.sim.status).u8(in.model.sim.lock).u8(in.model.sim.retries);
}

static std::string code_at(const Incoming& in, size_t offset) {
  auto first = in.request.begin() + static_cast<ptrdiff_t>(offset);
  return {first, std::find(first, first + CODE_SIZE, 0)};
}

// The result of an operation: 0 accepted, 1 refused.
static void result(Answer& a, bool accepted) { a.zeros(3).u8(accepted ? 0 : 1); }

// A correct PIN restores all tries, a wrong one costs one; the last one blocks the card.
static bool try_pin(Sim& sim, const std::string& pin) {
  if (sim.lock == ZOP_PIN_BLOCKED || sim.retries == 0) return false;
  if (pin == sim.pin) {
    sim.retries = PIN_TRIES;
    return true;
  }
  if (--sim.retries == 0) {
    sim.lock = ZOP_PIN_BLOCKED;
    sim.status = ZOP_SIM_NOT_INITIALISED;
  }
  return false;
}

static bool is_pin(const std::string& code) {
  return code.size() >= 4 && code.find_first_not_of("0123456789") == std::string::npos;
}

static void open_card(Sim& sim) {
  sim.lock = ZOP_PIN_VERIFIED;
  sim.status = ZOP_SIM_READY;
}

void pin_verify(const Incoming& in, Answer& a) {
  Sim& sim = in.model.sim;
  bool accepted = sim.lock != ZOP_PIN_PERM_DISABLED && try_pin(sim, code_at(in, FIRST_CODE));
  if (accepted) open_card(sim);
  result(a, accepted);
}

void pin_change(const Incoming& in, Answer& a) {
  Sim& sim = in.model.sim;
  std::string new_pin = code_at(in, SECOND_CODE);
  bool accepted =
      sim.lock != ZOP_PIN_PERM_DISABLED && is_pin(new_pin) && try_pin(sim, code_at(in, FIRST_CODE));
  if (accepted) {
    sim.pin = new_pin;
    open_card(sim);
  }
  result(a, accepted);
}

void pin_disable(const Incoming& in, Answer& a) {
  Sim& sim = in.model.sim;
  bool accepted = sim.lock != ZOP_PIN_PERM_DISABLED && try_pin(sim, code_at(in, FIRST_CODE));
  if (accepted) {
    sim.lock = ZOP_PIN_PERM_DISABLED;
    sim.status = ZOP_SIM_READY;
  }
  result(a, accepted);
}

void pin_enable(const Incoming& in, Answer& a) {
  Sim& sim = in.model.sim;
  bool accepted = sim.lock == ZOP_PIN_PERM_DISABLED && try_pin(sim, code_at(in, FIRST_CODE));
  if (accepted) sim.lock = ZOP_PIN_VERIFIED;
  result(a, accepted);
}

// Too many wrong keys disable the card for good.
void pin_unblock(const Incoming& in, Answer& a) {
  Sim& sim = in.model.sim;
  std::string new_pin = code_at(in, SECOND_CODE);
  bool accepted = sim.key_retries > 0 && is_pin(new_pin) && code_at(in, FIRST_CODE) == sim.key;
  if (accepted) {
    sim.pin = new_pin;
    sim.retries = PIN_TRIES;
    sim.key_retries = KEY_TRIES;
    open_card(sim);
  } else if (sim.key_retries > 0 && --sim.key_retries == 0) {
    sim.status = ZOP_SIM_INVALID_CARD;
  }
  result(a, accepted);
}

static int u32_at(View bytes, size_t offset) {
  return bytes[offset] | bytes[offset + 1] << 8 | bytes[offset + 2] << 16 | bytes[offset + 3] << 24;
}

void sim_file(const Incoming& in, Answer& a) {
  auto file = in.model.sim.files.find(u32_at(in.request, 3));
  int offset = u32_at(in.request, 7);
  if (file == in.model.sim.files.end()) return a.status(1);
  View data = file->second;
  if (offset < 0 || static_cast<size_t>(offset) > data.size()) return a.status(1);
  a.u32(static_cast<int64_t>(data.size())).bytes(data.subspan(static_cast<size_t>(offset)), 255);
}

static void plmn(Answer& a, const Plmn& entry) { a.text(entry.mcc, 3).text(entry.mnc, 3); }

// Count and up to room entries with technology bytes, beginning with the entry at first.
static void plmn_block(Answer& a, const std::vector<Plmn>& list, size_t first, size_t room) {
  size_t count = std::min(room, list.size() - std::min(first, list.size()));
  a.u8(static_cast<int>(count));
  for (size_t i = first; i < first + count; ++i) {
    plmn(a, list[i]);
    a.u8(list[i].technology_1).u8(list[i].technology_2);
  }
  a.zeros((room - count) * 8);
}

// The length of the whole list, then a block from the request's 1-based entry on.
static void numbered_block(const Incoming& in, Answer& a, const std::vector<Plmn>& list) {
  size_t first = in.request[3] == 0 ? 256 : in.request[3];
  a.u8(static_cast<int>(std::min<size_t>(255, list.size())));  // the largest that fits
  plmn_block(a, list, first - 1, BLOCK_ENTRIES);
}

void operator_plmns(const Incoming& in, Answer& a) {
  plmn_block(a, in.model.sim.operators, 0, BLOCK_ENTRIES);
}
void home_plmns(const Incoming& in, Answer& a) { plmn_block(a, in.model.sim.home, 0, 10); }
void user_plmns(const Incoming& in, Answer& a) { plmn_block(a, in.model.sim.user, 0, 15); }
void operator_plmn_block(const Incoming& in, Answer& a) {
  numbered_block(in, a, in.model.sim.operators);
}
void home_plmn_block(const Incoming& in, Answer& a) { numbered_block(in, a, in.model.sim.home); }

void registered_plmn(const Incoming& in, Answer& a) {
  const Network& network = in.model.network;
  bool registered = network.registration == ZOP_REGISTRATION_SUCCESS;
  plmn(a, registered ? Plmn{network.mcc, network.mnc} : Plmn{"", ""});
}

void forbidden_plmns(const Incoming& in, Answer& a) {
  const std::vector<Plmn>& list = in.model.sim.forbidden;
  size_t count = std::min<size_t>(BLOCK_ENTRIES, list.size());
  a.u32(static_cast<int64_t>(count));
  for (size_t i = 0; i < count; ++i) plmn(a, list[i]);
  a.zeros((BLOCK_ENTRIES - count) * 6);
}

void set_user_plmns(const Incoming& in, Answer& a) {
  size_t count = in.request[3];
  if (count > 15) return a.status(1);
  in.model.sim.user.clear();
  for (size_t i = 0; i < count; ++i) {
    View entry = in.request.subspan(4 + 8 * i, 8);
    in.model.sim.user.push_back(
        {characters(entry.first(3)), characters(entry.subspan(3, 3)), entry[6], entry[7]});
  }
}

}  // namespace sim
