// Logs of a simulated fleet into a database: every report is one row, whatever is read again or
// breaks off, and each trouble of the fleet is found by its question.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "fleet/clickhouse_store.h"
#include "fleet/fleet_page.h"
#include "fleet/follower.h"
#include "fleet/loader.h"
#include "fleet/outbox.h"
#include "fleet/questions.h"
#include "fleet/simulated_fleet.h"
#include "fleet/sqlite_store.h"

using namespace fleet;

constexpr int64_t END = 1'795'370'400;
constexpr FleetPlan PLAN = {.devices = 24, .every_s = 7200, .until = END, .troubled = 1};

// A database and logs in a folder of their own.
class Fleet : public testing::Test {
 protected:
  Fleet() {
    std::string name = std::filesystem::temp_directory_path() / "zop-fleet-XXXXXX";
    folder_ = mkdtemp(name.data());
  }
  ~Fleet() override { std::filesystem::remove_all(folder_); }

  std::string file(const std::string& name) const { return folder_ + "/" + name; }

  void write(const std::string& name, const std::string& text) const {
    std::ofstream(file(name), std::ios::app) << text;
  }

  // Each time as a new run of the program.
  Counts load(
      const std::vector<std::string>& names, void (*check)() = [] {}) {
    Database database(file("db"), Database::WRITE);
    SqliteStore store(database);
    Loader loader(store, database, {check, [](const std::string&) {}}, END, 2);
    for (const std::string& name : names) loader.load(file(name), [](int64_t, int64_t) {});
    added_ = store.added();
    return loader.counts();
  }

  std::vector<std::string> column(const std::string& sql, size_t column = 0) const {
    Database database(file("db"), Database::READ);
    SqliteStore store(database);
    Ask ask = {.host = "device-000001",
               .since = END - USUAL_SPAN_S,
               .until = END,
               .silent_s = USUAL_SILENCE_S,
               .rows = USUAL_ROWS};
    std::vector<std::string> texts;
    const Question* question = find_question(sql);
    Answer answer = question != nullptr ? answer_of(store, *question, ask) : store.ask(sql, ask);
    for (const auto& row : answer.rows) {
      texts.push_back(row[column].type == Cell::NUMBER ? std::to_string(row[column].number)
                                                       : row[column].text);
    }
    std::ranges::sort(texts);
    return texts;
  }

  // The log of the plan's fleet, and its truth.
  nlohmann::ordered_json write_fleet() {
    std::ofstream log(file("log"));
    SimulatedFleet simulated(PLAN);
    simulated.log([&](std::string_view line) { log << line << "\n"; });
    return simulated.truth();
  }

  std::string folder_;
  uint64_t added_ = 0;
};

TEST_F(Fleet, each_trouble_is_found_by_its_question) {
  auto truth = write_fleet();
  load({"log"});
  auto hosts = [&](std::initializer_list<const char*> troubles) {
    std::vector<std::string> all;
    for (const char* trouble : troubles) {
      for (const auto& host : truth[trouble]) all.push_back(host);
    }
    std::ranges::sort(all);
    return all;
  };
  EXPECT_EQ(column("totals", 1), std::vector{truth["reports"].dump()});
  for (const Column& item : COLUMNS) {
    std::string known = "SELECT count(" + std::string(item.name) + ") > 0 FROM report";
    EXPECT_EQ(column(known), std::vector<std::string>{"1"}) << item.name;
  }
  EXPECT_EQ(column("stuck"), hosts({"illegal network reject", "data connection without a call",
                                    "all networks forbidden"}));
  EXPECT_EQ(column("stuck", 1),
            (std::vector<std::string>{"all networks forbidden", "data connection without a call",
                                      "illegal network reject"}));
  EXPECT_EQ(column("silent"), hosts({"silent"}));
  EXPECT_EQ(column("rejected"), hosts({"rejected", "illegal network reject"}));
  EXPECT_EQ(column("SELECT host FROM report WHERE rejected = 'PLMN not allowed' GROUP BY host"),
            hosts({"rejected"}));
  auto changed = hosts({"updated", "rejected", "rejected", "illegal network reject",
                        "illegal network reject", "data connection without a call",
                        "all networks forbidden"});  // twice: why, and what comes of it
  EXPECT_EQ(column("changed"), changed);
  // The worst comes first.
  Database database(file("db"), Database::READ);
  SqliteStore store(database);
  Ask ask = {.host = "", .since = 0, .until = END, .silent_s = 0, .rows = 1};
  auto first = [&](const char* question) {
    return answer_of(store, *find_question(question), ask);
  };
  EXPECT_EQ(first("weak-cells").rows[0][3].number, truth["weak_cell"]);
  EXPECT_EQ(first("versions").rows[0][0].text, truth["bad_firmware"]);
  EXPECT_EQ(first("exceptions").rows[0][1].text, truth["bad_firmware"]);
  std::string crowded =
      "SELECT min(time) - min(time) % 3600, max(lac) FROM report"
      " WHERE rejected = 'congestion'";
  EXPECT_EQ(column(crowded), std::vector{truth["crowded"]["from"].dump()});
  EXPECT_EQ(column(crowded, 1), std::vector{truth["crowded"]["lac"].dump()});
  ask.since = END - USUAL_SPAN_S;
  ask.silent_s = USUAL_SILENCE_S;
  std::string page = page_of(store, ask);
  for (const char* sentence :
       {"3 of 24 devices are stuck:", "2 of 24 devices are rejected by the network:",
        "1 of 24 devices is silent",
        "Version Q71XEB21.009 stands out:", "Area 001 01 / 300 rejected 24 devices:",
        "1 cell is below -105 dBm on average:", "5 devices have changed since the day before:"})
    EXPECT_NE(page.find(sentence), page.npos) << sentence;
}

