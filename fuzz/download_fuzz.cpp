// Feeds arbitrary replies to the three operations that read them: a dump, a download, and the NV
// items after one. The first byte selects the operation; then each reply is a length byte, a scale,
// and its bytes. A reply is sent as a good frame, to get past the check sequence, or as is. After
// the last one the device is gone, which must end every operation. Files are in memory.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <set>

#include "download/image_set.h"
#include "fuzz/fuzzed_modem.h"
#include "include/modem_download.h"
#include "include/zop.h"
#include "tests/support/fresh_link.h"

using namespace test;

// ---- the files: images that can be read, and one directory for a dump ----

enum { DIRECTORY = 1'000'000, FILE_DESCRIPTOR, SIZE_UNIT = 5, MAX_SCALE = 9, MOST_REPLIES = 32 };
static off_t image_size = 0;
static std::set<std::string> dumped;  // names

// The linker redirects the module's calls to these.
extern "C" {
int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
  if (World::current() == nullptr || path == std::string(MODEM_DEVICE)) {
    return __real_open(path, flags, 0666);
  }
  return (flags & O_DIRECTORY) != 0 ? DIRECTORY : FILE_DESCRIPTOR;
}
int __wrap_openat(int directory, const char* name, int, ...) {
  bool leads_out = strchr(name, '/') != nullptr || name == std::string(".");
  require(directory == DIRECTORY && !leads_out && name != std::string(".."));
  return dumped.insert(name).second ? FILE_DESCRIPTOR : (errno = EEXIST, -1);
}
int __wrap_unlinkat(int directory, const char* name, int) {
  require(directory == DIRECTORY && dumped.erase(name) == 1);
  return 0;
}
int __wrap_mkdir(const char* path, mode_t) { return require(memcmp(path, "dump_", 5) == 0), 0; }
int __wrap_fstat(int, struct stat* found) {
  *found = {};
  found->st_mode = S_IFREG;
  found->st_uid = geteuid();
  found->st_size = image_size;
  return 0;
}
int __wrap_fstatat(int, const char*, struct stat* found, int) { return __wrap_fstat(0, found); }
ssize_t __wrap_pread(int, void* bytes, size_t size, off_t) {
  memset(bytes, 'i', size);
  return static_cast<ssize_t>(size);
}
ssize_t __wrap_pwrite(int fd, const void*, size_t size, off_t) {
  require(fd == FILE_DESCRIPTOR);
  return static_cast<ssize_t>(size);
}
}

// ---- the operations ----

static uint8_t* receive_buffer = nullptr;  // a download leaves it to the host

static Bytes next_reply(std::span<const uint8_t>& rest) {
  Bytes head = take(rest, 2), reply = take(rest, head[0] * (1u + head[1] % MAX_SCALE));
  if ((head[1] & 0x80) == 0) reply = frame(reply);
  if ((rest.size() & 1) != 0) reply.insert(reply.begin(), 0x7E);
  return reply;
}

static void download(int options) {
  modem_set_config("images", "", options & 1, options >> 1 & 1);
  image_size = (options >> 2) * (options >> 2) * SIZE_UNIT;  // up to 2205
  receive_buffer = nullptr;
  modem_dload_process();
  free(receive_buffer);
  for (const Image& image : gImages) require(image.sent <= image.size && image.descriptor == -1);
}

static void nv_items() {
  gHasVersionInfo = 1;
  strcpy(gVersionInfo, "Q71XEB22.001");
  diag_open(MODEM_DEVICE);
  if (modem_diag_process() == 1) modem_dload_end_process(MODEM_DEVICE);
}

void fuzz(std::span<const uint8_t> input) {
  if (input.empty()) return;
  uint8_t operation = take(input, 1)[0];
  int replies = 0;
  FuzzedModem modem([&](auto) {
    receive_buffer = dload_rbuf;
    modem.unplugged = input.size() < 2 || ++replies > MOST_REPLIES;
    return modem.unplugged ? Bytes() : next_reply(input);
  });
  World world;
  world.keeps_history = false;
  world.far_end = &modem;
  fresh_link();
  dumped.clear();
  if (operation % 3 == 0) mem_dump_process();
  if (operation % 3 == 1) download(operation / 3);
  if (operation % 3 == 2) nv_items();
  diag_close();
  require(SIO_USED_LOCK == 0);
  require(!world.port_is_open());
  require(dload_tbuf == nullptr);
}
