// A simulated modem for downloads and dumps, with faults, and what the host prints meanwhile.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "download/image_set.h"
#include "include/modem_download.h"
#include "include/zop.h"
#include "link/serial_port.h"
#include "tests/support/fresh_link.h"
#include "tests/support/holdings.h"
#include "tests/support/simulated_far_end.h"
#include "tests/support/temporary_folder.h"

namespace test {

namespace fs = std::filesystem;
inline const char DEVICE[] = "/dev/tts/USB1";

class DownloadTest : public testing::Test {
 protected:
  void SetUp() override { fresh_link(); }
  void TearDown() override { zop_close(); }

  void start_modem(const std::string& fault = "") {
    sent.clear();
    asked.clear();
    world.sleeps.clear();
    sim::Modem::Trace note = [this](const std::string& line) {
      std::istringstream words(line);
      std::string time, direction, name;
      words >> time >> direction >> name;
      if (direction == ">") ++sent[name], asked += name + " ";
      if (line.find("lone flag") != std::string::npos) ++sent["lone flag"];
    };
    scenario.faults.clear();
    if (!fault.empty()) scenario.faults.push_back(sim::parse_fault(fault));
    far_end = std::make_unique<SimulatedFarEnd>(scenario, world.now(), note);
    world.far_end = far_end.get();
  }
  // Runs a part of a download that closes the port, and looks at what it leaves behind.
  int run(const std::function<int()>& part) {
    Holdings before = holdings();
    testing::internal::CaptureStdout();
    int result = part();
    output = testing::internal::GetCapturedStdout();
    EXPECT_EQ(holdings().descriptors, before.descriptors) << "open files";
    EXPECT_EQ(SIO_USED_LOCK, 0u) << "the port is still claimed";
    EXPECT_EQ(dload_tbuf, nullptr);
    EXPECT_EQ(dload_rbuf, nullptr);
    return result;
  }
  bool prints(const std::string& text) const { return output.find(text) != std::string::npos; }
  sim::Model& model() { return far_end->modem.model(); }

  TemporaryFolder temporary;
  fs::path folder = temporary.path;
  World world;
  sim::Scenario scenario;
  std::unique_ptr<SimulatedFarEnd> far_end;
  std::map<std::string, int> sent;  // packets and requests by name
  std::string asked;                // the same, in order
  std::string output;
};

}  // namespace test
