// The exchange. Its buffers are on the caller's stack, because several exchanges may be in
// progress: alarm handlers make them too, and one may still be running after another thread
// reopened the port.
#include "link/exchange.h"

#include <string.h>
#include <unistd.h>

#include "link/frame_codec.h"
#include "link/owed_answers.h"

enum { MAX_EMPTY_READS = 16, RETRY_PAUSE_US = 2000 };

static constexpr ExchangePolicy MARK_POLICY = {
    claim_port, 1, SILENCE_LIMIT_MS, ANSWER_LIMIT_MS, nullptr, false, false};

// The modem has received part of a request: the next one starts with a flag, which ends it.
static constinit std::atomic<bool> request_was_cut = false;

// Part of an answer has been read: the next bytes may be the rest of it.
static constinit std::atomic<bool> answer_was_cut = false;

// ---- sending ----

static int32_t send(const PortUse& port, const Request& request) {
  uint8_t frame[2 * (RESPONSE_SIZE + 2) + 2];
  bool flag = request.leading_flag || request_was_cut;
  uint32_t length = encode_frame(frame, request.bytes, request.length, flag);
  uint32_t sent;
  int32_t written = write_port(port, frame, length, &sent);
  if (sent > 0) request_was_cut = sent < length;
  if (sent > 0 && sent < length) note_owed(head_of(request.bytes, request.length));  // a refusal
  return written == PORT_ERROR ? int32_t{PORT_UNSENT} : written;
}

// ---- receiving ----

// Number of bytes after unstuffing.
static int32_t plain_length(const uint8_t* raw, int32_t held) {
  int32_t plain = 0;
  for (int32_t i = 0; i < held; ++i, ++plain) {
    if (raw[i] == FRAME_ESCAPE) ++i;
  }
  return plain;
}

// Bytes that still belong in the answer. Stuffed bytes are counted only once they could matter.
static int32_t room_behind(const uint8_t* raw, int32_t held) {
  if (held < RESPONSE_SIZE) return RESPONSE_SIZE - held;
  return RESPONSE_SIZE - plain_length(raw, held);
}

// Length of the first complete frame, or 0. A frame ends where a read ends with a flag. While older
// answers are owed, one read may return several: then every flag ends a frame.
static int32_t frame_length(const uint8_t* raw, int32_t held) {
  if (held == 0) return 0;
  if (!is_any_owed()) return raw[held - 1] == FRAME_FLAG ? held : 0;
  const void* flag = memchr(raw, FRAME_FLAG, static_cast<size_t>(held));
  if (flag == nullptr) return 0;
  return static_cast<int32_t>(static_cast<const uint8_t*>(flag) - raw) + 1;
}

static void unframe(const uint8_t* raw, int32_t length, Response* response) {
  response->length = -1;
  int32_t payload;
  if (decode_frame(raw, static_cast<uint32_t>(length - 1), response->bytes, &payload) != 0) return;
  response->length = payload;
  memset(response->bytes + payload, 0, static_cast<size_t>(RESPONSE_SIZE - payload));
}

// Whether to accept the frame as the answer to own. If no answer is owed, every frame is accepted.
// An accepted frame that may not be this answer leaves it owed.
static bool is_accepted(RequestHead own, const ExchangePolicy& policy, const Response& response) {
  bool any_owed = is_any_owed();
  bool follows_a_cut = any_owed && answer_was_cut.exchange(false);
  if (response.length < 0) {
    if (!follows_a_cut && !policy.accepts_older) note_owed(own);
    return !follows_a_cut;
  }
  if (!any_owed && policy.accepts_others) return true;
  uint32_t length = static_cast<uint32_t>(response.length);
  if (is_answer_to(own, response.bytes, length)) {
    if (!is_owed(own)) forget_owed();
    return true;
  }
  if (remove_owed(response.bytes, length) || !policy.accepts_others) return false;
  note_owed(own);
  return true;
}

static uint32_t earlier(uint32_t a, uint32_t b) { return static_cast<int32_t>(a - b) < 0 ? a : b; }

