// The format of POSIX (ustar): blocks of 512 bytes, a header and the content for each file, and two
// empty ones at the end.
#include "zopctl/text/archive.h"

#include <fmt/format.h>
#include <libdeflate.h>

#include <memory>

#include "zopctl/text/failure.h"
#include "zopctl/text/replace_file.h"

namespace zopctl {

constexpr size_t BLOCK = 512;

// Fields of a header. Numbers are octal digits.
constexpr size_t NAME = 0, MODE = 100, OWNER = 108, GROUP = 116, SIZE = 124, TIME = 136;
constexpr size_t CHECKSUM = 148, TYPE = 156, MAGIC = 257, VERSION = 263;

// The sum of the header's bytes, its own field counted as spaces.
static void add_checksum(std::string& header) {
  header.replace(CHECKSUM, 8, "        ");
  unsigned sum = 0;
  for (char c : header) sum += static_cast<uint8_t>(c);
  header.replace(CHECKSUM, 6, fmt::format("{:06o}", sum));
  header[CHECKSUM + 6] = '\0';
}

static std::string header_of(const std::string& name, size_t size, std::time_t time) {
  std::string header(BLOCK, '\0');
  auto put = [&](size_t at, const std::string& text) { header.replace(at, text.size(), text); };
  put(NAME, name);
  put(MODE, "0000600");
  put(OWNER, "0000000");
  put(GROUP, "0000000");
  put(SIZE, fmt::format("{:011o}", size));
  put(TIME, fmt::format("{:011o}", time));
  put(TYPE, "0");
  put(MAGIC, "ustar");
  put(VERSION, "00");
  add_checksum(header);
  return header;
}

void Archive::add(const std::string& name, std::string_view content) {
  tar_ += header_of(name, content.size(), time_);
  tar_ += content;
  tar_.append((BLOCK - content.size() % BLOCK) % BLOCK, '\0');
}

static std::string compressed(const std::string& text) {
  constexpr int LEVEL = 6;
  std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
      libdeflate_alloc_compressor(LEVEL), libdeflate_free_compressor);
  if (!compressor) throw Failure("no memory to compress the archive");
  std::string out(libdeflate_gzip_compress_bound(compressor.get(), text.size()), '\0');
  out.resize(
      libdeflate_gzip_compress(compressor.get(), text.data(), text.size(), out.data(), out.size()));
  return out;
}

void Archive::write(const std::string& path) const {
  replace_file(path, compressed(tar_ + std::string(2 * BLOCK, '\0')), 0600);
}

}  // namespace zopctl
