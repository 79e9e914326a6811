// The boot ROM answers a read with its address, its length and as many bytes as it likes.
#include "zopctl/firmware/block_check.h"

#include <algorithm>

namespace zopctl {

enum { ADDRESS = 1, DATA = 7 };  // in the answer to a read
constexpr uint8_t BLOCK_ANSWER = 0x13;

static uint32_t word_at(sim::View p, size_t at) {
  uint32_t word = 0;
  for (size_t i = 0; i < 4; ++i) word = word << 8 | p[at + i];
  return word;
}

bool BlockCheck::take_answer(sim::View answer) {
  if (answer.size() <= DATA || answer[0] != BLOCK_ANSWER) return true;
  uint32_t start = word_at(answer, ADDRESS) - address_;
  if (start != compared_ || is_done()) return true;  // an answer that the module ignores too
  sim::View saved = sim::View(saved_).subspan(start);
  size_t size = std::min(saved.size(), answer.size() - DATA);
  compared_ += size;
  return std::ranges::equal(saved.first(size), answer.subspan(DATA, size));
}

bool BlockCheck::from_modem(sim::View piece) {
  bool same = true;
  for (uint8_t byte : piece) {
    if (answers_.take(byte) != sim::Deframer::GOOD) continue;
    same = take_answer(answers_.payload()) && same;
  }
  return same;
}

}  // namespace zopctl
