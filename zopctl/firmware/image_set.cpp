// Finds the files that a modem could not use.
#include "zopctl/firmware/image_set.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "zopctl/text/printable.h"

namespace zopctl {

namespace fs = std::filesystem;

constexpr size_t MAX_FOLDER_LENGTH = 127;  // with its trailing slash
constexpr uint64_t MAX_IMAGE_SIZE = INT32_MAX;
constexpr uint64_t MAX_PARTITION_TABLE_SIZE = 2048;

namespace {
struct ImageRow {
  const char* name;
  const char* role;
  uint64_t max_size;
  bool boot_loader;  // not written with --modem-only
};
}  // namespace
static const ImageRow ROWS[] = {
    {"QSC6270.ram", "programmer, runs in RAM", MAX_IMAGE_SIZE, false},
    {"partition.mbn", "partition table", MAX_PARTITION_TABLE_SIZE, false},
    {"dbl.mbn", "boot loader", MAX_IMAGE_SIZE, true},
    {"fsbl.mbn", "boot loader", MAX_IMAGE_SIZE, true},
    {"osbl.mbn", "boot loader", MAX_IMAGE_SIZE, true},
    {"amss.mbn", "firmware", MAX_IMAGE_SIZE, false},
};

static ImageFile check_image(const fs::path& folder, const ImageRow& row) {
  ImageFile file{row.name, row.role, 0, ""};
  fs::path path = folder / row.name;
  std::error_code error;
  fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) {
    file.problem = "missing";
  } else if (!fs::is_regular_file(status)) {
    file.problem = error ? error.message() : "not a file";
  } else if (access(path.c_str(), R_OK) != 0) {
    file.problem = strerror(errno);
  } else {
    file.size = fs::file_size(path, error);
    if (file.size == 0) file.problem = "empty";
    if (file.size > row.max_size) {
      file.problem = fmt::format("larger than the maximum of {} bytes", row.max_size);
    }
  }
  return file;
}

static std::string first_line(const fs::path& path) {
  std::array<char, 128> text = {};  // the module reads no more
  std::ifstream(path, std::ios::binary).read(text.data(), text.size());
  size_t end = 0;
  while (end < text.size() && text[end] != '\0' && text[end] != '\n' && text[end] != '\r') ++end;
  std::vector<uint8_t> line(text.begin(), text.begin() + static_cast<ptrdiff_t>(end));
  return printable(line);
}

ImageSet read_image_set(const std::string& folder) {
  ImageSet set;
  set.folder = folder;
  std::error_code ignored;
  if (!fs::is_directory(folder, ignored)) set.folder_problem = "no such folder";
  if (folder.size() + (folder.ends_with('/') ? 0 : 1) > MAX_FOLDER_LENGTH) {
    set.folder_problem = fmt::format("its path is longer than {} characters", MAX_FOLDER_LENGTH);
  }
  for (const ImageRow& row : ROWS) set.files.push_back(check_image(folder, row));
  fs::path version_info = fs::path(folder) / "version_info";
  set.has_version_info = access(version_info.c_str(), R_OK) == 0;
  if (set.has_version_info) set.version = first_line(version_info);
  return set;
}

bool ImageSet::is_good() const {
  auto good = [](const ImageFile& file) { return file.problem.empty(); };
  return folder_problem.empty() && std::ranges::all_of(files, good);
}

uint64_t ImageSet::size_of(const std::string& name) const {
  auto found = std::ranges::find(files, name, &ImageFile::name);
  return found == files.end() ? 0 : found->size;
}

uint64_t ImageSet::bytes_to_send(bool modem_only) const {
  uint64_t bytes = 0;
  for (const ImageRow& row : ROWS) {
    if (!(modem_only && row.boot_loader)) bytes += size_of(row.name);
  }
  return bytes;
}

}  // namespace zopctl
