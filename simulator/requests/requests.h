// The requests that the modem knows: one table, one row per request.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "simulator/model/model.h"

namespace sim {

using Time = std::chrono::microseconds;  // since the modem was started

// Error answers: the code, then the request's bytes.
enum ErrorAnswer : uint8_t {
  BAD_COMMAND = 19,
  BAD_PARAMETER = 20,
  BAD_LENGTH = 21,
  BAD_MODE = 24,
  LOCKED = 66,
  SECURITY = 71,
};

// The error in words, "bad command"; null if an answer that begins with this byte is no refusal.
const char* error_text(uint8_t code);

constexpr uint8_t VENDOR = 0xCF;

// Builds an answer, field by field, little-endian.
class Answer {
 public:
  Answer& u8(int value);
  Answer& u16(int value);
  Answer& u32(int64_t value);
  Answer& text(const std::string& text, size_t width);  // padded with zeros, cut to width
  Answer& zeros(size_t count);
  Answer& bytes(View bytes, size_t width);
  void status(int value);  // the 16-bit status of a vendor answer
  void refuse(ErrorAnswer why) { refusal = why; }

  Bytes content;
  std::optional<ErrorAnswer> refusal;
  enum { STAYS, RESTARTS, RESTARTS_WITHOUT_ANSWER, ENTERS_BOOT_ROM } then = STAYS;
};

// A received request, and the state of the modem.
struct Incoming {
  Model& model;
  View request;
  Time now;
};

struct Request {
  int command;
  int subcommand;    // ANY for requests without one
  const char* name;  // in traces and fault switches
  size_t length;     // of the request; others are refused
  void (*answer)(const Incoming&, Answer&);
};
constexpr int ANY = -1;

// The row of a request, or null for one that the modem does not know.
const Request* find_request(View request);

// Every request as "diag CF 20 NAME": command and subcommand (-- without one) in hexadecimal.
std::vector<std::string> describe_requests();

// The row of that name, or null.
const Request* find_request_named(const std::string& name);

// An error answer.
Bytes refusal(int code, View request);

// The characters of a field before the zeros that fill it.
std::string characters(View field);

// The answer to a request, and what the modem does afterwards.
Answer answer_to(const Incoming& in);

}  // namespace sim
