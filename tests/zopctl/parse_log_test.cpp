// zopctl parse-log: each complete report of a log is printed once and correctly, each incomplete
// one is counted, whatever the order of the devices' lines.
#include <nlohmann/json.hpp>

#include "tests/zopctl/run_zopctl.h"

using Json = nlohmann::json;

class ZopctlParseLog : public testing::Test {
 protected:
  void parse(const std::string& log) {
    zopctl("parse-log " + folder.write("log", log) + " 2> " + folder / "errors" + " > " +
           folder / "out" + "; true");
    out = folder.read("out");
    errors = folder.read("errors");
  }
  TemporaryFolder folder;
  std::string out, errors;
};

TEST_F(ZopctlParseLog, lines_interleaved_lost_cut_and_repeated) {
  std::string log;
  for (const char* line : {
           "one 10,a=1:", "two 10,a=2:", "one 10,a=1:",  // repeated
           "two 10,b=2,n=2:", "one 10,b=1,n=2:", "one 10,b=1,n=2:",
           "two 10,a=",                                     // repeated after the end
           "one 20,a=1:", "two 20,a=2:", "two 20,b=2,n=2",  // lost, cut
           "two 30,b=4,n=2:", "two 30,a=3:",                // in reverse
       }) {
    log += "Jul  4 13:02:59 " + std::string(line, 3) + " hostd: I zop:diag: t=" + (line + 4) + "\n";
  }
  log.insert(log.rfind("Jul"), 10'000, '\n');  // fewer than a report waits for
  parse(log);
  std::istringstream reports(out);
  std::string seen;
  for (std::string line; std::getline(reports, line);) {
    Json report = Json::parse(line);
    seen += std::string(report["host"]) + std::string(report["stamp"]) + report["items"].dump();
  }
  EXPECT_EQ(seen, R"(two10{"a":"2","b":"2"}one10{"a":"1","b":"1"}two30{"a":"3","b":"4"})");
  expect_in_order(errors, {"20 of one is broken"});
  expect_in_order(errors, {"20 of two is broken"});
  expect_in_order(errors, {"3 reports, 2 broken; 10012 lines, 3 doubled"});
}

TEST_F(ZopctlParseLog, values_and_places) {
  parse(
      "noise\n"
      "I zop:diag: t=4c4ae3f3,RSSI=-75,IMEI=004999010640000,GSM=---,Network Name=a\\\xC3\xA4\xFF:\n"
      "I zop:diag: t=4c4ae400,RSSI=-75,n=1:\r\n"
      "I zop:diag: t=4c4ae3f3,Bars=5,n=2:\n"
      "Jul 24 13:02:59 lone hostd: I zop:diag: t=4c4ae500,RSSI=-75,n=2:\n"
      "I zop:diag: t=4c");
  EXPECT_EQ(out,
            "{\"host\":\"\",\"stamp\":\"4c4ae400\",\"time\":\"2010-07-24T13:00:48Z\",\"lines\":1,"
            "\"items\":{\"RSSI\":-75}}\n"
            "{\"host\":\"\",\"stamp\":\"4c4ae3f3\",\"time\":\"2010-07-24T13:00:35Z\",\"lines\":2,"
            "\"items\":{\"RSSI\":-75,\"IMEI\":\"004999010640000\",\"GSM\":null,"
            "\"Network Name\":\"a\\\\\xC3\xA4\xEF\xBF\xBD\",\"Bars\":5}}\n");
  expect_in_order(errors, {"/log:6: a line of a report without",
                           "/log:5: report 4c4ae500 of lone is broken: 1 of 2 lines\n",
                           "2 reports, 1 broken; 6 lines, 0 doubled, 1 without a stamp\n"});
}

// Without host names, two devices that report in the same second look like one.
TEST_F(ZopctlParseLog, two_last_lines_make_no_report) {
  parse(
      "I zop:diag: t=4c4ae400,Bars=4,n=3:\n"
      "I zop:diag: t=4c4ae400,Bars=5,n=2:\n");
  EXPECT_EQ(out, "");
  expect_in_order(errors, {"log:1: report 4c4ae400 of a device is broken: 2 of 2 lines, of two"});
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
    EXPECT_TRUE(out.starts_with("{\"host\":\"" + std::string(row.host) + "\","))
        << row.header << out;
  }
}

TEST_F(ZopctlParseLog, reads_what_the_module_writes) {
  Outcome run = zopctl("--sim report --log info 2>&1 > /dev/null | " ZOPCTL " parse-log");
  Json report = Json::parse(run.output.substr(0, run.output.find('\n')));
  EXPECT_EQ(report["items"]["Bars"], 5) << run.output;
  EXPECT_EQ(report["host"], "");
}
