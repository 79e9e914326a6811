// The serial ports of modems, by what the kernel says of them. Nothing is opened.
#pragma once

#include <string>
#include <vector>

namespace zopctl {

struct Port {
  std::string device;  // "/dev/ttyUSB2"
  std::string driver;  // "option1"
};

// The ports whose driver serves modems, in the order of their names. ZOPCTL_SYS_DIR and
// ZOPCTL_DEV_DIR stand for /sys and /dev.
std::vector<Port> modem_ports();

}  // namespace zopctl
