// Feeds arbitrary replies to the three operations that read them: a dump, a download, and the NV
// items after one. The first byte selects the operation; then each reply is a length byte, a scale,
// and its bytes. A reply is sent as a good frame, to get past the check sequence, or as is. After
// the last one the device is gone, which must end every operation.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "download/image_set.h"
#include "include/modem_download.h"
#include "link/serial_port.h"
#include "tests/support/far_ends.h"

using namespace test;
namespace fs = std::filesystem;

static uint8_t* receive_buffer = nullptr;  // a download leaves it to the host

namespace {
class Replies : public FarEnd {
 public:
  explicit Replies(std::span<const uint8_t> data) : data_(data) {}

  // Each piece of the host's counts as a request: a packet, or a lone flag.
  void receive(std::span<const uint8_t>, Time) override {
    receive_buffer = dload_rbuf;
    if (data_.size() < 2) {
      gone_ = true;
      return;
    }
    bool raw = (data_[1] & 0x80) != 0;
    size_t size = std::min<size_t>(data_[0] * (1u + (data_[1] & 0x0F)), data_.size() - 2);
    Bytes reply(data_.begin() + 2, data_.begin() + 2 + static_cast<ptrdiff_t>(size));
    data_ = data_.subspan(2 + size);
    if (!raw) reply = frame(reply);
    if ((data_.size() & 1) != 0) reply.insert(reply.begin(), 0x7E);
    due_.push_back(reply);
  }
  std::optional<Time> next_due() const override {
    return due_.empty() ? std::nullopt : std::optional<Time>(0);
  }
  Bytes take(Time) override {
    if (due_.empty()) return {};
    Bytes reply = due_.front();
    due_.pop_front();
    return reply;
  }
  bool gone(Time) override { return gone_; }

 private:
  std::span<const uint8_t> data_;
  std::deque<Bytes> due_;
  bool gone_ = false;
};
}  // namespace

static void require(bool holds) {
  if (!holds) abort();
}

static fs::path home, folder;  // the fuzzer's own paths are relative to home

static void dump() {
  mem_dump_process();
  diag_close();
  for (auto& entry : fs::directory_iterator(folder)) {  // nothing but the images and the dump
    std::string name = entry.path().filename();
    require(name == "images" || name.starts_with("dump_"));
    if (name != "images") fs::remove_all(entry.path());
  }
}

static void download(int options) {
  modem_set_config("images", "", options & 1, options >> 1 & 1);
  receive_buffer = nullptr;
  modem_dload_process();
  free(receive_buffer);
  for (const Image& image : gImages) require(image.sent <= image.size && image.descriptor == -1);
}

static void nv_items() {
  gHasVersionInfo = 1;
  diag_open("/dev/tts/USB1");
  modem_diag_process();
  modem_dload_end_process("/dev/tts/USB1");
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (freopen("/dev/null", "w", stdout) == nullptr) return 1;  // the progress
  std::string name = fs::temp_directory_path() / "download-fuzz-XXXXXX";
  folder = mkdtemp(name.data());
  home = fs::current_path();
  fs::create_directory(folder / "images");
  for (const char* image :
       {"QSC6270.ram", "partition.mbn", "dbl.mbn", "fsbl.mbn", "osbl.mbn", "amss.mbn"}) {
    std::ofstream(folder / "images" / image) << std::string(1500, 'i');
  }
  std::ofstream(folder / "images/version_info") << "Q71XEB22.001";
  atexit([] { fs::remove_all(folder); });
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  World world;
  Replies modem({data + 1, size - 1});
  world.far_end = &modem;
  efs_clear = 0;
  fs::current_path(folder);
  if (data[0] % 3 == 0) dump();
  if (data[0] % 3 == 1) download(data[0] / 3);
  if (data[0] % 3 == 2) nv_items();
  diag_close();
  fs::current_path(home);
  require(SIO_USED_LOCK == 0);
  require(!world.port_is_open());
  require(dload_tbuf == nullptr);
  return 0;
}
