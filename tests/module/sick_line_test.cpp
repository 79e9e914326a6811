// A sick line: the modem is late or silent, sends slowly, or accepts nothing. Every host call
// returns in time, and every answer belongs to its request.
#include "module/lifecycle.h"
#include "report/field_test.h"
#include "tests/module/module_world.h"

using namespace std::chrono_literals;
using namespace test;

namespace {
// Answers each request after a delay and in order. The answer holds the number of requests of its
// kind, so that an old one is noticed.
class LateModem : public Script {
 public:
  Time latency{0};
  bool one_at_a_time = false;  // the latency is processing time, not transit time
  Time gap{0};                 // between two bytes; 0: whole answers
  std::function<bool(const Bytes& request)> ignores = [](const Bytes&) { return false; };
  bool babbles = false;  // sends a frame every 7 ms that answers no request
  Answer spoilt;         // in place of the next answer
  std::map<Bytes, uint8_t> asked;
  int requests_seen = 0;

  // Answers in transit arrive within half a second.
  void recover(Time now) {
    latency = gap = Time{0};
    ignores = [](const Bytes&) { return false; };
    for (Due& due : due_) due.at = std::min(due.at, now + 500ms);
  }
  std::optional<Time> next_due() const override {
    return babbles ? next_babble_ : Script::next_due();
  }
  Bytes take(Time now) override {
    if (babbles && now < next_babble_) return {};
    if (babbles) return next_babble_ = now + 7ms, frame(hex("d0 01 02"));
    Bytes all;
    for (Bytes piece; !(piece = Script::take(now)).empty();) {
      all.insert(all.end(), piece.begin(), piece.end());
    }
    return all;
  }

 protected:
  Answer answer_to(const Bytes& wire) override {
    Bytes request = unframe(wire);
    if (request.empty()) return {};  // damaged, or nothing between two flags
    ++requests_seen;
    if (ignores(request)) return {};
    Answer answer = std::exchange(spoilt, {});
    if (answer.empty()) answer = {{frame(payload_for(request))}};
    if (gap != Time{0}) answer = byte_by_byte(answer[0].bytes);
    answer[0].after += latency;
    Time now = World::current()->now();
    if (one_at_a_time || due_.empty()) return answer;
    answer[0].after -= std::clamp(due_.back().at - now, Time{0}, latency);
    return answer;
  }

 private:
  Bytes payload_for(const Bytes& request) {
    bool vendor = request.size() >= 3;
    uint8_t count = ++asked[vendor ? Bytes(request.begin(), request.begin() + 3) : request];
    Bytes answer(350, count);
    std::copy(request.begin(), request.begin() + (vendor ? 3 : 1), answer.begin());
    if (vendor) answer[3] = answer[4] = 0;
    if (request[0] == 0xD2 && request[1] == 0) answer = hex("d2 00 00 00 00 00 02 01 03");
    if (request[0] == 0xD2 && request[1] == 1) answer = hex("d2 01 00 00 00 00 00 00 00");
    if (request[0] == 0xCF && request[1] == '=') answer[5] = 0;
    return answer;
  }
  Answer byte_by_byte(const Bytes& wire) const {
    Answer answer;
    for (uint8_t byte : wire) answer.push_back({{byte}, gap});
    return answer;
  }
  Time next_babble_{0};
};
}  // namespace

class SickLine : public ModuleTest {
 protected:
  SickLine() { world.far_end = &late; }
  ~SickLine() override { world.write_room = SIZE_MAX; }
  void start_listener() {
    ASSERT_EQ(vurn_open(), VURN_OK);
    world.advance(30s);  // the first snapshot is over
    prv_set_field_testing(true, true);
    ASSERT_EQ(THREAD_STATUS, unsigned{LISTENER_RUNNING});
  }
  Time time_of(const std::function<void()>& call) {
    Time before = world.now();
    call();
    return world.now() - before;
  }
  // The next commands get their own answers, whether of different kinds or the same.
  void expect_own_answers(const std::string& where) {
    for (int i = 0; i < 3; ++i) {
      uint32_t rac = 0;
      int32_t rscp = 0;
      uint8_t screen[ZOP_SCREEN_SIZE];
      EXPECT_EQ(zop_get_field_information(screen), ZOP_SUCCESS) << where;
      EXPECT_EQ(screen[0], late.asked[hex("cf 34 00")]) << where;
      EXPECT_EQ(zop_get_rac(&rac), ZOP_SUCCESS) << where;
      EXPECT_EQ(rac, late.asked[hex("cf 2f 00")]) << where;
      EXPECT_EQ(zop_get_rscp(&rscp), ZOP_SUCCESS) << where;
      EXPECT_EQ(rscp & 0xFF, late.asked[hex("cf 27 00")]) << where;
    }
  }

