// Blanking what a capture would tell of a subscriber: PINs and unblocking keys, identities,
// numbers, messages, and the modem's memory.
#pragma once

#include "simulator/line/capture.h"

namespace zopctl {

class Redaction {
 public:
  // The packet with zeros in the place of secrets: the digit, so that lengths stay. A frame keeps a
  // good check sequence; what is no good frame can't be told apart and loses all.
  sim::Bytes blank(const sim::CapturedPacket& packet);

 private:
  bool memory_was_asked_for_ = false;
};

}  // namespace zopctl
