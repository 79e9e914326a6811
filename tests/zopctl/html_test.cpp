// zopctl html: what the page shows, and bad inputs and outputs.
#include <nlohmann/json.hpp>

#include "tests/zopctl/run_zopctl.h"

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr char HOSTILE[] = "\"><img src=http://page.test/x><script>document.title='pwned'</script>";

// One second of a drive: a minute of WCDMA, a tunnel of ten seconds, then GSM.
static Json sample(int second, const std::string& network) {
  char time[32];
  snprintf(time, sizeof time, "2026-11-21T%02d:%02d:%02d.120Z", second / 3600, second / 60 % 60,
           second % 60);
  bool lost = second >= 60 && second < 70, gsm = second >= 70;
  Json made = {{"time", time}, {"link", lost ? "lost" : "open"}, {"bars", nullptr}};
  made["events"] = second == 5 ? Json::array({"call originated"}) : Json::array();
  if (lost) {
    made["reason"] = "no answer";
    made["report"] = nullptr;
    return made;
  }
  made["bars"] = second % 5;
  Json& report = made["report"];
  report["network"] = {{"Network Name", network}, {"Band", gsm ? "GSM 900" : "WCDMA V 850"}};
  report["state"] = {{"RSSI", second == 30 ? -119 : -75}, {"System Mode", gsm ? "GSM" : "WCDMA"}};
  report["wcdma"] = {{"RSCP", gsm ? Json("") : Json(-82)},
                     {"Active/Monitored Sets", gsm ? "" : "0;100;-5 1;101;-11"}};
  report["gsm"] = {{"N1", gsm ? "-71;661;12" : ""}};
  return made;
}

class ZopctlHtml : public testing::Test {
 protected:
  std::string drive(int seconds, const std::string& network) {
    std::string text;
    for (int second = 0; second < seconds; ++second) text += sample(second, network).dump() + "\n";
    return folder.write("drive.jsonl", text);
  }
  std::string page_of(const std::string& recordings) {
    Outcome run = zopctl("html " + recordings + " -o " + page);
    EXPECT_EQ(run.exit_code, 0) << run.output;
    return folder.read("page.html");
  }
  TemporaryFolder folder;
  std::string page = folder / "page.html";
};

TEST_F(ZopctlHtml, shows_the_recording_and_loads_nothing) {
  std::string report =
      folder.write("report.json", Json({{"modem", {{"IMEI", "004999010640000"}}}}).dump());
  std::string text = page_of(drive(120, HOSTILE) + " " + report);
  for (const char* part : {
           "<title>Modem: drive.jsonl and 1 more</title>",
           "&lt;script&gt;document.title=&#39;pwned&#39;&lt;/script&gt;</span>",
           "<style>\n:root {",
           "<h2>report.json</h2>",
           "004999010640000",
           "Weakest RSSI: -119\u00A0dBm at 2026-11-21 00:00:30",
           "Link lost: 10 s, 8.3 % of the time",
           "WCDMA V 850\n00:00:00 to 00:01:00",
           "GSM\n00:01:10 to 00:02:00",
           "00:00:05 call originated",
           "SC 100, active set",
           "ARFCN 661 / 12",
       }) {
    EXPECT_TRUE(contains(text, part)) << part;
  }
  for (const char* part : {"<script", "<img", "url(", "@import", "href=\"h", "NaN"}) {
    EXPECT_FALSE(contains(text, part)) << part;
  }
}

