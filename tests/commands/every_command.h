// Every command of the library as one list, for tests that apply to all of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace test {

// Room for the outputs of any command.
struct Outputs {
  uint8_t bytes[2048];
  uint32_t size;  // in: the capacity, if a command needs one
  int32_t a, b, c;
};

struct Command {
  const char* name;  // of the function, and what distinguishes its calls
  unsigned (*run)(Outputs& out);
  const char* request;  // payload of its first frame, hex; the rest of a longer one is zeros
  size_t request_size;
  enum Kind {
    PLAIN,     // 7 for an answer that can't be unframed
    CLEARS,    // the same, and clears its output even if the exchange fails
    DIRECT,    // without retry
    BLIND,     // 0 for any answer
    COMPARES,  // compares the answer's header with the request's
  } kind = PLAIN;
  enum Status { NONE, BYTE3, WORD, INVERTED, NV, SIM_RESULT } status = NONE;
  std::string answer = "";  // hex, after the request's header and a status of 0
  std::string shown = "";   // its output: bytes as hex, then numbers, unsigned ones as signed
};

const std::vector<Command>& every_command();

}  // namespace test
