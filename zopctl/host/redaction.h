// Blanks what identifies a subscriber in a capture: PINs and unblocking keys, identities, numbers,
// messages, and the modem's memory.
#pragma once

#include "simulator/line/capture.h"

namespace zopctl {

class Redaction {
 public:
  // The packet with the digit 0 in place of secrets, so that lengths stay. A frame keeps a valid
  // check sequence; a damaged frame can't be understood and is blanked as a whole.
  sim::Bytes blank(const sim::CapturedPacket& packet);

 private:
  bool memory_was_asked_for_ = false;
};

}  // namespace zopctl
