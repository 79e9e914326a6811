// A modem in its download modes at the other end of the World's line, with faults by packet.
#pragma once

#include <algorithm>

#include "simulator/boot_rom.h"
#include "simulator/programmer.h"
#include "tests/support/far_ends.h"

namespace test {

// What happens to the reply of a packet.
struct DownloadFault {
  enum Kind { NO_REPLY, BAD_CHECK, WRONG_CODE, WRONG_ADDRESS, REFUSED, UNPLUG } kind;
  uint8_t code;   // of the packet
  int skip = 0;   // so many in peace first
  int count = 1;  // then so many are hit
};

class DownloadModem : public FarEnd {
 public:
  sim::BootRom rom;
  sim::Programmer programmer;
  bool programmer_runs = false;
  std::vector<DownloadFault> faults;
  std::vector<uint8_t> codes;  // of the packets that came; a lone flag as 0x7E
  bool unplugged = false;

  void receive(std::span<const uint8_t> bytes, Time) override {
    for (uint8_t byte : bytes) {
      if (byte != 0x7E) {
        frame_.push_back(byte);
        continue;
      }
      if (!frame_.empty())
        packet();
      else if (bytes.size() == 1)
        lone_flag();
      frame_.clear();
    }
  }
  std::optional<Time> next_due() const override {
    return replies_.empty() ? std::nullopt : std::optional<Time>(0);
  }
  Bytes take(Time) override {
    if (replies_.empty()) return {};
    Bytes reply = std::move(replies_.front());
    replies_.pop_front();
    return reply;
  }
  bool gone(Time) override { return unplugged; }

 private:
  void packet() {
    frame_.push_back(0x7E);
    Bytes payload = unframe(frame_);
    if (payload.empty()) return;
    codes.push_back(payload[0]);
    Bytes answer = programmer_runs ? programmer.answer(payload) : rom.answer(payload);
    if (rom.started) programmer_runs = true;
    lost_ = answer;
    if (!answer.empty()) reply(payload[0], answer);
  }
  // The programmer says again what got lost.
  void lone_flag() {
    codes.push_back(0x7E);
    if (programmer_runs && !lost_.empty()) replies_.push_back(wire(lost_));
  }
  void reply(uint8_t code, Bytes answer) {
    for (DownloadFault& fault : faults) {
      if (fault.code != code || fault.count == 0) continue;
      if (fault.skip-- > 0) continue;
      --fault.count;
      switch (fault.kind) {
        case DownloadFault::NO_REPLY:
          return;
        case DownloadFault::BAD_CHECK: {
          Bytes bytes = wire(answer);
          bytes[1] ^= 0x01;
          return replies_.push_back(bytes);
        }
        case DownloadFault::WRONG_CODE:
          answer[0] ^= 0x40;
          break;
        case DownloadFault::WRONG_ADDRESS:
          if (answer.size() > 2) answer[2] ^= 0x01;
          break;
        case DownloadFault::REFUSED:
          answer.resize(2);
          answer[1] = 1;
          break;
        case DownloadFault::UNPLUG:
          unplugged = true;
          return;
      }
      break;
    }
    replies_.push_back(wire(answer));
  }
  static Bytes wire(const Bytes& payload) {
    Bytes bytes = frame(payload);
    bytes.insert(bytes.begin(), 0x7E);
    return bytes;
  }
  Bytes frame_, lost_;
  std::deque<Bytes> replies_;
};

}  // namespace test
