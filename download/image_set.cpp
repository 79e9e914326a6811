// Opening and closing the image set. If its directory was refused, nothing is opened.
#include "download/image_set.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "include/modem_download.h"
#include "link/serial_port.h"

enum { PATH_SIZE = 128, FILE_NAME_ROOM = 32 };

namespace {
struct ImageFile {
  const char* name;
  uint32_t type;
};
}  // namespace
static constexpr ImageFile IMAGE_FILES[IMAGE_COUNT] = {
    {"QSC6270.ram", 0}, {"partition.mbn", 0}, {"dbl.mbn", 15},
    {"fsbl.mbn", 17},   {"osbl.mbn", 16},     {"amss.mbn", 5},
};

constinit Image gImages[IMAGE_COUNT] = {{-1, 0, 0, 0}, {-1, 0, 0, 0}, {-1, 0, 0, 0},
                                        {-1, 0, 0, 0}, {-1, 0, 0, 0}, {-1, 0, 0, 0}};
constinit uint8_t gCurrentImage = IMAGE_RAM;
constinit uint8_t gModemOnly = 0;
constinit int32_t FW_DL_STATUS = 0;
constinit uint8_t gHasVersionInfo = 0;
constinit char gVersionInfo[VERSION_TEXT_SIZE] = "";
constinit uint8_t* dload_tbuf = nullptr;
constinit uint8_t* dload_rbuf = nullptr;

static constinit char gDirectory[PATH_SIZE] = "";  // ends with "/"; empty if none was accepted
static constinit char gSecondPath[PATH_SIZE] = "";
static constinit int32_t gPrintedPercent = -1;  // in any download

void print_line(const char* line) {
  puts(line);
  fflush(stdout);  // hosts read it through a pipe
}

void modem_status_update(int32_t percent) {
  if (percent == gPrintedPercent) return;
  gPrintedPercent = percent;
  printf("STAGE3: Write %d%% Done\n", percent);
  fflush(stdout);
}

const char* modem_set_config(const char* directory, const char* second_path, int modem_only,
                             int clear) {
  FW_DL_STATUS = 0;
  modem_status_update(0);
  efs_clear = clear != 0;
  gModemOnly = modem_only != 0 && clear == 0;
  size_t length = strlen(directory);
  bool has_slash = length > 0 && directory[length - 1] == '/';
  if (length + (has_slash ? 0 : 1) >= PATH_SIZE || strlen(second_path) >= PATH_SIZE) {
    print_line("CONFIG: a path is longer than 127 characters, refused");
    gDirectory[0] = gSecondPath[0] = '\0';
    return gSecondPath;
  }
  snprintf(gDirectory, sizeof gDirectory, "%s%s", directory, has_slash ? "" : "/");
  snprintf(gSecondPath, sizeof gSecondPath, "%s", second_path);
  return gSecondPath;
}

static int open_in_set(const char* name) {
  if (gDirectory[0] == '\0') return -1;
  char path[PATH_SIZE + FILE_NAME_ROOM];
  snprintf(path, sizeof path, "%s%s", gDirectory, name);
  int fd;
  do fd = open(path, O_RDONLY | O_CLOEXEC);
  while (fd < 0 && errno == EINTR);
  return fd;
}

static bool open_image(ImageRow row) {
  int fd = open_in_set(IMAGE_FILES[row].name);
  if (fd < 0) return false;
  struct stat file;
  if (fstat(fd, &file) != 0 || !S_ISREG(file.st_mode) || file.st_size > INT32_MAX) {
    close(fd);
    return false;
  }
  gImages[row] = {fd, 0, static_cast<uint32_t>(file.st_size), IMAGE_FILES[row].type};
  return true;
}

static void read_version_info() {
  int fd = open_in_set("version_info");
  gHasVersionInfo = fd >= 0;
  memset(gVersionInfo, 0, sizeof gVersionInfo);
  if (fd < 0) return;
  ssize_t size;
  do size = read(fd, gVersionInfo, sizeof gVersionInfo);
  while (size < 0 && errno == EINTR);
  close(fd);
}

bool take_protocol_buffers() {
  if (dload_tbuf == nullptr) dload_tbuf = static_cast<uint8_t*>(malloc(DLOAD_SIZE));
  if (dload_rbuf == nullptr) dload_rbuf = static_cast<uint8_t*>(malloc(DLOAD_SIZE));
  return dload_tbuf != nullptr && dload_rbuf != nullptr;
}

int load_config() {
  free_config();  // of an earlier download
  gCurrentImage = IMAGE_RAM;
  for (Image& image : gImages) image = {-1, 0, 0, 0};
  for (uint8_t row = 0; row < IMAGE_COUNT; ++row) {
    if (!open_image(static_cast<ImageRow>(row))) return 0;
  }
  read_version_info();
  return take_protocol_buffers() ? 1 : 0;
}

static void close_descriptor(int32_t* fd) {
  if (*fd != -1) close(*fd);
  *fd = -1;
}

// The receive buffer is intentionally not freed. The next download allocates a new one.
int free_config() {
  for (Image& image : gImages) close_descriptor(&image.descriptor);
  free(dload_tbuf);
  dload_tbuf = nullptr;
  dload_rbuf = nullptr;
  return 1;
}

uint32_t read_image(uint8_t* data, uint32_t size) {
  const Image& image = gImages[gCurrentImage];
  uint32_t left = image.size - image.sent;
  if (size > left) size = left;
  uint32_t done = 0;
  while (done < size) {
    ssize_t n = pread(image.descriptor, data + done, size - done, image.sent + done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    done += static_cast<uint32_t>(n);
  }
  return done;
}
