// One exchange on the diagnostic port: claim, request, answer, release. Every DIAG request of the
// module goes through here; the download protocols do not.
//
// An exchange that ends without its answer records it as owed (owed_answers.h), so that later
// exchanges can drop it when it arrives. While no answer is owed, nothing is dropped.
#pragma once

#include <stdint.h>

#include "link/serial_port.h"

struct Request {
  const uint8_t* bytes;
  uint32_t length;  // up to RESPONSE_SIZE
  bool leading_flag = false;
};

struct Response {
  uint8_t* bytes;       // RESPONSE_SIZE bytes: the payload, followed by zeros
  int32_t length = -1;  // of the payload; -1 if the frame was damaged
};

struct ExchangePolicy {
  bool (*claim)(const PortUse&);  // claim_port, or try_claim_port, which does not wait
  int attempts;                   // before a time-out is returned
  uint32_t silence_ms;            // the longest wait for a byte of the answer
  uint32_t total_ms;              // for the whole answer
  bool (*wanted)() = nullptr;     // false abandons the exchange within 0.1 s; null: never
  // Answers accepted besides its own: a late one to an earlier request of the same kind, and one
  // that echoes no owed request, because some modems answer with another command code.
  bool accepts_older = false;
  bool accepts_others = true;
};

enum : uint32_t { SILENCE_LIMIT_MS = 5000, ANSWER_LIMIT_MS = 15'000 };
inline constexpr ExchangePolicy COMMAND_POLICY = {claim_port, 3, SILENCE_LIMIT_MS, ANSWER_LIMIT_MS};
inline constexpr ExchangePolicy DIRECT_POLICY = {claim_port, 1, SILENCE_LIMIT_MS, ANSWER_LIMIT_MS};
inline constexpr ExchangePolicy PROBE_POLICY = {claim_port, 1, 1000, 3000, nullptr, true};

// Bytes received, including the closing flag; 0 if the request was written only in part;
// PORT_UNSENT, PORT_ERROR, PORT_TIMEOUT, PORT_BUSY or PORT_ABANDONED. 0 and all errors but the last
// two close the port.
int32_t line_exchange(const Request& request, const ExchangePolicy& policy, Response* response);

// Sends a request without waiting for its answer.
void send_unanswered(const Request& request);

// Waits until the modem has sent, or skipped, every answer that it owes, for at most 20 s. Does not
// close the port if the modem is silent.
void read_owed_answers();

// Read one answer to a request sent with diag_write, as received, into RAW_ANSWER_SIZE bytes.
// Return its length with the closing flag, PORT_TIMEOUT after 5 s (diag_read_wait_1sec: 1 s)
// without a byte, or PORT_ERROR. A failure closes the port. The module itself uses line_exchange
// instead.
int32_t diag_read(uint8_t* buffer);
int32_t diag_read_wait_1sec(uint8_t* buffer);
