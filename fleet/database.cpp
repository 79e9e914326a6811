// The file's header tells whose database it is and of which version.
#include "fleet/database.h"

#include <errno.h>
#include <fmt/format.h>

#include "fleet/columns.h"
#include "records/file_error.h"

namespace fleet {

constexpr int64_t APPLICATION = 0x7A6F7066;
constexpr int BUSY_MS = 30'000;  // as long as another program may write

[[noreturn]] static void fail(sqlite3* database, const std::string& what) {
  int code = sqlite3_errcode(database);
  if (code == SQLITE_FULL && sqlite3_db_readonly(database, "main") == 1)
    throw records::Failure(what + ": no space is left for the question's temporary files",
                           "free some, or set TMPDIR to a folder on another disk");
  if (code == SQLITE_FULL) throw records::file_failure(what, ENOSPC);
  if (code == SQLITE_BUSY)
    throw records::Failure(what + ": another program is writing to it", "wait until it has ended");
  if (code == SQLITE_NOTADB)
    throw records::Failure(what + " is no database of zopctl fleet", "name another file");
  if (code == SQLITE_CANTOPEN && sqlite3_system_errno(database) != 0)
    throw records::file_failure(what, sqlite3_system_errno(database));
  if (code == SQLITE_IOERR)
    throw records::Failure(what + ": " + sqlite3_errmsg(database),
                           "see whether its disk is full or failing; ulimit -f may be too low");
  throw records::Failure(what + ": " + sqlite3_errmsg(database));
}

// ---- statements ----

Statement::Statement(sqlite3* database, std::string_view sql) {
  sqlite3_stmt* made = nullptr;
  int result =
      sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &made, nullptr);
  statement_.reset(made);
  if (result != SQLITE_OK) fail(database, "the database");
}

void Statement::check(int result) {
  if (result != SQLITE_OK) fail(sqlite3_db_handle(statement_.get()), "the database");
}

Statement& Statement::bind(int at, int64_t number) {
  check(sqlite3_bind_int64(statement_.get(), at, number));
  return *this;
}

Statement& Statement::bind(int at, std::string_view text) {
  const char* data = text.data() == nullptr ? "" : text.data();
  check(
      sqlite3_bind_text(statement_.get(), at, data, static_cast<int>(text.size()), SQLITE_STATIC));
  return *this;
}

Statement& Statement::bind_null(int at) {
  check(sqlite3_bind_null(statement_.get(), at));
  return *this;
}

bool Statement::next() {
  int result = sqlite3_step(statement_.get());
  if (result == SQLITE_ROW) return true;
  sqlite3* database = sqlite3_db_handle(statement_.get());
  if (result != SQLITE_DONE) fail(database, sqlite3_db_filename(database, "main"));
  sqlite3_reset(statement_.get());
  return false;
}

void Statement::run() {
  while (next()) continue;
}

std::string_view Statement::text(int column) const {
  auto text = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
  if (text == nullptr) return {};
  return {text, static_cast<size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

// ---- the schema ----

// In the order of time, in which logs come: new rows are together on few pages. The rest, most of a
// row and seldom asked for, is in a table of its own.
static std::string report_table() {
  std::string sql = "CREATE TABLE report(\n";
  for (const Column& column : COLUMNS) {
    bool is_text = column.type == Type::TEXT && column.name != "rest";
    const char* type = is_text ? "TEXT" : "INTEGER";
    sql += fmt::format("  {} {}{},\n", column.name, type, column.nullable ? "" : " NOT NULL");
  }
  return sql + "  PRIMARY KEY(time, host, key)) WITHOUT ROWID;\n";
}

std::string sqlite_schema() {
  return report_table() + HOST_INDEX + R"(;
CREATE TABLE rest(id INTEGER PRIMARY KEY, items TEXT NOT NULL);
-- Logs that have been read: how far, and a hash of the last bytes there.
CREATE TABLE source(name TEXT NOT NULL, size INTEGER NOT NULL, tail INTEGER NOT NULL,
  PRIMARY KEY(size, tail)) WITHOUT ROWID;
-- Lines of reports whose other lines have not come.
CREATE TABLE waiting(host TEXT NOT NULL, stamp TEXT NOT NULL, pairs TEXT NOT NULL);
-- What each device has told when it started.
CREATE TABLE version(host TEXT PRIMARY KEY, library TEXT NOT NULL, firmware TEXT NOT NULL,
  hardware TEXT NOT NULL) WITHOUT ROWID;
-- Rows that are to be sent to servers.
CREATE TABLE outbox(id INTEGER PRIMARY KEY, key INTEGER NOT NULL, name TEXT NOT NULL,
  text TEXT NOT NULL);
-- What could not become a row, and why.
CREATE TABLE refused(why TEXT NOT NULL, text TEXT NOT NULL, PRIMARY KEY(why, text)) WITHOUT ROWID;
)";
}

// ---- the file ----

Database::Database(const std::string& name, Mode mode) : name_(name) {
  sqlite3* made = nullptr;
  int flags = mode == READ ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  flags |= SQLITE_OPEN_NOMUTEX;  // a connection is one thread's
  int result = sqlite3_open_v2(name.c_str(), &made, flags, nullptr);
  handle_.reset(made);
  if (result != SQLITE_OK) fail(made, name);
  sqlite3_busy_timeout(made, BUSY_MS);
  if (mode == WRITE) {
    execute("PRAGMA page_size = 32768; PRAGMA synchronous = FULL");
    make_tables();
  }
  check_version();
  // kB, counted in pages of the size that is known by now. Questions read most pages once, and sort
  // in parts of this size, which takes half the time of one sort in memory, and threads share them.
  execute(mode == READ ? "PRAGMA cache_size = -8192; PRAGMA threads = 4"
                       : "PRAGMA cache_size = -65536");
}

int64_t Database::pragma(const char* name) {
  Statement statement = prepare(fmt::format("PRAGMA {}", name));
  return statement.next() ? statement.number(0) : 0;
}

void Database::check_version() {
  if (pragma("application_id") != APPLICATION) {
    throw records::Failure(name_ + " is no database of zopctl fleet", "name another file");
  }
  int64_t version = pragma("user_version");
  if (version != SCHEMA_VERSION) {
    throw records::Failure(fmt::format("{} has tables of version {}; this zopctl knows version {}",
                                       name_, version, SCHEMA_VERSION));
  }
}

void Database::make_tables() {
  Transaction transaction(*this);
  if (pragma("schema_version") != 0) return;
  execute(sqlite_schema());
  execute(fmt::format("PRAGMA application_id = {}; PRAGMA user_version = {}", APPLICATION,
                      SCHEMA_VERSION));
  transaction.commit();
}

// Until a new database has rows nobody reads it, and without a write-ahead log they are written
// once. A reader that prevents the change now does not the next time.
void Database::share() {
  int result = sqlite3_exec(handle_.get(), "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
  if (result != SQLITE_OK && result != SQLITE_BUSY) fail(handle_.get(), name_);
}

void Database::execute(const std::string& sql) {
  if (sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    fail(handle_.get(), name_);
  }
}

// ---- transactions ----

Transaction::Transaction(Database& database) : database_(database) {
  database_.execute("BEGIN IMMEDIATE");
}

void Transaction::commit() {
  database_.execute("COMMIT");
  open_ = false;
}

// After some failures SQLite has ended the transaction itself.
Transaction::~Transaction() {
  if (open_) sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

}  // namespace fleet
