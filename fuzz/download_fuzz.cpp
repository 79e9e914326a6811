// Feeds arbitrary replies to the three operations that read them: a dump, a download, and the NV
// items after one. The first byte selects the operation; then each reply is a length byte, a scale,
// and its bytes. A reply is sent as a good frame, to get past the check sequence, or as is. After
// the last one the device is gone, which must end every operation.
#include "fuzz/fuzz.h"
#include "download/image_set.h"
#include "include/modem_download.h"
#include "link/serial_port.h"
#include "tests/support/far_ends.h"
#include "tests/support/temporary_folder.h"

using namespace test;
namespace fs = std::filesystem;

static uint8_t* receive_buffer = nullptr;  // a download leaves it to the host

namespace {
class Replies : public FarEnd {
 public:
  explicit Replies(std::span<const uint8_t> data) : data_(data) {}

  // Each write of the host counts as a request: a packet, or a lone flag.
  void receive(std::span<const uint8_t>, Time) override {
    receive_buffer = dload_rbuf;
    if (data_.size() < 2) {
      gone_ = true;
      return;
    }
    Bytes head = ::take(data_, 2), reply = ::take(data_, head[0] * (1u + (head[1] & 0x0F)));
    if ((head[1] & 0x80) == 0) reply = frame(reply);
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

static const fs::path HOME = fs::current_path();  // the fuzzer's own paths are relative to it

namespace {
struct Folder : TemporaryFolder {
  Folder() {
    fs::create_directory(*this / "images");
    for (const char* image :
         {"QSC6270.ram", "partition.mbn", "dbl.mbn", "fsbl.mbn", "osbl.mbn", "amss.mbn"}) {
      write(std::string("images/") + image, std::string(1500, 'i'));
    }
    write("images/version_info", "Q71XEB22.001");
  }
};
}  // namespace

static const Folder FOLDER;

static void dump() {
  mem_dump_process();
  diag_close();
  for (auto& entry : fs::directory_iterator(FOLDER.path)) {
    if (entry.path().filename() == "images") continue;  // anything else must be the dump
    require(entry.path().filename().string().starts_with("dump_"));
    fs::remove_all(entry.path());
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

void fuzz(std::span<const uint8_t> input) {
  if (input.empty()) return;
  World world;
  Replies modem(input.subspan(1));
  world.far_end = &modem;
  efs_clear = 0;
  fs::current_path(FOLDER.path);
  if (input[0] % 3 == 0) dump();
  if (input[0] % 3 == 1) download(input[0] / 3);
  if (input[0] % 3 == 2) nv_items();
  diag_close();
  fs::current_path(HOME);
  require(SIO_USED_LOCK == 0);
  require(!world.port_is_open());
  require(dload_tbuf == nullptr);
}
