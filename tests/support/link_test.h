// Fixtures that give each test a fresh link to a scripted modem.
#pragma once

#include <gtest/gtest.h>

#include "include/zop.h"
#include "link/serial_port.h"
#include "tests/support/far_ends.h"
#include "tests/support/fresh_link.h"

namespace test {

inline const char DEVICE[] = "/dev/tts/USB1";

class LinkTest : public testing::Test {
 protected:
  void SetUp() override {
    fresh_link();
    world.far_end = &modem;
  }
  void TearDown() override { zop_close(); }

  World world;
  Script modem;
};

class OpenLinkTest : public LinkTest {
 protected:
  void SetUp() override {
    LinkTest::SetUp();
    ASSERT_EQ(diag_open(DEVICE), 1);
  }
};

// Another exchange in progress: claims the open port for its lifetime.
class OtherExchange {
 public:
  OtherExchange() { claim_port(port_); }
  ~OtherExchange() { release_port(port_); }

 private:
  PortUse port_;
};

}  // namespace test
