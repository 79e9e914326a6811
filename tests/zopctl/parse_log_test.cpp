// zopctl parse-log against logs of many devices, made by a generator that knows what is in them:
// lines mixed between devices, lost, cut and doubled. Every whole report comes out once and right,
// every broken one is counted.
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <random>
#include <sstream>

#include "tests/zopctl/run_zopctl.h"

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {
struct Generated {
  std::string log;
  std::map<std::pair<std::string, std::string>, std::map<std::string, std::string>> whole;
  size_t whole_count = 0, broken = 0;
};

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  Generated logs(int devices, int reports) {
    std::vector<std::vector<std::string>> lines(static_cast<size_t>(devices));
    for (int device = 0; device < devices; ++device) {
      for (int report = 0; report < reports; ++report) {
        add_report(device, report, lines[static_cast<size_t>(device)]);
      }
    }
    mix(lines);
    return std::move(made_);
  }

 private:
  int pick(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }
  bool rarely() { return pick(20) == 0; }

  static std::string header(int device) {
    std::string host = "device-" + std::to_string(device);
    switch (device % 4) {
      case 0:
        return "Jul 24 13:02:59 " + host + " hostd[814]: ";
      case 1:
        return "<189>Jul  4 13:02:59 " + host + " hostd: ";
      case 2:
        return "<189>1 2010-07-24T13:02:59.123Z " + host + " hostd 814 - - ";
      default:
        return "2010-07-24T13:02:59.123+00:00 " + host + " hostd[814]: ";
    }
  }

  void add_report(int device, int report, std::vector<std::string>& out) {
    char stamp[16];
    snprintf(stamp, sizeof stamp, "%x", 0x4C4AE3F3 + report * 60);
    int count = 1 + pick(4);
    std::map<std::string, std::string> items;
    int whole = 0, seen = 0;
    for (int n = 0; n < count; ++n) {
      std::string pairs;
      for (int i = 0; i < 3; ++i) {
        std::string name = "Item " + std::to_string(n) + " " + std::to_string(i);
        items[name] = std::to_string(pick(1000));
        items[name] += ";=\"x\"";
        pairs += ',';
        pairs += name + "=" + items[name];
      }
      if (n == count - 1) pairs += ",n=" + std::to_string(count);
      std::string start = header(device) + "I zop:diag: t=" + stamp;
      std::string line = start + pairs + ":";
      if (rarely()) continue;  // lost
      if (rarely()) {
        std::string cut = line.substr(0, static_cast<size_t>(pick(static_cast<int>(line.size()))));
        if (cut.size() > start.size()) ++seen;
        out.push_back(cut);
        continue;
      }
      ++seen, ++whole;
      out.push_back(line);
      if (rarely()) out.push_back(line);
    }
    if (whole == count) {
      made_.whole[{"device-" + std::to_string(device), stamp}] = items;
      ++made_.whole_count;
    } else if (seen > 0) {
      ++made_.broken;
    }
  }

  // The order within a device stays.
  void mix(std::vector<std::vector<std::string>>& lines) {
    std::vector<size_t> order;
    for (size_t device = 0; device < lines.size(); ++device) {
      order.insert(order.end(), lines[device].size(), device);
    }
    std::shuffle(order.begin(), order.end(), random_);
    std::vector<size_t> next(lines.size());
    for (size_t device : order) {
      made_.log += lines[device][next[device]++] + "\n";
      if (rarely()) made_.log += header(1) + "D zop:something else:\n";
    }
  }

  std::mt19937 random_;
  Generated made_;
};
}  // namespace

