// What a modem keeps while it is off: the SIM card's PIN state and lists, NV items, profiles, error
// log and outbox, firmware, in a file.
#pragma once

#include <string>

#include "simulator/model/model.h"

namespace sim {

class StateFile {
 public:
  // An empty path keeps nothing. A file that does not exist yet is made at the first save.
  explicit StateFile(std::string path) : path_(std::move(path)) {}

  // Loads the file into the model. Throws std::runtime_error naming the file.
  void load(Model& model);

  // Writes the file when the model has changed. The old file stays until the new one is complete.
  void save(const Model& model);

 private:
  std::string path_;
  std::string saved_;
};

}  // namespace sim
