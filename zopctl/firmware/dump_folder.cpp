// Every file is made and opened below the folder's descriptor, without following links: others may
// be able to write beside it. Names come from a modem that has crashed; none begins with a dot, as
// our scratch files do.
#include "zopctl/firmware/dump_folder.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "zopctl/text/failure.h"

namespace zopctl {

namespace fs = std::filesystem;

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(SavedRegion, name, file, base, length, whole)

static constexpr char REGIONS_FILE[] = "dump.json";
static constexpr uint32_t BLOCK = 1024;  // bytes of a read

[[noreturn]] static void fail_at(const std::string& path) { throw file_failure(path, errno); }

DumpFolder::DumpFolder(std::string path, mode_t mode) : path_(std::move(path)), mode_(mode) {
  fd_ = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd_ < 0) fail_at(path_);
}
DumpFolder::DumpFolder(DumpFolder&& other) noexcept
    : path_(std::move(other.path_)),
      mode_(other.mode_),
      fd_(std::exchange(other.fd_, -1)),
      regions_(std::move(other.regions_)) {}
DumpFolder::~DumpFolder() {
  if (fd_ >= 0) close(fd_);
}

// Who may read a file may enter the folder; only its owner changes it.
static mode_t folder_mode(mode_t files) { return 0700 | (files & 0444) | (files & 0444) >> 2; }

void DumpFolder::prepare(const std::string& dir) {
  std::error_code error;
  fs::create_directories(dir, error);
  if (error) throw file_failure(dir, error.value());
  if (access(dir.c_str(), W_OK | X_OK) != 0) fail_at(dir);
}

DumpFolder DumpFolder::make(const std::string& dir, mode_t mode) {
  std::time_t now = std::time(nullptr);
  std::string name = fs::path(dir) / fmt::format("dump_{:%Y%m%d_%H%M%S}", fmt::localtime(now));
  std::string path = name;
  for (int number = 2; mkdir(path.c_str(), 0700) != 0; ++number) {
    if (errno != EEXIST) fail_at(path);
    path = fmt::format("{}.{}", name, number);
  }
  DumpFolder folder(path, mode);
  fchmod(folder.fd_, folder_mode(mode));
  return folder;
}

DumpFolder DumpFolder::reopen(const std::string& path, mode_t mode) {
  DumpFolder folder(path, mode);
  struct stat found;
  if (fstat(folder.fd_, &found) != 0 || found.st_uid != geteuid())
    throw Failure(path + " belongs to another user; run zopctl dump as that one");
  folder.read_regions();
  for (size_t i = 0; i < folder.regions_.size(); ++i) folder.find_whole(i);
  return folder;
}

// It may have ended before it could note that a region is whole; and files may have been removed.
void DumpFolder::find_whole(size_t index) {
  SavedRegion& region = regions_[index];
  region.whole = true;
  region.whole = has_all(index);
}

void DumpFolder::read_regions() {
  std::ifstream file(fs::path(path_) / REGIONS_FILE);
  if (!file)
    throw Failure(path_ + " is not the folder of a dump: it has no " + REGIONS_FILE +
                  "; begin a new one without --resume");
  try {
    nlohmann::json::parse(file).at("regions").get_to(regions_);
  } catch (const nlohmann::json::exception&) {
    throw Failure(path_ + "/" + REGIONS_FILE + " is damaged; begin a new dump without --resume");
  }
  for (const SavedRegion& region : regions_) {
    if (region.file.empty() || region.file[0] == '.' || region.file.find('/') != std::string::npos)
      throw Failure(path_ + "/" + REGIONS_FILE + " is damaged; begin a new dump without --resume");
  }
}

// A name that any file system takes and no shell minds.
static std::string plain_name(const std::string& name) {
  constexpr size_t LONGEST = 100;
  std::string file = name.substr(0, LONGEST);
  for (char& c : file) {
    bool plain = isalnum(static_cast<unsigned char>(c)) != 0 || strchr("._-+", c) != nullptr;
    if (!plain) c = '_';
  }
  if (file.empty()) return "region";
  if (file[0] == '.' || file[0] == '-') file[0] = '_';
  return file;
}

size_t DumpFolder::region(const std::string& name, uint32_t base, uint32_t length, size_t number) {
  for (size_t i = 0; i < regions_.size(); ++i) {
    const SavedRegion& known = regions_[i];
    bool same = known.name == name && known.base == base && known.length == length;
    if (same && number-- == 0) return i;
  }
  std::string file = plain_name(name), unique = file;
  auto taken = [&](const SavedRegion& region) {
    return region.file == unique || region.file + ".part" == unique ||
           region.file == unique + ".part";
  };
  bool ours = unique == REGIONS_FILE || unique == "SHA256SUMS";
  for (int next = 2; ours || std::ranges::any_of(regions_, taken); ++next, ours = false) {
    unique = fmt::format("{}.{}", file, next);
  }
  regions_.push_back({name, unique, base, length, false});
  return regions_.size() - 1;
}

