// Prepared statements for all rows.
#include "fleet/sqlite_store.h"

namespace fleet {

static std::string insert_statement() {
  std::string names, places;
  for (const Column& column : COLUMNS) {
    names.append(names.empty() ? "" : ",").append(column.name);
    places += places.empty() ? "?" : ",?";
  }
  return "INSERT OR IGNORE INTO report(" + names + ") VALUES(" + places + ")";
}

// The first rows of a database are sorted by host in the end, which takes less than row by row.
void SqliteStore::prepare() {
  has_host_index_ = database_.prepare("SELECT 1 FROM report LIMIT 1").next();
  if (!has_host_index_) database_.execute("DROP INDEX report_host");
  insert_.emplace(database_.prepare(insert_statement()));
  insert_rest_.emplace(database_.prepare("INSERT INTO rest VALUES(?, ?)"));
  Statement last = database_.prepare("SELECT coalesce(max(id), 0) FROM rest");
  if (last.next()) last_rest_ = last.number(0);
}

void SqliteStore::add(KeptRow& kept) {
  constexpr size_t REST = column("rest");
  static_assert(REST + 1 == COLUMN_COUNT);
  const Row& row = kept.row;
  if (!insert_) prepare();
  for (size_t i = 0; i < REST; ++i) {
    int at = static_cast<int>(i) + 1;
    if (!row[i].known) {
      insert_->bind_null(at);
    } else if (COLUMNS[i].type == Type::TEXT) {
      insert_->bind(at, row[i].text);
    } else {
      insert_->bind(at, row[i].number);
    }
  }
  insert_->bind(REST + 1, last_rest_ + 1).run();
  if (database_.changed_rows() == 0) {
    ++doubled_;
    return;
  }
  insert_rest_->bind(1, ++last_rest_).bind(2, row[REST].text).run();
  ++added_;
}

void SqliteStore::flush() {
  if (!has_host_index_) database_.execute(HOST_INDEX);
  has_host_index_ = true;
}

static Cell cell_of(const Statement& statement, int column) {
  Cell cell;
  switch (statement.type(column)) {
    case SQLITE_NULL:
      break;
    case SQLITE_INTEGER:
      cell.type = Cell::NUMBER;
      cell.number = statement.number(column);
      break;
    case SQLITE_FLOAT:
      cell.type = Cell::REAL;
      cell.real = statement.real(column);
      break;
    default:
      cell.type = Cell::TEXT;
      cell.text = statement.text(column);
  }
  return cell;
}

// The table is the connection's own, so a database that is only read can be asked.
Answer SqliteStore::ask(const std::string& sql, const Ask& values) {
  database_.execute(
      "DROP TABLE IF EXISTS temp.ask;"
      "CREATE TEMP TABLE ask(host TEXT, since INTEGER, until INTEGER, silent_s INTEGER,"
      " rows INTEGER)");
  Statement fill = database_.prepare("INSERT INTO temp.ask VALUES(?,?,?,?,?)");
  fill.bind(1, values.host).bind(2, values.since).bind(3, values.until);
  fill.bind(4, values.silent_s).bind(5, values.rows).run();
  Statement statement = database_.prepare(sql);
  Answer answer;
  for (int i = 0; i < statement.columns(); ++i) answer.names.emplace_back(statement.name(i));
  while (statement.next()) {
    std::vector<Cell>& cells = answer.rows.emplace_back();
    for (int i = 0; i < statement.columns(); ++i) cells.push_back(cell_of(statement, i));
  }
  return answer;
}

}  // namespace fleet
