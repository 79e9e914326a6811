// SHA-256 of files and texts, as 64 lower-case digits.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace zopctl {

std::string sha256_of_text(std::string_view text);

// Of the whole file. Throws Failure when it can't be read.
std::string sha256_of(const std::filesystem::path& path);

}  // namespace zopctl
