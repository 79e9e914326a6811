// Another exchange that is under way on the port as it is open now.
#pragma once

#include "link/serial_port.h"

namespace test {

class OtherExchange {
 public:
  OtherExchange() { claim_port(port_); }
  ~OtherExchange() { release_port(port_); }

 private:
  PortUse port_;
};

}  // namespace test
