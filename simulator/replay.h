// A modem that answers as a captured one did.
//
// Each request is looked up in the capture: the same bytes, or else the same command. A repeated
// request finds the next such one, and after the last one the first again. The replayed modem sends
// what the captured one sent, after the same time: late or damaged answers, none, a hang-up. A
// request that is not in the capture is refused.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "simulator/line/capture.h"
#include "simulator/modem.h"

namespace sim {

class Replay {
 public:
  // Packets as from load_capture. Throws CaptureError when there is no request among them.
  Replay(std::vector<CapturedPacket> packets, Modem::Trace trace);

  // As in Modem.
  void receive(View bytes, Time now);
  std::optional<Time> next_due() const;
  std::optional<Output> take_output(Time now);

 private:
  // A request, and what followed it up to the next one.
  struct Exchange {
    Bytes request;
    struct Answer {
      Time after;
      Bytes bytes;  // none: the device goes away
    };
    std::vector<Answer> answers;
    unsigned played = 0;
  };
  const Exchange* find(View request);
  void answer(View request, Time now);
  void refuse(View request, Time now);
  void put(Output output);

  std::vector<Exchange> exchanges_;
  Modem::Trace trace_;
  Bytes pending_;  // of an incomplete request
  std::deque<Output> output_;
};

}  // namespace sim
