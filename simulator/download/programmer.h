// The programmer in the modem's RAM (streaming download): takes the partition table, and the images
// one after the other. Multi-byte fields are little-endian.
#pragma once

#include <map>

#include "simulator/line/frame.h"

namespace sim {

// The images of the flash, a bit each.
enum FlashImage : int { FIRMWARE = 1, DBL = 2, OSBL = 4, FSBL = 8, ALL_IMAGES = 15 };
constexpr int FIRMWARE_TYPE = 5;

class Programmer {
 public:
  // The answer to a packet; empty when there is none.
  Bytes answer(View packet);
  static Bytes refusal(uint8_t code);

  Bytes partition;              // of the modem; a different table needs the override flag
  std::map<int, Bytes> images;  // by type, as they were written
  bool erased = false;          // by an override
  int missing = 0;              // images that the flash lacks, from their open to their close
  bool reset = false;           // the modem restarts

 private:
  Bytes take_partition(View packet);
  Bytes open(View packet);
  Bytes close();
  Bytes write(View packet);
  bool greeted_ = false;
  int open_ = -1;  // type of the image that is open
};

}  // namespace sim
