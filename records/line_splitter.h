// Lines of a text that comes in chunks.
#pragma once

#include <cstring>
#include <string>
#include <string_view>

namespace records {

class LineSplitter {
 public:
  // Calls take for each line that is complete, without its newline.
  template <typename TAKE>
  void add(std::string_view chunk, TAKE take) {
    while (!chunk.empty()) {
      const void* newline = memchr(chunk.data(), '\n', chunk.size());
      if (newline == nullptr) {
        if (rest_.size() < MAX_LENGTH) rest_ += chunk;
        return;
      }
      auto length = static_cast<size_t>(static_cast<const char*>(newline) - chunk.data());
      if (rest_.empty()) {
        take(chunk.substr(0, length));
      } else {
        rest_ += chunk.substr(0, length);
        take(std::string_view(rest_));
        rest_.clear();
      }
      chunk.remove_prefix(length + 1);
    }
  }

  // The beginning of a line that has not ended.
  const std::string& rest() const { return rest_; }

 private:
  static constexpr size_t MAX_LENGTH = 1 << 16;  // a longer one is not of a log
  std::string rest_;
};

}  // namespace records
