// Strict: accepts nothing before a hello, and only writes that continue the one before.
#include "simulator/download/programmer.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace sim {

enum : uint8_t { HELLO = 0x02, WRITTEN = 0x08, ERROR = 0x0D, CLOSED = 0x16, SECURITY = 0x18 };
enum : uint8_t { PARTITION = 0x1A, OPENED = 0x1C };
enum : uint8_t { ACCEPTED = 0, DIFFERS = 1, REFUSED = 2 };
constexpr uint8_t FEATURES = 0x09;
constexpr uint8_t UNTRUSTED = 0x01;
constexpr size_t MAX_STREAM_WRITE = 2048;
constexpr uint8_t TYPES[] = {FIRMWARE_TYPE, 15, 16, 17};  // in the order of their bits

Bytes Programmer::refusal(uint8_t code) { return {ERROR, code, 0, 0, 0}; }

static bool is_hello(View packet) {
  constexpr std::string_view TEXT = "QCOM fast download protocol host";
  return packet.size() == 36 && std::equal(TEXT.begin(), TEXT.end(), packet.begin() + 1) &&
         packet[33] == 3 && packet[34] == 3 && packet[35] == FEATURES;
}

static Bytes hello_answer() {
  constexpr std::string_view TEXT = "QCOM fast download protocol targ";
  Bytes answer = {HELLO};
  std::ranges::copy(TEXT, std::back_inserter(answer));
  // Versions, largest write, flash base, identifier, window, sectors, features.
  constexpr uint8_t REST[] = {3, 3,   0,   8,   0,   0,  0, 0, 0, 0,
                              4, 'Q', 'S', 'C', '6', 30, 0, 0, 0, FEATURES};
  std::ranges::copy(REST, std::back_inserter(answer));
  return answer;
}

Bytes Programmer::take_partition(View packet) {
  if (packet.size() < 2) return refusal(3);
  View table = packet.subspan(2);
  bool same = std::ranges::equal(table, partition);
  bool overrides = packet[1] != 0;
  if (!same && !overrides) return {PARTITION, DIFFERS};
  if (overrides) {
    erased = true;
    missing = ALL_IMAGES;
  }
  partition.assign(table.begin(), table.end());
  return {PARTITION, ACCEPTED};
}

static int bit_of(int type) { return 1 << (std::ranges::find(TYPES, type) - std::begin(TYPES)); }

Bytes Programmer::open(View packet) {
  bool known = packet.size() == 2 && std::ranges::find(TYPES, packet[1]) != std::end(TYPES);
  if (!known) return {OPENED, REFUSED};
  open_ = packet[1];
  images[open_].clear();
  missing |= bit_of(open_);
  return {OPENED, ACCEPTED};
}

Bytes Programmer::close() {
  if (open_ >= 0 && !images[open_].empty()) missing &= ~bit_of(open_);
  open_ = -1;
  return {CLOSED};
}

Bytes Programmer::write(View packet) {
  if (open_ < 0 || packet.size() <= 5 || packet.size() - 5 > MAX_STREAM_WRITE) return refusal(4);
  Bytes& image = images[open_];
  uint32_t address = packet[1] | static_cast<uint32_t>(packet[2]) << 8 |
                     static_cast<uint32_t>(packet[3]) << 16 |
                     static_cast<uint32_t>(packet[4]) << 24;
  if (address != image.size()) return refusal(5);
  image.insert(image.end(), packet.begin() + 5, packet.end());
  return {WRITTEN, packet[1], packet[2], packet[3], packet[4]};
}

Bytes Programmer::answer(View packet) {
  if (packet.empty()) return {};
  if (packet[0] == 0x01) greeted_ = is_hello(packet);
  if (!greeted_) return refusal(6);
  switch (packet[0]) {
    case 0x01:
      return hello_answer();
    case 0x07:
      return write(packet);
    case 0x0B:
      reset = true;
      return {};
    case 0x15:
      return close();
    case 0x17:
      return packet.size() == 2 && packet[1] == UNTRUSTED ? Bytes{SECURITY} : refusal(7);
    case 0x19:
      return take_partition(packet);
    case 0x1B:
      return open(packet);
    default:
      return refusal(6);
  }
}

}  // namespace sim
