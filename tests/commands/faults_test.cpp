// Every command: its request, its output, and for every line fault the caller's result, unchanged
// outputs, and a link that works again. Sanitizers check that it touches only its own memory.

#include <cstring>

#include "commands/exchange.h"
#include "tests/commands/every_command.h"
#include "tests/support/link_test.h"

using namespace test;

class EveryCommand : public LinkTest {
 protected:
  static void reopen() {
    diag_close();
    fresh_link();
    diag_open(DEVICE);
  }

  static Bytes request_of(const Command& command) {
    Bytes request = hex(command.request);
    request.resize(command.request_size);
    return request;
  }
  // An answer with the request's header, long enough for any command.
  static Bytes answer_of(const Command& command, size_t size = 353) {
    Bytes answer = request_of(command);
    answer.resize(size);
    std::fill(answer.begin() + std::min<ptrdiff_t>(3, static_cast<ptrdiff_t>(size)), answer.end(),
              uint8_t{0});
    if (command.status == Command::INVERTED && size > 3) answer[3] = 1;
    if (size > 5) answer[5] = 1;  // "yes", or a count
    return answer;
  }
  unsigned run(const Command& command, Answer answer) {
    reopen();
    modem.requests.clear();
    // Commands of several exchanges get the same answer each time.
    modem.answers = std::deque<Answer>(8, answer);
    memset(&out, 0xEE, sizeof out);
    out.size = sizeof out.bytes;
    return command.run(out);
  }
  // The output: what has replaced 0xEE.
  std::string shown() const {
    auto end = std::find_if(std::rbegin(out.bytes), std::rend(out.bytes),
                            [](uint8_t byte) { return byte != 0xEE; });
    std::string text = to_hex({out.bytes, end.base()});
    for (int32_t value : {out.a, out.b, out.c}) {
      if (value == static_cast<int32_t>(0xEEEEEEEE)) continue;
      text += (text.empty() ? "" : " ") + std::to_string(value);
    }
    return text;
  }
  void expect_failure(const Command& command, unsigned result, unsigned expected,
                      const std::string& fault) {
    if (command.kind == Command::BLIND && expected == ZOP_ERR_BAD_RESPONSE) expected = ZOP_SUCCESS;
    EXPECT_EQ(result, expected) << command.name << ": " << fault;
    if (expected == ZOP_SUCCESS || command.kind == Command::CLEARS) return;
    EXPECT_EQ(shown(), "") << command.name << ": " << fault;
  }

  Outputs out;
};

TEST_F(EveryCommand, sends_its_request_and_shows_its_answer) {
  EXPECT_GT(every_command().size(), 85u);
  for (const Command& command : every_command()) {
    bool is_query = !command.answer.empty();
    Bytes answer = hex(std::string(command.request) + " 00 00 " + command.answer);
    unsigned result = run(command, {{frame(is_query ? answer : answer_of(command))}});
    EXPECT_EQ(result, ZOP_SUCCESS) << command.name;
    ASSERT_FALSE(modem.requests.empty()) << command.name;
    EXPECT_EQ(to_hex(unframe(modem.requests[0])), to_hex(request_of(command))) << command.name;
    if (!is_query) continue;
    EXPECT_EQ(modem.requests.size(), 1u) << command.name;
    EXPECT_EQ(shown(), command.shown) << command.name;
    EXPECT_EQ(out.size, sizeof out.bytes) << command.name;
  }
}

TEST_F(EveryCommand, looks_at_its_status_and_no_other) {
  for (const Command& command : every_command()) {
    for (unsigned code : {0x0001u, 0x0100u}) {
      Bytes answer = answer_of(command);
      size_t at = command.status == Command::NV ? 131 : 3;
      answer[at] = static_cast<uint8_t>(code);
      answer[at + 1] = static_cast<uint8_t>(code >> 8);
      bool low = code == 1;
      bool fails = (command.status == Command::BYTE3 && low) || command.status == Command::WORD ||
                   command.status == Command::NV || (command.status == Command::INVERTED && !low);
      unsigned result = run(command, {{frame(answer)}});
      expect_failure(command, result, fails ? ZOP_ERR_MODEM_FAILURE : ZOP_SUCCESS,
                     "status " + std::to_string(code));
      if (command.status != Command::SIM_RESULT) continue;
      EXPECT_EQ(out.a, 1) << command.name;
    }
  }
}

TEST_F(EveryCommand, refuses_a_damaged_answer) {
  for (const Command& command : every_command()) {
    Bytes wire = frame(answer_of(command));
    wire[2] ^= 1;
    expect_failure(command, run(command, {{wire}}), ZOP_ERR_BAD_RESPONSE, "bad check");
    EXPECT_EQ(diag_status(), 1) << command.name;
    for (const char* shortest : {"7e", "cf 7e", "7d 7e"}) {
      expect_failure(command, run(command, {{hex(shortest)}}), ZOP_ERR_BAD_RESPONSE, shortest);
    }
  }
}

// An answer cut short anywhere, with or without a flag and a good check: no command may read
// outside its buffer or show bytes of another answer.
TEST_F(EveryCommand, survives_an_answer_of_any_length) {
  for (const Command& command : every_command()) {
    for (size_t size = 1; size <= 353; ++size) {
      unsigned result = run(command, {{frame(answer_of(command, std::max<size_t>(size, 4)))}});
      EXPECT_TRUE(result == ZOP_SUCCESS || result == ZOP_ERR_MODEM_FAILURE ||
                  result == ZOP_ERR_HOME_NETWORK_REFUSED)
          << command.name << " " << size;
      Bytes full = frame(answer_of(command));
      Bytes cut(full.begin(), full.begin() + static_cast<ptrdiff_t>(size));
      cut.push_back(0x7E);
      if (!unframe(cut).empty()) continue;  // one cut in 65,536 passes the check by chance
      expect_failure(command, run(command, {{cut}}), ZOP_ERR_BAD_RESPONSE,
                     "cut at " + std::to_string(size));
    }
  }
}

TEST_F(EveryCommand, sends_nothing_on_a_closed_link) {
  for (const Command& command : every_command()) {
    diag_close();
    memset(&out, 0xEE, sizeof out);
    out.size = sizeof out.bytes;
    EXPECT_EQ(command.run(out), ZOP_ERR_NOT_OPEN) << command.name;
  }
  EXPECT_TRUE(world.written.empty());
}