class ZopctlParseLog : public testing::Test {
 protected:
  void TearDown() override { fs::remove_all(folder); }
  Outcome parse(const std::string& log) {
    std::ofstream(folder / "log") << log;
    return zopctl("parse-log " + (folder / "log").string() + " 2> " + (folder / "errors").string() +
                  " > " + (folder / "out").string() + "; true");
  }
  std::string content(const std::string& name) {
    std::ifstream file(folder / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  fs::path folder = [] {
    std::string name = testing::TempDir() + "logs-XXXXXX";
    return fs::path(mkdtemp(name.data()));
  }();
};

TEST_F(ZopctlParseLog, a_thousand_devices) {
  for (unsigned seed : {1u, 2u}) {
    Generated made = Generator(seed).logs(1000, 5);
    ASSERT_GT(made.broken, 100u);
    parse(made.log);
    std::istringstream out(content("out"));
    for (std::string line; std::getline(out, line);) {
      Json report = Json::parse(line);
      auto found = made.whole.find({report["host"], report["stamp"]});
      ASSERT_NE(found, made.whole.end())
          << line;  // no such whole report, or not for the first time
      EXPECT_EQ(report["items"], Json(found->second)) << line;
      made.whole.erase(found);
    }
    EXPECT_EQ(made.whole.size(), 0u);
    std::string errors = content("errors");
    EXPECT_TRUE(contains(errors, std::to_string(made.whole_count) + " reports, " +
                                     std::to_string(made.broken) + " broken"))
        << errors.substr(0, 500);
    EXPECT_TRUE(contains(errors, "/log:"));
  }
}

TEST_F(ZopctlParseLog, values_and_places) {
  parse(
      "noise\n"
      "I zop:diag: t=4c4ae3f3,RSSI=-75,IMEI=004999010640000,GSM=---,Network Name=a\\\xC3\xA4\xFF:\n"
      "I zop:diag: t=4c4ae400,RSSI=-75,n=1:\r\n"
      "I zop:diag: t=4c4ae3f3,Bars=5,n=2:\n"
      "Jul 24 13:02:59 lone hostd: I zop:diag: t=4c4ae500,RSSI=-75,n=2:\n"
      "I zop:diag: t=4c");
  EXPECT_EQ(content("out"),
            "{\"host\":\"\",\"stamp\":\"4c4ae400\",\"time\":\"2010-07-24T13:00:48Z\",\"lines\":1,"
            "\"items\":{\"RSSI\":-75}}\n"
            "{\"host\":\"\",\"stamp\":\"4c4ae3f3\",\"time\":\"2010-07-24T13:00:35Z\",\"lines\":2,"
            "\"items\":{\"RSSI\":-75,\"IMEI\":\"004999010640000\",\"GSM\":null,"
            "\"Network Name\":\"a\\\\\xC3\xA4\xEF\xBF\xBD\",\"Bars\":5}}\n");
  std::string errors = content("errors");
  for (const char* text : {"/log:5: report 4c4ae500 of lone is broken: 1 of 2 lines\n",
                           "/log:6: a line of a report without",
                           "2 reports, 1 broken; 6 lines, 0 doubled, 1 without a stamp\n"}) {
    EXPECT_TRUE(contains(errors, text)) << text << "\n" << errors;
  }
}

// Without hosts, two devices that report in the same second can't be told apart.
TEST_F(ZopctlParseLog, two_last_lines_are_no_report) {
  parse(
      "I zop:diag: t=4c4ae400,Bars=4,n=3:\n"
      "I zop:diag: t=4c4ae400,Bars=5,n=2:\n");
  EXPECT_EQ(content("out"), "");
  EXPECT_TRUE(
      contains(content("errors"),
               "log:1: report 4c4ae400 of a device is broken: 2 of 2 lines, of two devices"))
      << content("errors");
}

TEST_F(ZopctlParseLog, the_host_of_a_header) {
  struct {
    const char* header;
    const char* host;
  } rows[] = {
      {"Jul  4 13:02:59 lone hostd: ", "lone"},
      {"<189>1 2010-07-24T13:02:59Z lone hostd 814 - - ", "lone"},
      {"2010-07-24T13:02:59+00:00 lone hostd: ", "lone"},
      {"", ""},
      {"the quick brown fox ", ""},  // "the" is no month, and "anF" none either
      {"anF quick brown fox ", ""},
      {"2010-07-24 13:02:59 lone hostd: ", ""},
      {"<189", ""},
  };
  for (const auto& row : rows) {
    parse(std::string(row.header) + "I zop:diag: t=4c4ae400,RSSI=-75,n=1:\n");
    EXPECT_TRUE(content("out").starts_with("{\"host\":\"" + std::string(row.host) + "\","))
        << row.header << content("out");
  }
}

// What the module writes is read back, by way of a pipe.
TEST_F(ZopctlParseLog, a_report_of_the_module) {
  Outcome run = zopctl("--sim report --log info 2>&1 > /dev/null | " ZOPCTL " parse-log");
  Json report = Json::parse(run.output.substr(0, run.output.find('\n')));
  EXPECT_EQ(report["items"]["Bars"], 5) << run.output;
  EXPECT_EQ(report["host"], "");
}
