// Answers that are owed: which arriving answer counts as which, and how many are remembered.
#include "link/owed_answers.h"

#include <gtest/gtest.h>

#include "tests/support/world.h"

using test::Bytes;
using test::hex;

static RequestHead head(const char* request) {
  Bytes bytes = hex(request);
  return head_of(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

TEST(OwedAnswers, an_echo_or_a_refusal_of_the_request_is_its_answer) {
  struct {
    const char *request, *answer;
    bool fits;
  } rows[] = {
      {"cf 2f 00 01", "cf 2f 00 00", true},
      {"cf 2f 00 01", "cf 2f", false},
      {"cf 2f 00 01", "cf 30 00", false},
      {"cf 2f 00 01", "cf 2f 01", false},
      {"cf 2f 00", "13 cf 2f 00", true},
      {"cf 2f 00", "14 cf 2f 00", true},
      {"cf 2f 00", "15 cf 2f 00", true},
      {"cf 2f 00", "18 cf 2f 00", true},
      {"cf 2f 00", "42 cf 2f 00", true},
      {"cf 2f 00", "47 cf 2f 00", true},
      {"cf 2f 00", "12 cf 2f 00", false},
      {"cf 2f 00", "13 cf 2f", false},
      {"1d", "1d 00", true},
      {"1d", "13 1d", true},
      {"1d", "13", false},
      {"1d", "13 1e", false},
  };
  for (auto& row : rows) {
    forget_owed();
    note_owed(head(row.request));
    Bytes answer = hex(row.answer);
    EXPECT_EQ(remove_owed(answer.data(), static_cast<uint32_t>(answer.size())), row.fits)
        << row.answer;
    EXPECT_EQ(is_any_owed(), !row.fits) << row.answer;
    EXPECT_EQ(is_owed(head(row.request)), !row.fits) << row.answer;
  }
}

TEST(OwedAnswers, the_last_eight_are_remembered) {
  forget_owed();
  note_owed(0);
  EXPECT_FALSE(is_any_owed());
  const char* requests[] = {"00", "01", "02", "03", "04", "05", "06", "07", "08"};
  for (const char* request : requests) note_owed(head(request));
  for (const char* request : requests) EXPECT_EQ(is_owed(head(request)), request != requests[0]);
  forget_owed();
  EXPECT_FALSE(is_any_owed());
}