// What few or odd reports can tell.
TEST_F(Fleet, a_question_is_not_misled) {
  std::string lines;
  auto report = [&](const std::string& host, int64_t before_end, const std::string& pairs) {
    char stamp[16];
    snprintf(stamp, sizeof stamp, "%llx", static_cast<long long>(END - before_end));
    lines += "2026-11-22T17:00:00Z " + host + " hostd: I zop:diag: t=" + stamp + "," + pairs +
             ",C1=1,L1=" + std::to_string(host.size()) + ",n=1:\n";
  };
  const std::string STUCK = "Call Status=Idle,PDP State=Active";
  report("once", 60, STUCK);
  report("one-moment", 60, STUCK);
  report("one-moment", 60, STUCK + ",Bars=1");
  report("always", 90'000, STUCK);
  report("always", 60, STUCK + ",RSSI=-70,System Mode=WCDMA");  // not RSCP
  report("told", 90'000, "Network Name=One");
  report("told", 60, "Bars=1");
  report("gone", 7 * 86'400 + 60,  // and refused by a network that is not forbidden
         "RSSI=-100,Roaming=0,MCC MNC=001 01,FPLMN=002;02,Service Status=Limited service,"
         "PDP Rej Reason=Service not subscribed");
  report("<b>", 60, "RSSI=-101,Network Name=<i>");
  write("log", lines);
  load({"log"});
  using Texts = std::vector<std::string>;
  EXPECT_EQ(column("stuck"), Texts{"always"});
  EXPECT_EQ(column("changed"), (Texts{"<b>", "always", "once", "one-moment"}));
  EXPECT_EQ(column("changed", 1), (Texts{"device", "device", "device", "stuck"}));
  EXPECT_EQ(column("silent"), Texts{});
  EXPECT_EQ(column("weak-areas", 2), Texts{"3"});
  EXPECT_EQ(column("SELECT roaming FROM report WHERE host = 'gone' AND stuck IS NULL"), Texts{"0"});
  Database database(file("db"), Database::READ);
  SqliteStore store(database);
  Ask ask;
  ask.until = END;
  std::string page = page_of(store, ask);
  EXPECT_NE(page.find("&lt;b&gt;"), page.npos);
  EXPECT_EQ(page.find("<b>") + page.find("<i>"), 2 * page.npos);
}

TEST_F(Fleet, a_log_is_read_once_and_goes_on_where_it_ended) {
  auto truth = write_fleet();
  uint64_t reports = truth["reports"];
  std::ifstream log(file("log"));
  std::string text((std::istreambuf_iterator<char>(log)), {});
  size_t half = text.find("t=", text.size() / 2);  // within a line
  write("grown", text.substr(0, half));
  uint64_t first = load({"grown"}).reports;
  EXPECT_LT(first, reports);
  write("grown", text.substr(half));
  Counts rest = load({"grown"});
  EXPECT_EQ(first + rest.reports, reports);
  auto before = static_cast<uint64_t>(std::ranges::count(text.substr(0, half), '\n'));
  EXPECT_EQ(rest.lines + before, truth["lines"].get<uint64_t>());
  EXPECT_EQ(load({"grown", "log"}).unchanged, 2U);  // another name is the same log
  write("copy", "another line\n" + text);
  EXPECT_EQ(load({"copy"}).reports, reports);
  EXPECT_EQ(added_, 0U);
  EXPECT_EQ(column("totals", 1), std::vector{std::to_string(reports)});
  // The versions that a device told in a log are those of its reports in the next one.
  write("next", "2026-11-22T17:59:00Z device-000001 I zop:diag: t=6b032d64,Bars=4,n=1:\n");
  load({"next"});
  EXPECT_EQ(column("SELECT count(*) FROM report WHERE firmware IS NULL"),
            std::vector<std::string>{"0"});
}

TEST_F(Fleet, a_log_is_read_whole_or_not_at_all) {
  write_fleet();
  EXPECT_ANY_THROW(load({"log"}, [] {
    static int pieces = 0;
    if (++pieces == 3) throw records::Failure("broken off");
  }));
  EXPECT_EQ(column("totals", 1), std::vector<std::string>{"0"});
  EXPECT_EQ(load({"log"}).unchanged, 0U);
}

TEST_F(Fleet, what_is_no_report_is_kept_aside) {
  constexpr const char* HOSTILE = "'),('x');DROP_TABLE_report;--\"\\\x01\xff";
  std::string lines;
  auto line = [&](const std::string& host, const std::string& stamp, const std::string& pairs) {
    lines += "2026-11-22T17:00:00Z " + host + " hostd: I zop:diag: t=" + stamp + pairs + ":\n";
  };
  line(HOSTILE, "6b032d64", ",Network Name=');DROP TABLE report;--,Made \"Up=\\,n=1");
  line("ahead", "7b032d64", ",Bars=1,n=1");
  line("endless", "6b032d64f", ",Bars=1,n=1");
  line("half", "6b032d64", ",Bars=1,n=2");
  line("stray", "", "Bars=1,n=1");
  write("log", lines + "I zop:diag: t=6b032d64,Bars=1,n=1:\nnoise\n");
  write("cut", "2026-11-22T17:00:00Z one I zop:diag: t=6b032d64,Bars=1,n=1");
  Counts counts = load({"cut", "log"});
  EXPECT_EQ(counts.reports, 4U);
  EXPECT_EQ(counts.refused, 3U);
  EXPECT_EQ(counts.strays, 1U);
  EXPECT_EQ(counts.waiting, 1U);
  EXPECT_EQ(column("SELECT why FROM refused"),
            (std::vector<std::string>{"a line without its report's time", "a time in the future",
                                      "a time that is none", "no host in the line's header"}));
  EXPECT_EQ(column("SELECT host FROM report"),
            std::vector<std::string>{"'),('x');DROP_TABLE_report;--\"\\\u2401\ufffd"});
  EXPECT_EQ(column("SELECT items FROM report JOIN rest ON id = rest"),
            std::vector<std::string>{R"({"other":{"Made \"Up":"\\"}})"});
  write("log", "2026-11-22T17:00:01Z half hostd: I zop:diag: t=6b032d64,Roaming=0:\n");
  EXPECT_EQ(load({"log"}).reports, 1U);
}

TEST_F(Fleet, another_database_is_left_alone) {
  write("text", std::string(8192, 'x'));
  EXPECT_THROW(Database(file("text"), Database::WRITE), records::Failure);
  load({});
  EXPECT_THROW(Database(file("db"), Database::READ).execute("DELETE FROM report"),
               records::Failure);
  Database(file("db"), Database::WRITE).execute("PRAGMA user_version = 99");
  EXPECT_THROW(Database(file("db"), Database::WRITE), records::Failure);
  EXPECT_THROW(Database(file("db"), Database::READ), records::Failure);
}

TEST_F(Fleet, what_is_confirmed_is_kept) {
  std::string answers;
  auto follow = [&](std::initializer_list<const char*> lines) {
    Database database(file("db"), Database::WRITE);
    SqliteStore store(database);
    Loader loader(store, database, {[] {}, [](const std::string&) {}}, END, 1);
    Journal journal(file("lines"));
    Follower follower(loader, journal, [&](std::string_view line) { answers.append(line) += ' '; });
    for (const char* line : lines) follower.take(line);
  };
  // It is killed, and a line is sent again that was not answered.
  follow({"2026-11-22T17:00:00Z one I zop:diag: t=6b032d64,Bars=4:",
          "2026-11-22T17:00:00Z two I zop:diag: t=6b032d64,Bars=4,n=1:"});
  EXPECT_EQ(column("SELECT host FROM report"), std::vector<std::string>{});
  write("lines", "2026-11-22T17:00:00Z one I zop:diag: t=6b032d64,Roam");
  follow({"2026-11-22T17:00:00Z one I zop:diag: t=6b032d64,Roaming=0,n=2:"});
  follow({});
  EXPECT_EQ(answers, "OK OK OK OK OK OK ");
  EXPECT_EQ(column("SELECT host FROM report"), (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(std::filesystem::file_size(file("lines")), 0U);
}

TEST_F(Fleet, rows_wait_for_servers_that_are_down) {
  Database database(file("db"), Database::WRITE);
  ClickhouseStore servers("clickhouse://127.0.0.1:1", "", [] {}, {1, 0, [](unsigned) {}});
  Outbox outbox(database, servers);
  Loader loader(outbox, database, {[] {}, [](const std::string&) {}}, END, 1);
  loader.take_line("2026-11-22T17:00:00Z one I zop:diag: t=6b032d64,Bars=4,n=1:");
  loader.keep();
  EXPECT_THROW(outbox.send_some(), records::Failure);
  EXPECT_FALSE(outbox.is_due());
  EXPECT_EQ(column("SELECT count(*) FROM outbox"), std::vector<std::string>{"1"});
}

static std::string text_of(const char* file) {
  std::ifstream in(std::string(SOURCES) + file);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST(fleet, documents_have_the_columns_of_the_code) {
  EXPECT_NE(text_of("/docs/fleet.md").find(columns_as_markdown()), std::string::npos)
      << columns_as_markdown();
  std::string schema = text_of("/fleet/clickhouse/schema.sql");
  for (const Column& column : COLUMNS) {
    std::string line = "  " + std::string(column.name) + " " + clickhouse_type(column);
    EXPECT_NE(schema.find(line), std::string::npos) << line;
  }
}