// Reads until a frame is accepted as the answer to own. raw holds RAW_ANSWER_SIZE bytes.
static int32_t receive_raw(const PortUse& port, RequestHead own, const ExchangePolicy& policy,
                           uint8_t* raw, Response* response) {
  int32_t held = 0;
  int32_t result = 0;
  uint32_t end = monotonic_ms() + policy.total_ms;
  for (int empty_reads = 0; result >= 0;) {
    int32_t room = room_behind(raw, held);
    uint32_t until = earlier(monotonic_ms() + policy.silence_ms, end);
    result = PORT_ERROR;  // raw is full without a complete frame
    if (room > 0) result = read_port(port, raw + held, static_cast<uint32_t>(room), until);
    if (result == 0 && ++empty_reads == MAX_EMPTY_READS) result = PORT_ERROR;
    if (result > 0) held += result;
    while (int32_t length = frame_length(raw, held)) {
      unframe(raw, length, response);
      if (is_accepted(own, policy, *response)) return length;
      held -= length;
      memmove(raw, raw + length, static_cast<size_t>(held));
    }
  }
  bool is_full = room_behind(raw, held) <= 0;
  bool is_unplugged = result == PORT_ERROR && port.is_current() && !is_full;  // owes nothing
  if (!is_unplugged) note_owed(own);
  if (!is_unplugged && own != 0 && held > 0) answer_was_cut = true;
  return result;
}

static int32_t receive(const PortUse& port, RequestHead own, const ExchangePolicy& policy,
                       Response* response) {
  uint8_t raw[RAW_ANSWER_SIZE];
  return receive_raw(port, own, policy, raw, response);
}

// For callers that have sent with diag_write. Accepts any answer.
static int32_t read_raw(uint8_t* buffer, const ExchangePolicy& policy) {
  PortUse port;
  uint8_t payload[RESPONSE_SIZE] = {};
  Response response = {payload};
  int32_t received = receive_raw(port, 0, policy, buffer, &response);
  if (received <= 0) return fail_port(port, received);
  release_port(port);
  return received;
}

int32_t diag_read(uint8_t* buffer) { return read_raw(buffer, DIRECT_POLICY); }

int32_t diag_read_wait_1sec(uint8_t* buffer) { return read_raw(buffer, PROBE_POLICY); }

// ---- the exchange ----

// Makes sure that no older answer follows: sends a request of a kind that is not owed and that
// every modem answers or refuses (time stamp, build version or version), and waits for its answer.
// Results of send and receive.
static int32_t resynchronise(const PortUse& port, Response* response) {
  static constexpr uint8_t MARKS[] = {0x1D, 0x7C, 0x00};
  for (const uint8_t& mark : MARKS) {
    RequestHead head = head_of(&mark, 1);
    if (is_owed(head)) continue;
    int32_t sent = send(port, {&mark, 1});
    return sent > 0 ? receive(port, head, MARK_POLICY, response) : sent;
  }
  return PORT_TIMEOUT;  // the modem has not answered any of them
}

static int32_t transact(const PortUse& port, const Request& request, const ExchangePolicy& policy,
                        bool accepts_older, Response* response) {
  RequestHead head = head_of(request.bytes, request.length);
  int32_t result = port.is_wanted() ? 1 : int32_t{PORT_ABANDONED};
  if (result > 0 && is_owed(head) && !accepts_older) result = resynchronise(port, response);
  if (result > 0) result = send(port, request);
  if (result > 0) result = receive(port, head, policy, response);
  return result;
}

static int32_t attempt(const Request& request, const ExchangePolicy& policy, bool accepts_older,
                       Response* response) {
  PortUse port(policy.wanted);
  if (!policy.claim(port)) return policy.claim == try_claim_port ? PORT_BUSY : PORT_UNSENT;
  int32_t result = transact(port, request, policy, accepts_older, response);
  if (result <= 0 && result != PORT_ABANDONED) return fail_port(port, result);
  if (result == PORT_ABANDONED) discard_unsent(port);
  release_port(port);
  return result;
}

// A time-out closes the port, so a second attempt fails to write unless another thread has reopened
// the link. The answer to any of the attempts is accepted.
int32_t line_exchange(const Request& request, const ExchangePolicy& policy, Response* response) {
  for (int attempts = 1;; ++attempts) {
    int32_t received = attempt(request, policy, policy.accepts_older || attempts > 1, response);
    if (received != PORT_TIMEOUT || policy.attempts == 1) return received;
    usleep(RETRY_PAUSE_US);
    if (attempts == policy.attempts) return PORT_TIMEOUT;
  }
}

void send_unanswered(const Request& request) {
  PortUse port;
  if (!claim_port(port)) return;
  int32_t sent = send(port, request);
  if (sent <= 0) {
    fail_port(port, sent);
    return;
  }
  note_owed(head_of(request.bytes, request.length));
  release_port(port);
}

void read_owed_answers() {
  PortUse port;
  if (!claim_port(port)) return;
  uint8_t bytes[RESPONSE_SIZE] = {};
  Response response = {bytes};
  (void)resynchronise(port, &response);  // answers still owed are dropped by later exchanges
  release_port(port);
}
