// One exchange on the diagnostic port: claim, request, answer, release. All that speaks DIAG to the
// modem goes through here; the download protocols have frames of their own.
//
// An exchange ends with its answer, or notes that the modem owes it (owed_answers.h): the next one
// drops what comes late and gets its own. On a line that owes nothing nothing is dropped.
#pragma once

#include <stdint.h>

#include "link/serial_port.h"

struct Request {
  const uint8_t* bytes;
  uint32_t length;  // up to RESPONSE_SIZE
  bool leading_flag = false;
};

struct Response {
  uint8_t* bytes;       // RESPONSE_SIZE: the payload, and zeros behind it
  int32_t length = -1;  // of the payload; -1 when what came is no good frame
};

struct ExchangePolicy {
  bool (*claim)(const PortUse&);  // claim_port, or try_claim_port, which does not wait
  int attempts;                   // after a time-out
  uint32_t silence_ms;            // the longest wait for a byte of the answer
  uint32_t total_ms;              // for the whole answer
  bool (*wanted)() = nullptr;     // false abandons the exchange within 0.1 s; null: always true
  // Whose answer will do besides its own: the late one of an earlier request of the same kind; and,
  // as some modems answer under another code, one that echoes no request that is owed.
  bool accepts_older = false;
  bool accepts_others = true;
};

inline constexpr ExchangePolicy COMMAND_POLICY = {claim_port, 3, 5000, 15'000};
inline constexpr ExchangePolicy DIRECT_POLICY = {claim_port, 1, 5000, 15'000};
inline constexpr ExchangePolicy PROBE_POLICY = {claim_port, 1, 1000, 3000, nullptr, true};

// Bytes received, the closing flag included; 0 when the request was not taken whole; PORT_UNSENT,
// PORT_ERROR, PORT_TIMEOUT, PORT_BUSY or PORT_ABANDONED. All but the last two close the port.
int32_t line_exchange(const Request& request, const ExchangePolicy& policy, Response* response);

// Sends a request whose answer, if there is one, nobody waits for.
void send_unanswered(const Request& request);

// Waits until the modem has given, or skipped, all the answers that it owes: 20 s at the most. A
// modem that gives no answer at all is left as it is.
void read_owed_answers();

// One answer as it came over the wire, into RAW_ANSWER_SIZE bytes, for whoever has sent with
// diag_write: its length with the closing flag, PORT_TIMEOUT after 5 s (1 s for the second) without
// a byte, or PORT_ERROR. A failure closes the port. The module itself uses line_exchange.
int32_t diag_read(uint8_t* buffer);
int32_t diag_read_wait_1sec(uint8_t* buffer);
