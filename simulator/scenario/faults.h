// Faults of the line and the modem, switched per request or by chance.
//
// Textual form: KIND[=VALUE][:OPTION=VALUE,...], for example "silence:request=rssi,count=1",
// "delay=6000", "cut=3:chance=0.1", "flip=7:at=12".
#pragma once

#include <optional>
#include <random>
#include <string>
#include <vector>

#include "simulator/requests/requests.h"

namespace sim {

enum class FaultKind {
  SILENCE,     // no answer
  DELAY,       // VALUE milliseconds late from byte AT on
  BAD_CRC,     // wrong check bytes
  CUT,         // only the first VALUE bytes of the frame
  SHORTEN,     // only the first VALUE bytes of the answer, with good check bytes
  PIECES,      // VALUE bytes at a time, 10 ms apart
  WRONG_ECHO,  // byte VALUE of the answer's header differs
  EXTRA,       // VALUE bytes of noise in front of the frame
  INSERT,      // a byte VALUE in front of byte AT
  LOSE,        // byte number VALUE is missing
  HANG_UP,     // the device goes away after VALUE bytes of the frame, for BACK milliseconds
  DUPLICATE,   // the frame again, VALUE milliseconds later; 0: both in one piece
  OTHER,       // the answer to the vendor request with subcommand VALUE
  ERROR,       // error answer VALUE (19, 20, 21, 24, 66, 71) and the request
  STATUS,      // command status VALUE
  FLIP,        // bit VALUE of the frame flipped, counted from byte AT
};

struct Fault {
  FaultKind kind = FaultKind::SILENCE;
  int value = 0;
  std::string request;  // name of the request, empty for all
  int at = 0;           // byte of the frame, its stuffing counted
  int back = -1;        // the device returns after this many ms, -1 never
  int skip = 0;         // matching requests left alone first
  int count = -1;       // then this many are hit, -1 all
  double chance = 1.0;
};

// A fault from its textual form. Throws std::invalid_argument with the reason.
Fault parse_fault(const std::string& text);

// The switches and their remaining counts.
class Faults {
 public:
  explicit Faults(std::vector<Fault> faults = {}, unsigned seed = 1)
      : faults_(std::move(faults)), random_(seed) {}
  void add(Fault fault) { faults_.push_back(std::move(fault)); }

  // The fault that hits this request, if one does.
  std::optional<Fault> strike(const std::string& request);

 private:
  std::vector<Fault> faults_;
  std::mt19937 random_;
};

const char* fault_name(FaultKind kind);

}  // namespace sim
