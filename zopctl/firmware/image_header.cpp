// Compares the sizes and offsets in a header with the file: a copy that broke off is shorter than
// its header says, one with something appended is longer.
#include "zopctl/firmware/image_header.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <span>
#include <vector>

#include "zopctl/text/bytes_text.h"
#include "zopctl/text/failure.h"

namespace zopctl {

// Little-endian fields of an ELF file of 32 bits.
enum ElfHeader { PROGRAM_HEADERS = 28, PROGRAM_HEADER_SIZE = 42, PROGRAM_HEADER_COUNT = 44 };
enum ElfProgramHeader { FILE_OFFSET = 4, FILE_SIZE = 16, PROGRAM_HEADER_BYTES = 32 };
constexpr uint8_t ELF_32_LITTLE[] = {0x7F, 'E', 'L', 'F', 1, 1};

// The plain header: ten little-endian words before the image. It has no magic number: it is known
// by a small id and by sizes that add up.
enum PlainHeader {
  IMAGE_ID = 0,
  IMAGE_SIZE = 16,
  CODE_SIZE = 20,
  SIGNATURE_SIZE = 28,
  CERTIFICATE_SIZE = 36,
  PLAIN_HEADER_BYTES = 40
};
constexpr uint32_t PLAIN_IMAGE_IDS = 64;

using Bytes = std::vector<uint8_t>;

static Bytes bytes_at(std::ifstream& file, uint64_t offset, size_t count) {
  std::vector<char> text(count);
  file.seekg(static_cast<std::streamoff>(offset));
  if (!file.read(text.data(), static_cast<std::streamsize>(count)))
    throw Failure("its header can't be read");
  return {text.begin(), text.end()};
}

static std::string elf_problem(std::ifstream& file, const Bytes& header, uint64_t size) {
  uint64_t offset = le32(&header[PROGRAM_HEADERS]);
  unsigned row = le16(&header[PROGRAM_HEADER_SIZE]), rows = le16(&header[PROGRAM_HEADER_COUNT]);
  if (rows > 0 && row < PROGRAM_HEADER_BYTES) return "its ELF program headers are too short";
  if (rows > 0 && offset + uint64_t{row} * rows > size)
    return "its ELF program headers are not within the file";
  for (unsigned i = 0; i < rows; ++i) {
    Bytes program = bytes_at(file, offset + uint64_t{row} * i, PROGRAM_HEADER_BYTES);
    uint64_t end = uint64_t{le32(&program[FILE_OFFSET])} + le32(&program[FILE_SIZE]);
    if (end > size)
      return fmt::format("its ELF segment {} ends at byte {}, the file at {}", i, end, size);
  }
  return "";
}

static bool is_plain(const Bytes& header) {
  uint64_t sum = uint64_t{le32(&header[CODE_SIZE])} + le32(&header[SIGNATURE_SIZE]) +
                 le32(&header[CERTIFICATE_SIZE]);
  uint32_t size = le32(&header[IMAGE_SIZE]);
  return le32(&header[IMAGE_ID]) < PLAIN_IMAGE_IDS && size != 0 && size == sum;
}

static std::string plain_problem(const Bytes& header, uint64_t size) {
  uint64_t expected = PLAIN_HEADER_BYTES + uint64_t{le32(&header[IMAGE_SIZE])};
  if (expected == size) return "";
  return fmt::format("{} bytes by its header, but the file has {}", expected, size);
}

ImageHeader read_image_header(const std::filesystem::path& path, uint64_t size) {
  std::ifstream file(path, std::ios::binary);
  Bytes header = bytes_at(file, 0, MIN_IMAGE_SIZE);
  if (std::ranges::equal(ELF_32_LITTLE, std::span(header).first(std::size(ELF_32_LITTLE))))
    return {"ELF", elf_problem(file, header, size)};
  if (is_plain(header)) return {"40-byte image header", plain_problem(header, size)};
  return {UNKNOWN_HEADER, ""};
}

}  // namespace zopctl
