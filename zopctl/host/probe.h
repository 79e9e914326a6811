// Asks a port whether a modem's DIAG is behind it, and who the modem is.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "zopctl/host/ports.h"

namespace zopctl {

// Empty texts are not known.
struct Identity {
  std::string hardware, firmware, imei;
};

struct ProbedPort {
  Port port;
  std::string unused;             // why it was not asked: who holds it, or that it can't be opened
  std::optional<Identity> modem;  // who answers
};

// Asks each port of a modem that nobody uses, a second at most. Throws Interrupted.
std::vector<ProbedPort> probe_ports();

}  // namespace zopctl
