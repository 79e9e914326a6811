// The matrix for readers (Markdown) and for programs (JSON).
#pragma once

#include <iosfwd>

#include "tests/faults/matrix.h"

namespace test {

void write_markdown(std::ostream& out, const std::vector<FunctionRow>& functions);

// Writes rows as they come: {"rows": [[function, fault, answer, byte, way, result, output, next,
// milliseconds, recovered], ...]}
class JsonRows {
 public:
  explicit JsonRows(std::ostream& out);
  ~JsonRows();
  void add(const std::string& function, const Row& row);

 private:
  std::ostream& out_;
  bool first_ = true;
};

}  // namespace test
