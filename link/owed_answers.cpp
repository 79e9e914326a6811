// The list of owed answers.
#include "link/owed_answers.h"

#include <atomic>

enum { MAX_OWED = 8, HEAD_BYTES = 3 };

// A refusal is one of these codes followed by the request's bytes: bad command, bad parameter, bad
// length, bad mode, locked, security.
static constexpr uint8_t REFUSALS[] = {19, 20, 21, 24, 66, 71};

// Each head has its number of bytes in the top byte; 0 is a free place.
static constinit std::atomic<RequestHead> owed[MAX_OWED] = {};
static constinit std::atomic<uint32_t> next_place = 0;

RequestHead head_of(const uint8_t* request, uint32_t length) {
  uint32_t bytes = length < HEAD_BYTES ? length : uint32_t{HEAD_BYTES};
  RequestHead head = bytes << 24;
  for (uint32_t i = 0; i < bytes; ++i) head |= static_cast<uint32_t>(request[i]) << 8 * i;
  return head;
}

static bool begins_with(RequestHead head, const uint8_t* answer, uint32_t length) {
  uint32_t bytes = head >> 24;
  return length >= bytes && head_of(answer, bytes) == head;
}

bool is_answer_to(RequestHead head, const uint8_t* answer, uint32_t length) {
  if (begins_with(head, answer, length)) return true;
  for (uint8_t refusal : REFUSALS) {
    if (length > 1 && answer[0] == refusal) return begins_with(head, answer + 1, length - 1);
  }
  return false;
}

void note_owed(RequestHead head) {
  if (head != 0) owed[next_place++ % MAX_OWED] = head;
}

bool is_any_owed() {
  for (const auto& place : owed) {
    if (place.load(std::memory_order_relaxed) != 0) return true;
  }
  return false;
}

bool is_owed(RequestHead head) {
  for (const auto& place : owed) {
    if (head != 0 && place.load(std::memory_order_relaxed) == head) return true;
  }
  return false;
}

bool remove_owed(const uint8_t* answer, uint32_t length) {
  for (auto& place : owed) {
    RequestHead head = place;
    if (head == 0 || !is_answer_to(head, answer, length)) continue;
    if (place.compare_exchange_strong(head, 0)) return true;
  }
  return false;
}

void forget_owed() {
  for (auto& place : owed) place = 0;
}