  LateModem late;
};

TEST_F(SickLine, a_stop_is_prompt_whatever_the_listener_does) {
  struct {
    const char* name;
    std::function<void()> fall_sick;
  } states[] = {
      {"asleep", [] {}},
      {"silent", [&] { late.ignores = [](const Bytes&) { return true; }; }},
      {"late", [&] { late.latency = 4s; }},
      {"trickling", [&] { late.gap = 2s; }},
      {"trickling fast", [&] { late.gap = 10ms; }},
      {"taking nothing", [&] { world.write_room = 0; }},
      {"taking two bytes", [&] { world.write_room = 2; }},
  };
  struct {
    const char* name;
    std::function<void()> stop;
    bool closes;
  } stops[] = {
      {"zop_debug_stop", [] { zop_debug_stop(); }, false},
      {"switch-off", [] { prv_set_field_testing(false, true); }, false},
      {"vurn_close(0)", [] { vurn_close(0); }, true},
      {"vurn_close(1)", [] { vurn_close(1); }, true},
  };
  for (auto& state : states) {
    for (auto& stop : stops) {
      std::string where = std::string(state.name) + ", " + stop.name;
      late = LateModem();
      start_listener();
      world.advance(1200ms);
      state.fall_sick();
      world.advance(400ms);  // a screen is requested
      int requests = late.requests_seen;
      EXPECT_LE(time_of(stop.stop), Time(100ms)) << where;
      EXPECT_EQ(THREAD_STATUS, 0u) << where;
      EXPECT_EQ(SIO_USED_LOCK, 0u) << where;
      EXPECT_EQ(diag_status(), stop.closes ? 0 : 1) << where;
      EXPECT_EQ(late.requests_seen, requests) << where;
      world.write_room = SIZE_MAX;
      late.recover(world.now());
      if (!stop.closes) expect_own_answers(where);
      close_module();
      gDeferredThreadCreated = false;
    }
  }
}

TEST_F(SickLine, every_wait_has_its_bound) {
  uint32_t rac;
  auto query = [&] { return zop_get_rac(&rac); };
  auto open = [] { return zop_open(DEVICE); };
  auto silence = [&] { late.ignores = [](const Bytes&) { return true; }; };
  auto trickle = [&] { late.gap = 900ms; };
  auto stuck = [&] { world.write_room = 0; };
  auto babble = [&] {  // leaves an answer of the same kind owed
    late.babbles = true;
    zop_set_backup(3);
    zop_get_rac(&rac);
  };
  struct {
    const char* name;
    std::function<void()> fall_sick;
    std::function<unsigned()> call;
    unsigned result;
    Time most;
  } rows[] = {
      {"silence", silence, query, ZOP_ERR_NO_RESPONSE, 5s + 2ms},
      {"a trickle", trickle, query, ZOP_ERR_NO_RESPONSE, 15s + 2ms},
      {"a line that takes nothing", stuck, query, ZOP_ERR_NO_RESPONSE, 5s},
      {"a babble", babble, query, ZOP_ERR_NO_RESPONSE, 15s + 2ms},
      {"open in silence", silence, open, 1, 5 * (1s + 100us)},
      {"open in a trickle", trickle, open, 1, 5 * (3s + 100us)},
      {"open of a line that takes nothing", stuck, open, 1, 5 * (5s + 100us)},
  };
  for (auto& row : rows) {
    world.write_room = SIZE_MAX;
    late = LateModem();
    ASSERT_EQ(zop_open(DEVICE), 0u) << row.name;
    row.fall_sick();
    Time before = world.now();
    EXPECT_EQ(row.call(), row.result) << row.name;
    EXPECT_LE(world.now() - before, row.most + 10ms) << row.name;
    EXPECT_GE(world.now() - before, row.most - 50ms) << row.name;
    EXPECT_EQ(diag_status(), 0) << row.name;
  }
}

