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
#include <optional>
#include <string_view>

#include "zopctl/firmware/image_header.h"
#include "zopctl/firmware/seal.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/sha256.h"

namespace zopctl {

namespace fs = std::filesystem;

constexpr size_t MAX_FOLDER_LENGTH = 127;  // with its trailing slash
constexpr uint64_t MAX_IMAGE_SIZE = INT32_MAX;
constexpr uint64_t MAX_PARTITION_TABLE_SIZE = 2048;
constexpr char MISSING[] = "missing";
// A 0 stands for any digit.
constexpr std::string_view FAMILY_SHAPE = "Q71XEB00", VERSION_SHAPE = "Q71XEB00.000";

namespace {
struct ImageRow {
  const char* name;
  const char* role;
  uint64_t min_size, max_size;
  bool boot_loader;  // not written with --modem-only

  bool has_code() const { return min_size == MIN_IMAGE_SIZE; }
};
}  // namespace
static const ImageRow ROWS[] = {
    {"QSC6270.ram", "programmer, runs in RAM", MIN_IMAGE_SIZE, MAX_IMAGE_SIZE, false},
    {"partition.mbn", "partition table", 1, MAX_PARTITION_TABLE_SIZE, false},
    {"dbl.mbn", "boot loader", MIN_IMAGE_SIZE, MAX_IMAGE_SIZE, true},
    {"fsbl.mbn", "boot loader", MIN_IMAGE_SIZE, MAX_IMAGE_SIZE, true},
    {"osbl.mbn", "boot loader", MIN_IMAGE_SIZE, MAX_IMAGE_SIZE, true},
    {"amss.mbn", "firmware", MIN_IMAGE_SIZE, MAX_IMAGE_SIZE, false},
};
static const ImageRow VERSION_INFO = {"version_info", "version", 0, MAX_IMAGE_SIZE, false};

// ---- one file ----

static std::string size_problem(const ImageRow& row, uint64_t size) {
  if (size < row.min_size && size == 0) return "empty";
  if (size < row.min_size) return fmt::format("too small to be an image ({} bytes)", size);
  if (size > row.max_size) return fmt::format("larger than the maximum of {} bytes", row.max_size);
  return "";
}

static ImageFile check_file(const fs::path& folder, const ImageRow& row) {
  ImageFile file{row.name, row.role, 0, "", "", row.boot_loader};
  fs::path path = folder / row.name;
  std::error_code error;
  fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) {
    file.problem = MISSING;
  } else if (!fs::is_regular_file(status)) {
    file.problem = error ? error.message() : "not a file";
  } else if (access(path.c_str(), R_OK) != 0) {
    file.problem = strerror(errno);
  } else {
    file.size = fs::file_size(path, error);
    file.problem = size_problem(row, file.size);
  }
  return file;
}

static void check_header(const fs::path& folder, const ImageRow& row, ImageFile& file) try {
  if (!row.has_code() || !file.problem.empty()) return;
  ImageHeader header = read_image_header(folder / file.name, file.size);
  file.header = header.kind;
  file.problem = header.problem;
} catch (const Failure& failure) {
  file.problem = failure.what();
}

static void check_sum(const fs::path& folder, const std::optional<Sums>& sums,
                      ImageFile& file) try {
  if (!sums || !file.problem.empty()) return;
  auto sealed = sums->find(file.name);
  if (sealed == sums->end()) {
    file.problem = "not one of those that were sealed";
  } else if (sealed->second != sha256_of(folder / file.name)) {
    file.problem = "not the one that was sealed";
  }
} catch (const Failure& failure) {
  file.problem = failure.what();
}

// ---- the set ----

