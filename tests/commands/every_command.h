// Every command of the library, called with words, and the list of them in commands.txt.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/words.h"

namespace test {

// Room for the outputs of any command.
struct Outputs {
  uint8_t bytes[2048];
  uint32_t size;  // in: the capacity, if a command needs one
  int32_t numbers[3];

  void clear();              // to bytes that no command writes
  std::string text() const;  // what a command has written: bytes, then numbers, all as signed
};

// Calls the command of this name. The words after it are its arguments: numbers, texts, and bytes
// as one word of hexadecimal digits or a text. A capacity may follow.
unsigned call_command(const Words& words, Outputs& out);

struct Command {
  std::string name;  // of the function, and what distinguishes its calls
  Words call;
  std::vector<uint8_t> request;
  std::string kind, status;
  std::vector<uint8_t> answer;  // after the request's header and a status of 0; empty: no query
  std::string output;

  unsigned run(Outputs& out) const { return call_command(call, out); }
};

const std::vector<Command>& every_command();

}  // namespace test
