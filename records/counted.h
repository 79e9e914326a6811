// Numbers with their nouns.
#pragma once

#include <cstdint>
#include <string>

namespace records {

// "1 try", "2 tries"
inline std::string counted(uint64_t count, const char* one, const char* many) {
  return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

// "1 line", "2 lines"
inline std::string counted(uint64_t count, const std::string& noun) {
  return counted(count, noun.c_str(), (noun + 's').c_str());
}

}  // namespace records
