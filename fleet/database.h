// An SQLite database. Values reach it bound, never in a statement's text. Throws records::Failure.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace fleet {

class Statement {
 public:
  Statement(sqlite3* database, std::string_view sql);

  // Parameters from 1; a text must live until the statement is run.
  Statement& bind(int at, int64_t number);
  Statement& bind(int at, std::string_view text);
  Statement& bind_null(int at);

  // To the next row of the result; false behind the last one, and the statement may run again.
  bool next();
  // Runs a statement without a result.
  void run();

  int columns() const { return sqlite3_column_count(statement_.get()); }
  std::string_view name(int column) const { return sqlite3_column_name(statement_.get(), column); }
  int type(int column) const { return sqlite3_column_type(statement_.get(), column); }
  int64_t number(int column) const { return sqlite3_column_int64(statement_.get(), column); }
  double real(int column) const { return sqlite3_column_double(statement_.get(), column); }
  std::string_view text(int column) const;

 private:
  void check(int result);

  struct End {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  std::unique_ptr<sqlite3_stmt, End> statement_;
};

class Database {
 public:
  enum Mode { READ, WRITE };
  // A new file gets the tables of this version; one of something else, or of another version, is
  // left alone.
  Database(const std::string& name, Mode mode);

  Statement prepare(std::string_view sql) { return Statement(handle_.get(), sql); }
  void execute(const std::string& sql);
  // From now on others read while this one writes.
  void share();
  int changed_rows() { return sqlite3_changes(handle_.get()); }
  sqlite3* handle() { return handle_.get(); }

 private:
  void check_version();
  void make_tables();
  int64_t pragma(const char* name);

  struct End {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
  };
  std::string name_;
  std::unique_ptr<sqlite3, End> handle_;
};

// All or nothing: what has been written is undone unless it is committed.
class Transaction {
 public:
  explicit Transaction(Database& database);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void commit();

 private:
  Database& database_;
  bool open_ = true;
};

// The statements that make the tables.
std::string sqlite_schema();

// Part of it.
inline constexpr const char* HOST_INDEX = "CREATE INDEX report_host ON report(host, time)";

}  // namespace fleet
