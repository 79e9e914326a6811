// What the modem puts on the line, and how a fault damages one answer.
#pragma once

#include <vector>

#include "simulator/line/frame.h"
#include "simulator/scenario/faults.h"

namespace sim {

// What the modem does on the line.
struct Output {
  enum Kind { SENDS, HANGS_UP, COMES_BACK };
  Time at;
  Kind kind;
  Bytes bytes;
};

// What becomes of an answer whose request the fault hits. For OTHER, payload is the other answer.
std::vector<Output> damaged(const Fault& fault, Bytes payload, Time now);

}  // namespace sim