TEST_F(ZopctlHtml, is_drawn_by_a_browser) {
  page_of(drive(120, "Testnet"));
  shell(
      "timeout 20 chromium --headless --no-sandbox --disable-gpu --no-first-run --user-data-dir=" +
      folder / "profile" + " --screenshot=" + folder / "page.png" +
      " --window-size=800,1600 file://" + page);
  std::string picture = folder.read("page.png");
  if (picture.empty()) GTEST_SKIP() << "chromium does not run here";
  EXPECT_EQ(picture.substr(16, 8), std::string("\0\0\x03\x20\0\0\x06\x40", 8));
  EXPECT_GT(picture.size(), 40'000u);  // a blank page has 7,000
}

TEST_F(ZopctlHtml, bad_inputs) {
  const std::string good = sample(0, "Testnet").dump() + "\n";
  struct Case {
    const char* name;
    std::string input;
    int exit_code;
    std::string told;
  };
  const Case cases[] = {
      {"no JSON", good + "rubbish\n" + good, 1, "in:2: no JSON"},
      {"no JSON, over lines", "{\n\"state\": {\n\"RSSI\": x}}\n", 1, "in:3: no JSON"},
      {"a cut last line", good + good.substr(0, 50), 0, "in:2: the last line is cut"},
      {"another object", good + "{\"a\":1}\n", 1, "in:2: neither a report"},
      {"nothing", "\n", 1, "nothing in it"},
      {"too large a number", "{\"link\":\"open\",\"bars\":1e999}\n", 1, "in:1: no JSON: number"},
      {"broken UTF-8", "{\"state\":{\"RSSI\":\"\xFF\xC3(\"}}\n", 0, ""},
      {"wrong types", R"({"time":7,"link":[],"bars":{},"events":5,"report":{"state":[]}})", 0, ""},
      {"numbers beyond all bounds",
       R"({"time":"2026-11-21T00:00:00Z","link":"open","bars":1e300,"report":{"state":)"
       R"({"RSSI":-1e300,"Tx Power":"inf"},"wcdma":{"Active/Monitored Sets":"9;9;-99999 1;;"}}})",
       0, ""},
  };
  for (const Case& c : cases) {
    fs::remove(page);
    Outcome run = zopctl("html " + folder.write("in", c.input) + " -o " + page);
    EXPECT_EQ(run.exit_code, c.exit_code) << c.name;
    EXPECT_TRUE(contains(run.output, c.told) && run.output.empty() == c.told.empty())
        << c.name << ": " << run.output;
    EXPECT_EQ(fs::exists(page), c.exit_code == 0) << c.name;
    std::string text = folder.read("page.html");
    EXPECT_FALSE(contains(text, "\"nan") || contains(text, "inf%")) << c.name;
  }
}

TEST_F(ZopctlHtml, is_written_completely_or_not_at_all) {
  std::string input = drive(3, "Testnet");
  // With a limit on file sizes the old file stays, and no temporary one.
  std::string limited = "--version; trap '' XFSZ; ulimit -f 8; " ZOPCTL " html " + input + " -o " +
                        folder.write("page.html", "old");
  expect_runs(
      {{"html " + input + " -o /dev/full", 1, "/dev/full could not be written: No space left"},
       {"html " + input + " -o " + input, 2, ""},
       {limited, 1, "could not be written: File too large"}});
  EXPECT_TRUE(fs::is_character_file("/dev/full"));  // not replaced
  EXPECT_EQ(folder.read("page.html"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path.string()), {}), 2);
  EXPECT_EQ(zopctl("html - -o - < " + input).output, zopctl("html - < " + input).output);
}

// A day has 86,400 samples: the page must not grow with them, nor lose an outlier.
TEST_F(ZopctlHtml, a_long_recording_makes_a_small_page) {
  size_t small = page_of(drive(400, "Testnet")).size();
  std::string text = page_of(drive(20'000, "Testnet"));
  EXPECT_LT(text.size(), 3 * small);
  EXPECT_TRUE(contains(text, "L15 980"));  // -119 dBm, on an axis from -70 to -120
}

TEST_F(ZopctlHtml, log_has_a_part_for_each_device) {
  std::string text = page_of(folder.write(
      "log", R"({"host":"dev1","time":"2026-11-21T14:20:05Z","items":{"RSSI":-75,"Exc":"no <b>"}})"
             "\n"
             R"({"host":"dev2","time":"2026-11-21T14:20:05Z","items":{"Bars":3,"New Item":"x"}})"));
  for (const char* part : {"<h2>dev1</h2>", "<h2>dev2</h2>", "<h4>State</h4>", "<h4>Other</h4>",
                           "exception: no &lt;b&gt;", "3 bars"}) {
    EXPECT_TRUE(contains(text, part)) << part;
  }
}
