// Whether a modem's memory is still what was saved of it: the last block is read again and compared
// before the module gets it. A modem that has crashed once more holds other memory.
#pragma once

#include <cstdint>

#include "simulator/line/frame.h"

namespace zopctl {

class BlockCheck {
 public:
  BlockCheck(uint32_t address, sim::Bytes saved) : address_(address), saved_(std::move(saved)) {}

  // Takes bytes from the modem. False if the block is another one.
  bool from_modem(sim::View piece);

  // The whole block has been compared.
  bool is_done() const { return compared_ == saved_.size(); }

 private:
  bool take_answer(sim::View answer);

  uint32_t address_;
  sim::Bytes saved_;
  size_t compared_ = 0;
  sim::Deframer answers_;
};

}  // namespace zopctl
