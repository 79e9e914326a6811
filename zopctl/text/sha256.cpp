// Reads a file in pieces: an image may be larger than the memory of a small host.
#include "zopctl/text/sha256.h"

#include <errno.h>
#include <fmt/format.h>
#include <nettle/sha2.h>

#include <array>
#include <cstring>
#include <fstream>
#include <vector>

#include "zopctl/text/failure.h"

namespace zopctl {

static std::string digest_of(sha256_ctx& context) {
  std::array<uint8_t, SHA256_DIGEST_SIZE> digest;
  sha256_digest(&context, digest.size(), digest.data());
  return fmt::format("{:02x}", fmt::join(digest, ""));
}

std::string sha256_of_text(std::string_view text) {
  sha256_ctx context;
  sha256_init(&context);
  std::vector<uint8_t> bytes(text.begin(), text.end());
  sha256_update(&context, bytes.size(), bytes.data());
  return digest_of(context);
}

std::string sha256_of(const std::filesystem::path& path) {
  sha256_ctx context;
  sha256_init(&context);
  std::ifstream file(path, std::ios::binary);
  std::array<char, 65536> piece;
  while (file.read(piece.data(), piece.size()), file.gcount() > 0) {
    std::vector<uint8_t> bytes(piece.begin(), piece.begin() + file.gcount());
    sha256_update(&context, bytes.size(), bytes.data());
  }
  if (!file.eof()) throw file_failure(path.string() + " can't be read", errno);
  return digest_of(context);
}

}  // namespace zopctl
