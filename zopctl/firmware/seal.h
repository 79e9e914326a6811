// The seal of an image set: SHA256SUMS in its folder, as sha256sum writes and checks it. It shows
// a file that was changed, damaged or exchanged after the set was good.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zopctl {

inline constexpr char SEAL_FILE[] = "SHA256SUMS";

using Sums = std::map<std::string, std::string>;  // SHA-256 in lower case, by file name

// Nothing when there is no such file. Throws Failure, saying what is wrong with it.
std::optional<Sums> read_sums(const std::filesystem::path& path);

// Of these files of the folder. Throws Failure.
void write_sums(const std::filesystem::path& folder, const std::vector<std::string>& names);

}  // namespace zopctl
