// A value is data always: rows are JSON, and what a question depends on is a table beside it.
#include "fleet/clickhouse_store.h"

#include <fmt/format.h>
#include <xxhash.h>

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

#include "records/json_text.h"
#include "records/reading.h"

namespace fleet {

constexpr size_t BATCH_ROWS = 50'000;
constexpr std::string_view SCHEME = "clickhouse://";
constexpr unsigned LONGEST_WAIT_S = 8;

// ---- the address ----

bool is_clickhouse(const std::string& text) { return text.starts_with(SCHEME); }

ClickhouseAddress clickhouse_address(const std::string& text) {
  std::string rest = text.substr(SCHEME.size());
  size_t slash = std::min(rest.find('/'), rest.size());
  std::string server = rest.substr(0, slash);
  std::string database = rest.substr(std::min(slash + 1, rest.size()));
  if (server.empty() || database.find('/') != std::string::npos) {
    throw records::Failure(text + " is no address", "it is clickhouse://host:8123/database");
  }
  if (database.empty()) database = "default";
  return {"http://" + server + "/", database};
}

// ---- queries ----

ClickhouseStore::ClickhouseStore(const std::string& address, const std::string& writer,
                                 void (*check)(), const Patience& patience)
    : address_(clickhouse_address(address)),
      http_(address_.url, patience.answer_s, check),
      patience_(patience),
      insert_id_(fmt::format("zopctl-{:016x}", XXH3_64bits(writer.data(), writer.size()))) {}

void ClickhouseStore::fail(const std::string& text) const {
  std::string line = text.substr(0, text.find('\n'));
  constexpr size_t ENOUGH = 300;
  throw records::Failure(fmt::format("{}: {}", address_.url, line.substr(0, ENOUGH)));
}

std::string ClickhouseStore::query(const std::string& sql) {
  return http_.post({{"database", address_.database}}, sql);
}

std::string ClickhouseStore::query_with_table(const std::string& sql, const DataTable& table) {
  return http_.post_form({{"database", address_.database},
                          {"query", sql},
                          {table.name + "_structure", table.columns},
                          {table.name + "_format", "JSONEachRow"},
                          {"distributed_product_mode", "local"},
                          {"join_default_strictness", "ALL"},
                          {"join_use_nulls", "1"},
                          {"max_query_size", "1000000"},
                          {"output_format_json_quote_64bit_integers", "0"}},
                         table.name, table.lines);
}

// ---- the table ----

std::string clickhouse_type(const Column& column) {
  if (column.name == "time") return "UInt32";
  std::string type = column.type == Type::NUMBER ? "Int64"
                     : column.type == Type::FLAG ? "UInt8"
                                                 : "String";
  return column.nullable ? "Nullable(" + type + ")" : type;
}

void ClickhouseStore::check_table() {
  if (is_checked_) return;
  try {
    compare_columns(
        query("SELECT name, type FROM system.columns"
              " WHERE database = currentDatabase() AND table = 'report' FORMAT TSV"));
  } catch (const Unreachable& error) {
    fail(error.what());
  } catch (const Refused& error) {
    fail(error.what());
  }
  is_checked_ = true;
}

void ClickhouseStore::compare_columns(const std::string& found) const {
  if (found.empty()) {
    throw records::Failure(address_.url + " has no table report", "make it with schema.sql");
  }
  for (const Column& column : COLUMNS) {
    std::string line = fmt::format("{}\t{}\n", column.name, clickhouse_type(column));
    if (("\n" + found).find("\n" + line) != std::string::npos) continue;
    throw records::Failure(fmt::format(
        "{}: its table report is of another version; this zopctl knows version {}, where {} is {}",
        address_.url, SCHEMA_VERSION, column.name, clickhouse_type(column)));
  }
}

// ---- rows ----

static void append_value(std::string& out, const Column& column, const Value& value) {
  if (!value.known) {
    out += "null";
  } else if (column.type == Type::TEXT) {
    records::append_json(out, value.text);
  } else {
    fmt::format_to(std::back_inserter(out), "{}", value.number);
  }
}

static std::string json_of(const Row& row, size_t columns) {
  std::string text;
  for (size_t i = 0; i < columns; ++i) {
    text += i == 0 ? "{\"" : ",\"";
    text.append(COLUMNS[i].name).append("\":");
    append_value(text, COLUMNS[i], row[i]);
  }
  return text + "}\n";
}

std::string line_of(const Row& row) { return json_of(row, COLUMN_COUNT); }

void ClickhouseStore::form(KeptRow& kept, const Row& row) const {
  constexpr size_t NAME_COLUMNS = column("key") + 1;
  kept.row[column("key")] = row[column("key")];
  kept.name = json_of(row, NAME_COLUMNS);
  kept.texts = line_of(row);
}

void ClickhouseStore::add(KeptRow& kept) {
  add({key_of(kept), std::move(kept.name), std::move(kept.texts)});
}

void ClickhouseStore::add(RowLine line) {
  if (!keys_.insert(line.key).second) {
    ++doubled_;
    return;
  }
  batch_.push_back(std::move(line));
  if (batch_.size() >= BATCH_ROWS) flush();
}

// ---- batches ----

void ClickhouseStore::drop_known() {
  std::string names;
  for (const RowLine& line : batch_) names += line.name;
  std::string found = query_with_table(
      "SELECT key FROM report WHERE (host, time, key) IN (SELECT host, time, key FROM names)"
      " FORMAT TSV",
      {"names", "host String, time UInt32, key Int64", names});
  std::unordered_set<int64_t> known;
  const char* end = found.data() + found.size();
  for (const char* at = found.data(); at < end; ++at) {
    int64_t key = 0;
    at = std::from_chars(at, end, key).ptr;
    known.insert(key);
  }
  doubled_ += std::erase_if(batch_, [&](const RowLine& line) { return known.contains(line.key); });
}

// All shards have their rows before the answer comes.
void ClickhouseStore::insert() {
  std::string rows;
  for (const RowLine& line : batch_) rows += line.text;
  settled_ = false;
  http_.post({{"database", address_.database},
              {"query", "INSERT INTO report FORMAT JSONEachRow"},
              {"query_id", insert_id_},
              {"insert_distributed_sync", "1"}},
             rows);
  settled_ = true;
}

// An insert whose answer has not come may still run, also that of a run before this one: then a row
// would be missed, and inserted again.
void ClickhouseStore::wait_for_end_of_insert() {
  std::string sql = fmt::format(
      "SELECT count() FROM system.processes WHERE query_id = '{}' FORMAT TSV", insert_id_);
  while (query(sql) != "0\n") patience_.wait(1);
  settled_ = true;
}

void ClickhouseStore::write_batch() {
  if (!settled_) wait_for_end_of_insert();
  drop_known();
  if (!batch_.empty()) insert();
  added_ += batch_.size();
  batch_.clear();
}

void ClickhouseStore::give_up(const std::string& text) {
  batch_.clear();
  keys_.clear();
  fail(text);
}

void ClickhouseStore::flush() {
  unsigned wait_s = 1;
  int64_t waited_s = 0;
  while (!batch_.empty()) {
    try {
      write_batch();
    } catch (const Refused& error) {
      give_up(error.what());
    } catch (const Unreachable& error) {
      if (waited_s >= patience_.seconds) give_up(error.what());
      patience_.wait(wait_s);
      waited_s += wait_s;
      wait_s = std::min(2 * wait_s, LONGEST_WAIT_S);
    }
  }
  keys_.clear();
}

// ---- questions ----

static Cell cell_of(const nlohmann::json& value) {
  Cell cell;
  if (value.is_number_integer()) {
    cell.type = Cell::NUMBER;
    cell.number = value.get<int64_t>();
  } else if (value.is_number()) {
    cell.type = Cell::REAL;
    cell.real = value.get<double>();
  } else if (value.is_string()) {
    cell.type = Cell::TEXT;
    cell.text = value.get<std::string>();
  }
  return cell;
}

static Answer answer_of_json(const std::string& text) {
  nlohmann::json json = nlohmann::json::parse(text);
  Answer answer;
  for (const auto& column : json["meta"]) answer.names.push_back(column["name"]);
  for (const auto& row : json["data"]) {
    std::vector<Cell>& cells = answer.rows.emplace_back();
    for (const auto& value : row) cells.push_back(cell_of(value));
  }
  return answer;
}

Answer ClickhouseStore::ask(const std::string& sql, const Ask& values) {
  std::string line = "{\"host\":";
  records::append_json(line, values.host);
  line += fmt::format(",\"since\":{},\"until\":{},\"silent_s\":{},\"rows\":{}}}\n", values.since,
                      values.until, values.silent_s, values.rows);
  try {
    return answer_of_json(query_with_table(
        sql + "\nFORMAT JSONCompact",
        {"ask", "host String, since Int64, until Int64, silent_s Int64, rows Int64", line}));
  } catch (const std::exception& error) {
    fail(error.what());
  }
}

}  // namespace fleet
