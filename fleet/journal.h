// Lines that have been taken and are not yet kept: a file that outlives the program, not the power.
// Who sent them believes that we have them, and does not send them again when we are killed.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace fleet {

class Journal {
 public:
  // Waits for another program that has it. Throws records::Failure, as all of these.
  explicit Journal(std::string name);
  ~Journal();
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  // The whole lines of the program before this one.
  void replay(const std::function<void(std::string_view line)>& take);

  void add(std::string_view line);
  void clear();

 private:
  [[noreturn]] void fail() const;

  std::string name_;
  int fd_;
};

}  // namespace fleet
