// /sys/class/tty/NAME/device/driver is a link to the driver. Other things have the class of cdc_acm
// too, boards that restart when their port is opened among them; a modem has more interfaces.
#include "zopctl/host/ports.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace zopctl {

namespace fs = std::filesystem;

static fs::path folder_of(const char* variable, const char* usual) {
  const char* own = getenv(variable);
  return own != nullptr ? own : usual;
}

static bool has_many_interfaces(const fs::path& device) {
  constexpr int OF_A_BOARD = 2;  // control and data
  int count = 0;
  std::ifstream(fs::weakly_canonical(device).parent_path() / "bNumInterfaces") >> count;
  return count > OF_A_BOARD;
}

static bool is_modem(const std::string& driver, const fs::path& device) {
  if (driver == "cdc_acm") return has_many_interfaces(device);
  constexpr const char* DRIVERS[] = {"option", "option1", "qcserial", "usb_wwan", "sierra"};
  return std::ranges::find(DRIVERS, driver) != std::end(DRIVERS);
}

// The node may be called as in /sys, or, with names by folder, tts/USB2.
static fs::path node_of(const std::string& name) {
  fs::path folder = folder_of("ZOPCTL_DEV_DIR", "/dev");
  fs::path other = folder / "tts" / name.substr(std::min<size_t>(3, name.size()));
  std::error_code error;
  return !fs::exists(folder / name, error) && fs::exists(other, error) ? other : folder / name;
}

// ttyUSB10 comes after ttyUSB9.
static bool comes_before(const Port& a, const Port& b) {
  return std::pair(a.device.size(), a.device) < std::pair(b.device.size(), b.device);
}

std::vector<Port> modem_ports() {
  std::vector<Port> ports;
  std::error_code error;
  fs::directory_iterator all(folder_of("ZOPCTL_SYS_DIR", "/sys") / "class" / "tty", error);
  for (; !error && all != fs::directory_iterator(); all.increment(error)) {
    fs::path device = all->path() / "device";
    std::error_code no_driver;
    std::string driver = fs::read_symlink(device / "driver", no_driver).filename();
    if (no_driver || !is_modem(driver, device)) continue;
    ports.push_back({node_of(all->path().filename()), driver});
  }
  std::ranges::sort(ports, comes_before);
  return ports;
}

}  // namespace zopctl
