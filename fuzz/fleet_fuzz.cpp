// Reads arbitrary bytes as a log and takes its reports into a database: each becomes a row with all
// that a row must have, a second time none, and no byte of it is more than a value.
#include <simdjson.h>

#include <optional>
#include <set>

#include "fleet/clickhouse_store.h"
#include "fleet/sqlite_store.h"
#include "fuzz/fuzz.h"
#include "records/log_reports.h"

using namespace fleet;
namespace json = simdjson::dom;

// As servers get it, every value is what its column holds.
static void check_line(const Row& row) {
  static json::parser lines, rests;
  json::object line = lines.parse(line_of(row));
  require(line.size() == COLUMN_COUNT);
  auto field = line.begin();
  for (const Column& column : COLUMNS) {
    require(field.key() == column.name);
    json::element value = (field++).value();
    int64_t number = -1;
    bool is_number = value.get(number) == simdjson::SUCCESS;
    bool fits = column.type == Type::TEXT   ? value.is_string()
                : column.type == Type::FLAG ? number == 0 || number == 1
                                            : is_number;
    require(fits || (column.nullable && value.is_null()));
  }
  require(rests.parse(std::string(std::string_view(line["rest"]))).is_object());
}

static int64_t count_rows(Database& database) {
  static Statement rows = database.prepare("SELECT count(*) FROM report JOIN rest ON id = rest");
  require(rows.next());
  int64_t count = rows.number(0);
  require(!rows.next());
  return count;
}

void fuzz(std::span<const uint8_t> input) {
  static Database database(":memory:", Database::WRITE);
  static SqliteStore store(database);
  static RowMaker maker;
  std::optional<Transaction> undone;
  uint64_t before = store.added();
  std::set<std::tuple<int64_t, std::string, int64_t>> names;
  auto add = [&](const records::LogReport& report) {
    if (!undone) undone.emplace(database);
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
  require(store.added() - before == names.size());
  if (undone) require(count_rows(database) == static_cast<int64_t>(names.size()));
}
