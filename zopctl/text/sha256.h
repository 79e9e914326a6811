// SHA-256 of files.
#pragma once

#include <filesystem>
#include <string>

namespace zopctl {

// Of the whole file, as 64 lower-case digits. Throws Failure when it can't be read.
std::string sha256_of(const std::filesystem::path& path);

}  // namespace zopctl
