// Blanks what identifies a person or is a secret in a capture: PINs and keys, identities, numbers,
// messages, profiles, the place, NV items and the modem's memory; and all that is not understood.
#pragma once

#include "simulator/line/capture.h"

namespace zopctl {

class Redaction {
 public:
  // The packet with the digit 0 in place of secrets, so that lengths stay. A frame keeps a valid
  // check sequence; a damaged frame can't be understood and is blanked as a whole.
  sim::Bytes blank(const sim::CapturedPacket& packet);

 private:
  bool downloads_ = false;  // the last request was one of the boot ROM or the programmer
};

}  // namespace zopctl
