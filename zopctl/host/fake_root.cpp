// A device that has been up for a day, with a PPP link of two hours.
#include "zopctl/host/fake_root.h"

#include <errno.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "zopctl/host/host_calls.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"

namespace zopctl {

namespace fs = std::filesystem;

static constexpr int64_t UPTIME = 86'400, ASLEEP = 3600;  // seconds, at the start
static constexpr int64_t RX_BYTES = 4'711'815, TX_BYTES = 912'204;
static constexpr int64_t RX_RATE = 18'350, TX_RATE = 2'410;  // bytes a second

static std::string ppp0(int64_t seconds) {
  return fmt::format(
      "Inter-|   Receive                                                |  Transmit\n"
      " face |bytes    packets errs drop fifo frame compressed multicast|"
      "bytes    packets errs drop fifo colls carrier compressed\n"
      "  ppp0: {}    5120    1    0    0     0          0         0   {}    3077    0    2"
      "    0     0       0          0\n",
      RX_BYTES + RX_RATE * seconds, TX_BYTES + TX_RATE * seconds);
}

static std::string stat_of_pppd() {
  constexpr long UPTIME_AT_START = 79'200;
  std::string stat = "814 (pppd) S";
  for (int field = 4; field < 22; ++field) stat += " 0";
  stat += ' ';
  stat += std::to_string(UPTIME_AT_START * sysconf(_SC_CLK_TCK));
  return stat + " 0\n";
}

static void make_file(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  if (!(std::ofstream(path) << text << std::flush)) throw file_failure(path, errno);
}

// Without its folder, which another thread may be removing, or space, nothing is replaced.
static void replace(const fs::path& path, const std::string& text) {
  fs::path next = path;
  next += ".next";
  if (!(std::ofstream(next) << text << std::flush)) return;
  std::error_code ignored;
  fs::rename(next, path, ignored);
}

static std::string make_folder() {
  std::error_code error;
  fs::path parent = fs::temp_directory_path(error);
  if (error) throw file_failure("TMPDIR", error.value());
  std::string name = parent / "zopctl-XXXXXX";
  if (mkdtemp(name.data()) == nullptr)
    throw file_failure("a folder for the simulated device in " + parent.string(), errno);
  return name;
}

FakeRoot::FakeRoot(const std::string& folder) : folder_(folder), start_(modem_now()) {
  remove_on_hard_exit(folder_.c_str());
}

// When a file fails, the destructor removes the folder: the object has been made by then.
FakeRoot::FakeRoot() : FakeRoot(make_folder()) {
  fs::create_directories(folder_ / "proc/net");
  update();
  make_file(folder_ / "proc/814/stat", stat_of_pppd());
  make_file(folder_ / "etc/resolv.conf", "nameserver 10.112.112.1\nnameserver 10.112.112.2\n");
  fs::create_directories(folder_ / "var/local/wan");
  map_root(folder_, "10.64.64.64", "10.112.112.112");
  refresh_root([this] { update(); });
}

// The module's threads read these files at any time: a new file replaces the old one.
void FakeRoot::update() {
  std::lock_guard lock(mutex_);
  auto passed = std::chrono::floor<std::chrono::seconds>(modem_now() - start_);
  if (passed == updated_) return;
  updated_ = passed;
  replace(folder_ / "proc/net/dev", ppp0(passed.count()));
  replace(folder_ / "proc/uptime",
          fmt::format("{}.25 80123.00 0 {}\n", UPTIME + passed.count(), ASLEEP));
}

FakeRoot::~FakeRoot() {
  refresh_root(nullptr);
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
  remove_on_hard_exit(nullptr);
}

}  // namespace zopctl