// When an open returns, the answers to its earlier probes have been read.
TEST_F(SickLine, a_slow_modem_is_understood_from_its_open_on) {
  struct {
    Time latency;
    bool one_at_a_time;
    int deaf_to;   // probes that it ignores
    int requests;  // that the open sends
  } rows[] = {{0ms, false, 0, 1},   {2500ms, false, 0, 4}, {4500ms, false, 0, 6},
              {2500ms, true, 0, 4}, {3500ms, true, 0, 5},  {100ms, false, 3, 5}};
  for (auto& row : rows) {
    late = LateModem();
    late.latency = row.latency;
    late.one_at_a_time = row.one_at_a_time;
    int probes = 0;
    late.ignores = [&](const Bytes& request) {
      return request == hex("1d") && probes++ < row.deaf_to;
    };
    std::string where = std::to_string(row.latency.count() / 1'000'000) + " ms";
    ASSERT_EQ(zop_open(DEVICE), 0u) << where;
    EXPECT_EQ(late.requests_seen, row.requests) << where;
    late.one_at_a_time = false;
    expect_own_answers(where);
    uint32_t refused = 1;
    uint8_t pin[ZOP_PIN_SIZE] = {'1', '2', '3', '4'};
    EXPECT_EQ(zop_simcard_verify(pin, 4, &refused), ZOP_SUCCESS) << where;
    EXPECT_EQ(refused, 0u) << where;
    zop_close();
  }
}

// With and without an answer to backup step 3, which restarts the modem.
TEST_F(SickLine, an_answer_that_nobody_waits_for_is_dropped) {
  for (bool is_answered : {true, false}) {
    late = LateModem();
    ASSERT_EQ(zop_open(DEVICE), 0u);
    late.latency = 100ms;
    late.ignores = [&](const Bytes& request) { return !is_answered && request[0] == 218; };
    EXPECT_EQ(zop_set_backup(3), ZOP_SUCCESS);
    uint32_t rac = 0;
    EXPECT_EQ(time_of([&] { zop_get_rac(&rac); }), Time(100ms));
    EXPECT_EQ(rac, late.asked[hex("cf 2f 00")]);
    expect_own_answers(is_answered ? "answered" : "not answered");
    zop_close();
  }
}

// 125 and 126 are ordinary values, but each is two bytes on the wire.
TEST_F(SickLine, a_screen_of_stuffed_bytes_is_an_answer) {
  ASSERT_EQ(zop_open(DEVICE), 0u);
  late.asked[hex("cf 34 00")] = 0x7D - 1;
  expect_own_answers("0x7d, 0x7e");
  EXPECT_EQ(diag_status(), 1);
}

// The stopped listener's screen arrives after the wait for the mark has ended.
TEST_F(SickLine, an_old_answer_is_not_taken_for_a_new_one_of_its_kind) {
  start_listener();
  world.advance(1200ms);
  late.latency = 12s;
  world.advance(400ms);
  zop_debug_stop();
  uint8_t screen[ZOP_SCREEN_SIZE];
  EXPECT_LE(time_of([&] { EXPECT_EQ(zop_get_field_information(screen), ZOP_ERR_NO_RESPONSE); }),
            Time(5s + 2ms));
  late.recover(world.now());
  ASSERT_EQ(zop_open(DEVICE), 0u);
  expect_own_answers("after it");
}

// Frames that answer no request: with a flag inside, too long, with another command's code.
TEST_F(SickLine, damage_shifts_no_answers) {
  struct {
    const char* name;
    Answer answer;
    unsigned result;
  } rows[] = {
      {"a flag at a piece's end", {{hex("cf 2f 7e")}, {hex("00 00 00 07 7e"), 30ms}}, 7},
      {"too long", {{Bytes(360, 0x55)}, {hex("55 55 7e"), 150ms}}, 2},
      {"another code after a step that nobody waits for", {{frame(hex("d0 da 00"))}}, 0},
  };
  for (auto& row : rows) {
    late = LateModem();
    ASSERT_EQ(zop_open(DEVICE), 0u);
    late.latency = 100ms;
    late.spoilt = row.answer;
    if (row.result == 0) zop_set_backup(3);
    uint32_t rac;
    EXPECT_EQ(zop_get_rac(&rac), row.result) << row.name;
    if (diag_status() == 0) {
      ASSERT_EQ(zop_open(DEVICE), 0u) << row.name;
    }
    int32_t rscp;
    (void)zop_get_rscp(&rscp);  // may read the rest of the damaged answer
    expect_own_answers(row.name);
    zop_close();
  }
}
