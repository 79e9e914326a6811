// A modem that answers as a captured one did.
//
// Each request is looked for in the capture: the same bytes, or else the same command; asked again,
// it finds the next such request, and after the last one the first. What the captured modem sent
// then, the replayed one sends, after the same time: late answers, damaged ones, none at all, a
// hang-up. A request that the capture does not hold is refused.
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
  // Packets of load_capture. Throws CaptureError when no request is among them.
  Replay(std::vector<CapturedPacket> packets, Modem::Trace trace);

  // As those of Modem.
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
  Bytes pending_;  // of a request
  std::deque<Output> output_;
};

}  // namespace sim
