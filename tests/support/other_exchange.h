// Another exchange in progress: claims the open port for its lifetime.
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
