// A fleet of simulated devices that log their reports, with troubles of which the truth is known:
// what the questions must find.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace fleet {

struct FleetPlan {
  uint32_t devices = 100;
  uint32_t days = 7;
  uint32_t every_s = 3600;  // between two reports of a device
  int64_t until = 0;        // seconds since 1970: when the log ends
  uint64_t seed = 1;
  uint32_t troubled = 3;  // devices for each trouble
};

class SimulatedFleet {
 public:
  explicit SimulatedFleet(const FleetPlan& plan);

  // All lines in the order of time, without their newlines.
  void log(const std::function<void(std::string_view line)>& take);

  // After that: counts, and the devices that are in trouble, by trouble.
  const nlohmann::ordered_json& truth() const { return truth_; }

 private:
  enum Trouble { NONE, REJECT, NO_CALL, FORBIDDEN, SILENT, ROAMER, UPDATED };
  struct Device {
    std::string host;
    uint32_t cell;
    uint32_t firmware;
    uint32_t offset_s;  // of its reports in their period
    Trouble trouble = NONE;
  };
  using Items = std::map<std::string_view, std::string>;

  uint64_t random(uint64_t below) { return random_() % below; }
  void choose(Trouble trouble, const char* name);
  void start(const Device& device, int64_t time);
  void report(Device& device, int64_t time);
  void set_levels(Items& items, const Device& device);
  void set_faults(Items& items, const Device& device, int64_t time);
  void write(const Device& device, int64_t time, const Items& items);
  void line(const Device& device, int64_t time, const std::string& text);

  FleetPlan plan_;
  std::mt19937_64 random_;
  std::vector<Device> devices_;
  nlohmann::ordered_json truth_;
  uint64_t reports_ = 0, lines_ = 0, doubled_ = 0;
  std::function<void(std::string_view)> take_;
};

}  // namespace fleet
