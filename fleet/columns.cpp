// The table for people.
#include "fleet/columns.h"

#include <fmt/format.h>

namespace fleet {

static const char* type_name(Type type) {
  switch (type) {
    case Type::NUMBER:
      return "number";
    case Type::FLAG:
      return "0 or 1";
    default:
      return "text";
  }
}

std::string columns_as_markdown() {
  std::string text = "| column | type | item of the report | meaning |\n|---|---|---|---|\n";
  for (const Column& column : COLUMNS) {
    std::string item;
    if (!column.section.empty()) item = fmt::format("`{}.{}`", column.section, column.key);
    text += fmt::format("| `{}` | {} | {} | {} |\n", column.name, type_name(column.type), item,
                        column.meaning);
  }
  return text;
}

}  // namespace fleet
