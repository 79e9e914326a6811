// The headers of code images. A header that is recognised must fit its file; images with another
// one, or none, can't be checked.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace zopctl {

inline constexpr char UNKNOWN_HEADER[] = "unknown";

struct ImageHeader {
  std::string kind;     // for people and programs
  std::string problem;  // empty if the file is as it says
};

// The smallest code image: smaller files are not worth a look at their header.
constexpr uint64_t MIN_IMAGE_SIZE = 64;

// Of a file of size bytes, at least MIN_IMAGE_SIZE. Throws Failure when it can't be read.
ImageHeader read_image_header(const std::filesystem::path& path, uint64_t size);

}  // namespace zopctl
