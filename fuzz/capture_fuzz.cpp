// Reads arbitrary files as captures, and replays them.
#include "fuzz/fuzz.h"
#include "simulator/replay.h"

void fuzz(std::span<const uint8_t> input) {
  try {
    std::vector<sim::CapturedPacket> packets = sim::parse_capture(input, "fuzz");
    std::vector<sim::Bytes> requests;
    for (const auto& packet : packets) {
      if (packet.direction == sim::CapturedPacket::TO_MODEM) requests.push_back(packet.bytes);
    }
    sim::Replay modem(std::move(packets), [](const std::string&) {});
    for (const sim::Bytes& request : requests) modem.receive(request, sim::Time{0});
    for (int i = 0; i < 1000 && modem.take_output(sim::Time::max()); ++i) {
    }
  } catch (const sim::CaptureError&) {
  }
}