static std::string first_line(const fs::path& path) {
  std::array<char, 128> text = {};  // the module reads no more
  std::ifstream(path, std::ios::binary).read(text.data(), text.size());
  size_t end = 0;
  while (end < text.size() && text[end] != '\0' && text[end] != '\n' && text[end] != '\r') ++end;
  while (end > 0 && text[end - 1] == ' ') --end;
  std::vector<uint8_t> line(text.begin(), text.begin() + static_cast<ptrdiff_t>(end));
  return printable(line);
}

static void check_folder(ImageSet& set) {
  const std::string& folder = set.folder;
  std::error_code ignored;
  if (!fs::is_directory(folder, ignored))
    set.folder_problem = fs::exists(folder, ignored) ? "not a folder" : "no such folder";
  if (folder.size() + (folder.ends_with('/') ? 0 : 1) > MAX_FOLDER_LENGTH) {
    set.folder_problem = fmt::format("its path is longer than {} characters", MAX_FOLDER_LENGTH);
  }
}

static void note_others(ImageSet& set, const Sums& sums) {
  for (const auto& [name, sum] : sums) {
    bool known = name == VERSION_INFO.name || std::ranges::count(ROWS, name, &ImageRow::name) != 0;
    if (!known) set.notes.push_back(printable(name) + " is sealed too, but not part of the set");
  }
}

static std::optional<Sums> read_seal(ImageSet& set) try {
  std::optional<Sums> sums = read_sums(fs::path(set.folder) / SEAL_FILE);
  if (sums) note_others(set, *sums);
  return sums;
} catch (const Failure& failure) {
  set.files.push_back({SEAL_FILE, "seal", 0, failure.what(), ""});
  set.seal = ImageSet::BROKEN;
  return std::nullopt;
}

static bool has_shape(std::string_view text, std::string_view shape) {
  return std::ranges::equal(text, shape, [](char c, char expected) {
    return expected == '0' ? c >= '0' && c <= '9' : c == expected;
  });
}

// The module rebuilds the NV items only when the family of the old and of the new firmware differ.
static void take_version(ImageSet& set) {
  set.version = first_line(fs::path(set.folder) / VERSION_INFO.name);
  if (has_shape(set.version.substr(0, FAMILY_SHAPE.size()), FAMILY_SHAPE)) return;
  set.notes.push_back(
      "version_info does not begin with Q71XEB and two digits: the modem's NV items are kept as "
      "within one version family");
}

static void check_version_info(ImageSet& set, const std::optional<Sums>& sums) {
  ImageFile file = check_file(set.folder, VERSION_INFO);
  set.has_version_info = file.problem.empty();
  if (set.has_version_info) take_version(set);
  if (file.problem == MISSING && !(sums && sums->contains(file.name))) return;
  check_sum(set.folder, sums, file);
  if (!file.problem.empty()) set.files.push_back(file);
}

static bool has_no_problem(const ImageFile& file) { return file.problem.empty(); }

ImageSet read_image_set(const std::string& folder) {
  ImageSet set;
  set.folder = folder;
  check_folder(set);
  std::optional<Sums> sums = read_seal(set);
  for (const ImageRow& row : ROWS) {
    ImageFile& file = set.files.emplace_back(check_file(folder, row));
    check_header(folder, row, file);
    check_sum(folder, sums, file);
  }
  check_version_info(set, sums);
  bool whole = std::ranges::all_of(set.files, has_no_problem);
  if (sums) set.seal = whole ? ImageSet::WHOLE : ImageSet::BROKEN;
  return set;
}

bool ImageSet::is_good() const {
  return folder_problem.empty() && std::ranges::all_of(files, has_no_problem);
}

std::string ImageSet::problems() const {
  if (!folder_problem.empty()) return folder_problem;
  std::string text;
  for (const ImageFile& file : files) {
    if (!file.problem.empty()) text += (text.empty() ? "" : ", ") + file.name + " " + file.problem;
  }
  return text;
}

bool is_downgrade(const std::string& from, const std::string& to) {
  return has_shape(from, VERSION_SHAPE) && has_shape(to, VERSION_SHAPE) && to < from;
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
