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

  // An answer with the request's header, long enough for any command.
  static Bytes answer_of(const Command& command, size_t size = 353) {
    Bytes answer = command.request;
    answer.resize(size);
    std::fill(answer.begin() + std::min<ptrdiff_t>(3, static_cast<ptrdiff_t>(size)), answer.end(),
              uint8_t{0});
    if (command.status == "inverted" && size > 3) answer[3] = 1;
    if (size > 5) answer[5] = 1;  // "yes", or a count
    return answer;
  }
  unsigned run(const Command& command, Answer answer) {
    reopen();
    modem.requests.clear();
    // Commands of several exchanges get the same answer each time.
    modem.answers = std::deque<Answer>(8, answer);
    out.clear();
    return command.run(out);
  }
  void expect_failure(const Command& command, unsigned result, unsigned expected,
                      const std::string& fault) {
    if (command.kind == "blind" && expected == ZOP_ERR_BAD_RESPONSE) expected = ZOP_SUCCESS;
    EXPECT_EQ(result, expected) << command.name << ": " << fault;
    if (expected == ZOP_SUCCESS || command.kind == "clears") return;
    EXPECT_EQ(out.text(), "") << command.name << ": " << fault;
  }

  Outputs out;
};

TEST_F(EveryCommand, sends_its_request_and_shows_its_answer) {
  EXPECT_GT(every_command().size(), 85u);
  for (const Command& command : every_command()) {
    bool is_query = !command.answer.empty();
    Bytes answer = command.request;
    answer.resize(5);
    answer.insert(answer.end(), command.answer.begin(), command.answer.end());
    unsigned result = run(command, {{frame(is_query ? answer : answer_of(command))}});
    EXPECT_EQ(result, ZOP_SUCCESS) << command.name;
    ASSERT_FALSE(modem.requests.empty()) << command.name;
    EXPECT_EQ(to_hex(unframe(modem.requests[0])), to_hex(command.request)) << command.name;
    if (!is_query) continue;
    EXPECT_EQ(modem.requests.size(), 1u) << command.name;
    EXPECT_EQ(out.text(), command.output) << command.name;
    EXPECT_EQ(out.size, sizeof out.bytes) << command.name;
  }
}

TEST_F(EveryCommand, looks_at_its_status_and_no_other) {
  for (const Command& command : every_command()) {
    for (unsigned code : {0x0001u, 0x0100u}) {
      Bytes answer = answer_of(command);
      size_t at = command.status == "nv" ? 131 : 3;
      answer[at] = static_cast<uint8_t>(code);
      answer[at + 1] = static_cast<uint8_t>(code >> 8);
      bool low = code == 1;
      bool fails = (command.status == "byte3" && low) || command.status == "word" ||
                   command.status == "nv" || (command.status == "inverted" && !low);
      unsigned result = run(command, {{frame(answer)}});
      expect_failure(command, result, fails ? ZOP_ERR_MODEM_FAILURE : ZOP_SUCCESS,
                     "status " + std::to_string(code));
      if (command.status != "sim_result") continue;
      EXPECT_EQ(out.numbers[0], 1) << command.name;
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
    for (size_t size = 1; size <= 353; size += size < 40 ? 1 : 13) {
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
    out.clear();
    EXPECT_EQ(command.run(out), ZOP_ERR_NOT_OPEN) << command.name;
  }
  EXPECT_TRUE(world.written.empty());
}
