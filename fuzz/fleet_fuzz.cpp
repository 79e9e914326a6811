// Reads arbitrary bytes as a log and takes its reports into a database: each becomes a row with all
// that a row must have, a second time none, and no byte of it is more than a value.
#include <nlohmann/json.hpp>
#include <set>

#include "fleet/clickhouse_store.h"
#include "fleet/sqlite_store.h"
#include "fuzz/fuzz.h"
#include "records/log_reports.h"

using namespace fleet;
using nlohmann::json;

// As servers get it, every value is what its column holds.
static void check_line(const Row& row) {
  json line = json::parse(line_of(row));
  require(line.size() == COLUMN_COUNT);
  for (const Column& column : COLUMNS) {
    const json& value = line[column.name];
    bool is_flag = value == 0 || value == 1;
    bool fits = column.type == Type::TEXT   ? value.is_string()
                : column.type == Type::FLAG ? is_flag
                                            : value.is_number_integer();
    require(fits || (column.nullable && value.is_null()));
  }
  require(json::parse(line["rest"].get<std::string>()).is_object());
}

static int64_t count_rows(Database& database) {
  Statement rows = database.prepare("SELECT count(*) FROM report JOIN rest ON id = rest");
  require(rows.next());
  return rows.number(0);
}

void fuzz(std::span<const uint8_t> input) {
  static Database database(":memory:", Database::WRITE);
  static RowMaker maker;
  Transaction undone(database);
  SqliteStore store(database);
  std::set<std::tuple<int64_t, std::string, int64_t>> names;
  auto add = [&](const records::LogReport& report) {
    const Row& row = maker.row_of(report);
    check_line(row);
    names.emplace(row[column("time")].number, row[column("host")].text, row[column("key")].number);
    KeptRow kept;
    for (int time = 0; time < 2; ++time) {
      store.form(kept, row);
      store.add(kept);
    }
  };
  records::LogReports reports(
      add, [](const auto&) {}, [](uint64_t, std::string_view) {});
  records::LogPiece piece;
  piece.bytes.assign(input.begin(), input.end());
  piece.size = input.size();
  piece.search();
  reports.take(piece);
  reports.end_line();
  require(store.added() == names.size());
  require(count_rows(database) == static_cast<int64_t>(names.size()));
}
