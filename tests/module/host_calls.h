// What a host can call, as commands of the transcripts.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "tests/support/words.h"

namespace test {

using Function = std::function<std::string(const Words& words)>;

// A command that prints nothing.
template <class Step>
static Function step(Step step) {
  return [step](const Words& words) {
    step(words);
    return std::string();
  };
}

enum { UNTOUCHED = 4711 };     // a value before a call
std::string shown(int value);  // " 5", or nothing if it was not touched

// The calls by name: each prints its result and, as far as they were written, its outputs.
const std::map<std::string, Function>& host_calls();

// A command of the library: its result, its outputs, and what it prints itself.
std::string library_call(const Words& command);

}  // namespace test
