// A device that has been up for a day, with a PPP link of two hours.
#include "zopctl/fake_root.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "zopctl/host_calls.h"
#include "zopctl/module_library.h"
#include "zopctl/session.h"

namespace zopctl {

namespace fs = std::filesystem;

static const char PPP0[] =
    "Inter-|   Receive                                                |  Transmit\n"
    " face |bytes    packets errs drop fifo frame compressed multicast|"
    "bytes    packets errs drop fifo colls carrier compressed\n"
    "  ppp0: 4711815    5120    1    0    0     0          0         0   912204    3077    0    2"
    "    0     0       0          0\n";

static std::string stat_of_pppd() {
  constexpr long UPTIME_AT_START = 79'200;
  std::string stat = "814 (pppd) S";
  for (int field = 4; field < 22; ++field) stat += " 0";
  stat += ' ';
  stat += std::to_string(UPTIME_AT_START * sysconf(_SC_CLK_TCK));
  return stat + " 0\n";
}

static void write(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

FakeRoot::FakeRoot() {
  std::string name = fs::temp_directory_path() / "zopctl-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw Failure("no folder for the simulated device in /tmp");
  folder_ = name;
  leave_nothing_of(folder_.c_str());
  write(folder_ / "proc/net/dev", PPP0);
  write(folder_ / "proc/uptime", "86400.25 80123.00 0 3600\n");  // awake, idle, -, asleep
  write(folder_ / "proc/814/stat", stat_of_pppd());
  write(folder_ / "etc/resolv.conf", "nameserver 10.112.112.1\nnameserver 10.112.112.2\n");
  fs::create_directories(folder_ / "var/local/wan");
  map_root(folder_, "10.64.64.64", "10.112.112.112");
}

FakeRoot::~FakeRoot() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
  leave_nothing_of(nullptr);
}

}  // namespace zopctl