std::string DumpFolder::file_of(size_t index) const {
  return regions_[index].file + (regions_[index].whole ? "" : ".part");
}

static std::optional<struct stat> found_at(int folder, const std::string& file) {
  struct stat found;
  if (fstatat(folder, file.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  return found;
}

uint64_t DumpFolder::size(size_t index) const {
  auto found = found_at(fd_, file_of(index));
  return found ? static_cast<uint64_t>(found->st_size) : 0;
}

bool DumpFolder::has_all(size_t index) const {
  auto found = found_at(fd_, file_of(index));
  return found && S_ISREG(found->st_mode) &&
         static_cast<uint64_t>(found->st_size) == regions_[index].length;
}

// The last bytes of a dump that broke off may not have reached the disk: whole reads only.
static uint32_t size_to_keep(uint64_t size, uint32_t length) {
  if (size > length) return 0;
  return static_cast<uint32_t>(size == length ? size : size / BLOCK * BLOCK);
}

DumpFolder::Part DumpFolder::open_part(size_t index) {
  int fd = openat(fd_, file_of(index).c_str(),
                  O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
  if (fd < 0) return {};
  struct stat found;
  if (fstat(fd, &found) != 0 || !S_ISREG(found.st_mode) || found.st_nlink != 1) {
    close(fd);
    errno = EEXIST;
    return {};
  }
  fchmod(fd, mode_);
  uint32_t kept = size_to_keep(static_cast<uint64_t>(found.st_size), regions_[index].length);
  uint32_t done = kept == 0 ? 0 : (kept - 1) / BLOCK * BLOCK;
  Part part = {fd, done, std::vector<uint8_t>(kept - done)};
  bool read =
      pread(fd, part.last.data(), part.last.size(), done) == static_cast<ssize_t>(part.last.size());
  bool cut = read && ftruncate(fd, kept) == 0;
  if (cut) return part;
  int error = errno;
  close(fd);
  errno = error;
  return {};
}

static bool sync_file(int folder, const std::string& file) {
  int fd = openat(folder, file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  bool good = fd >= 0 && fsync(fd) == 0;
  int error = errno;
  if (fd >= 0) close(fd);
  errno = error;
  return good;
}

// Some file systems (NFS, shared folders of virtual machines) can't do it in one step.
static bool rename_to_new(int folder, const std::string& from, const std::string& to) {
  if (renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  bool taken = found_at(folder, to).has_value();
  if (taken) errno = EEXIST;
  return !taken && renameat(folder, from.c_str(), folder, to.c_str()) == 0;
}

// A name says that all bytes are there: they are on the disk first.
void DumpFolder::name_part(size_t index) {
  SavedRegion& region = regions_[index];
  std::string part = file_of(index);
  if (!sync_file(fd_, part)) fail_at(path_ + "/" + part);
  if (!rename_to_new(fd_, part, region.file)) fail_at(path_ + "/" + region.file);
  fsync(fd_);
  region.whole = true;
}

void DumpFolder::close_part(size_t index) {
  if (!regions_[index].whole && has_all(index)) name_part(index);
}

void DumpFolder::discard_part(size_t index) {
  if (unlinkat(fd_, file_of(index).c_str(), 0) != 0) fail_at(path_ + "/" + file_of(index));
}

void DumpFolder::write_text(const char* name, const std::string& text) const {
  std::string next = fmt::format(".{}.new", name);
  unlinkat(fd_, next.c_str(), 0);
  int fd = openat(fd_, next.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (fd < 0) fail_at(path_ + "/" + name);
  fchmod(fd, mode_);
  errno = ENOSPC;  // of a write that is cut short
  bool good = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  good = good && fsync(fd) == 0 && renameat(fd_, next.c_str(), fd_, name) == 0;
  int error = errno;
  close(fd);
  if (good) return;
  unlinkat(fd_, next.c_str(), 0);
  errno = error;
  fail_at(path_ + "/" + name);
}

void DumpFolder::write_regions() const {
  write_text(REGIONS_FILE, nlohmann::json{{"regions", regions_}}.dump(2) + "\n");
}

void DumpFolder::write_sums(const std::vector<std::string>& lines) const {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  write_text("SHA256SUMS", text);
}

}  // namespace zopctl
