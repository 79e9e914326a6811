// Reads and writes the lists of sha256sum: on each line a sum, two characters and a name.
#include "zopctl/firmware/seal.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "zopctl/text/failure.h"
#include "zopctl/text/replace_file.h"
#include "zopctl/text/sha256.h"

namespace zopctl {

namespace fs = std::filesystem;

constexpr size_t DIGITS = 64;
constexpr uint64_t MAX_FILE_SIZE = 65536;

// Adds a line "SUM  NAME", or "SUM *NAME" of sha256sum -b.
static bool take_line(const std::string& line, Sums& sums) {
  std::string sum = line.substr(0, DIGITS);
  if (line.size() < DIGITS + 3 || line[DIGITS] != ' ') return false;
  if (line[DIGITS + 1] != ' ' && line[DIGITS + 1] != '*') return false;
  for (char& digit : sum) {
    if (isxdigit(static_cast<unsigned char>(digit)) == 0) return false;
    digit = static_cast<char>(tolower(static_cast<unsigned char>(digit)));
  }
  std::string name = fs::path(line.substr(DIGITS + 2)).lexically_normal();
  return sums.emplace(name, sum).second;
}

std::optional<Sums> read_sums(const fs::path& path) {
  std::error_code error;
  if (fs::symlink_status(path, error).type() == fs::file_type::not_found) return std::nullopt;
  if (!fs::is_regular_file(path, error)) throw Failure("not a file");
  if (fs::file_size(path) > MAX_FILE_SIZE) throw Failure("too large for a list of sums");
  std::ifstream file(path);
  if (!file) throw Failure(strerror(errno));
  Sums sums;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (line.ends_with('\r')) line.pop_back();
    bool comment = line.starts_with('#');
    if (!comment && !take_line(line, sums))
      throw Failure(fmt::format("line {} is not the SHA-256 and name of one more file", number));
  }
  return sums;
}

void write_sums(const fs::path& folder, const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += sha256_of(folder / name) + "  " + name + "\n";
  replace_file(folder / SEAL_FILE, text, 0644);
}

}  // namespace zopctl
