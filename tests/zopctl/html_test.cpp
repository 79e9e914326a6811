// zopctl html: the page as a browser shows it, and what becomes of inputs and outputs that are not
// as they should be.
#include <arpa/inet.h>
#include <sys/socket.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

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
  made["bars"] = 4;
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
  void TearDown() override { fs::remove_all(folder); }
  std::string file(const std::string& name) const { return (folder / name).string(); }
  std::string write(const std::string& name, const std::string& text) {
    std::ofstream(folder / name) << text;
    return file(name);
  }
  std::string drive(int seconds, const std::string& network) {
    std::string text;
    for (int second = 0; second < seconds; ++second) text += sample(second, network).dump() + "\n";
    return write("drive.jsonl", text);
  }
  static std::string content(const std::string& path) {
    std::ifstream input(path);
    return {std::istreambuf_iterator<char>(input), {}};
  }
  // What Chromium writes; empty when it does not run here.
  std::string chromium(const std::string& arguments) const {
    std::string command =
        "timeout 20 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
        "--disable-background-networking --disable-component-update --disable-sync "
        "--user-data-dir=" +
        file("profile") + " " + arguments + " 2>/dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    std::string output;
    for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) output += static_cast<char>(c);
    pclose(pipe);
    return output;
  }

  bool no_browser() const { return chromium("--dump-dom about:blank").empty(); }

  fs::path folder = [] {
    std::string name = testing::TempDir() + "page-XXXXXX";
    return fs::path(mkdtemp(name.data()));
  }();
};

namespace {
// A proxy that answers nothing and knows what it was asked for.
class Proxy {
 public:
  Proxy() : fd_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(fd_, reinterpret_cast<sockaddr*>(&address), size);
    listen(fd_, 8);
    getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &size);
    port = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
  }
  ~Proxy() { requests(); }
  Proxy(const Proxy&) = delete;
  Proxy& operator=(const Proxy&) = delete;
  // Ends it. The browser's own questions may be among them.
  const std::string& requests() {
    shutdown(fd_, SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
    return requests_;
  }
  int port;

 private:
  void serve() {
    for (int caller = accept(fd_, nullptr, nullptr); caller >= 0;
         caller = accept(fd_, nullptr, nullptr)) {
      char text[512];
      ssize_t length = recv(caller, text, sizeof text, 0);
      if (length > 0) requests_.append(text, static_cast<size_t>(length));
      close(caller);
    }
    close(fd_);
  }

  int fd_;
  std::string requests_;
  std::thread thread_;
};
}  // namespace

TEST_F(ZopctlHtml, a_browser_shows_what_was_recorded_and_fetches_nothing) {
  std::string report =
      write("report.json", Json({{"modem", {{"IMEI", "004999010640000"}}}}).dump());
  Outcome run = zopctl("html " + drive(120, HOSTILE) + " " + report + " -o " + file("page.html"));
  ASSERT_EQ(run.exit_code, 0) << run.output;
  Proxy proxy;
  std::string dom = chromium("--proxy-server=http://127.0.0.1:" + std::to_string(proxy.port) +
                             " --dump-dom file://" + file("page.html"));
  if (dom.empty() && no_browser()) GTEST_SKIP() << "chromium does not run here";
  for (const char* part : {
           "<title>Modem: drive.jsonl and 1 more</title>",
           "&lt;script&gt;document.title='pwned'&lt;/script&gt;</span>",
           "<style>\n:root {",
           "<h2>report.json</h2>",
           "004999010640000",
           "Weakest RSSI: -119&nbsp;dBm at 2026-11-21 00:00:30",
           "Link lost: 10 s, 8.3 % of the time",
           "WCDMA V 850\n00:00:00 to 00:01:00",
           "GSM\n00:01:10 to 00:02:00",
           "00:00:05 call originated",
           "SC 100, active set",
           "ARFCN 661 / 12",
       }) {
    EXPECT_TRUE(contains(dom, part)) << part;
  }
  for (const char* part : {"<script", "<img", "url(", "@import", "href=\"h", "NaN"}) {
    EXPECT_FALSE(contains(dom, part)) << part;
  }
  EXPECT_FALSE(contains(proxy.requests(), "page.test"));
}

TEST_F(ZopctlHtml, a_browser_draws_it) {
  zopctl("html " + drive(120, "Testnet") + " -o " + file("page.html"));
  chromium("--screenshot=" + file("page.png") + " --window-size=800,1600 file://" +
           file("page.html"));
  std::string picture = content(file("page.png"));
  if (picture.empty() && no_browser()) GTEST_SKIP() << "chromium does not run here";
  ASSERT_EQ(picture.substr(1, 3), "PNG");
  EXPECT_EQ(picture.substr(16, 8), std::string("\0\0\x03\x20\0\0\x06\x40", 8));
  EXPECT_GT(picture.size(), 40'000u);  // a blank page has 7,000
}

TEST_F(ZopctlHtml, inputs_that_are_not_as_they_should_be) {
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
    fs::remove(file("page.html"));
    Outcome run = zopctl("html " + write("in", c.input) + " -o " + file("page.html"));
    EXPECT_EQ(run.exit_code, c.exit_code) << c.name;
    EXPECT_TRUE(contains(run.output, c.told) && run.output.empty() == c.told.empty())
        << c.name << ": " << run.output;
    EXPECT_EQ(fs::exists(file("page.html")), c.exit_code == 0) << c.name;
    std::string page = content(file("page.html"));
    EXPECT_FALSE(contains(page, "\"nan") || contains(page, "inf%")) << c.name;
  }
}

TEST_F(ZopctlHtml, a_page_is_whole_or_not_there) {
  std::string input = drive(3, "Testnet");
  Outcome full = zopctl("html " + input + " -o /dev/full");
  EXPECT_EQ(full.exit_code, 1);
  EXPECT_TRUE(contains(full.output, "/dev/full could not be written: No space left"));
  EXPECT_TRUE(fs::is_character_file("/dev/full"));  // not replaced
  EXPECT_EQ(zopctl("html " + input + " -o " + input).exit_code, 2);
  EXPECT_EQ(zopctl("html - -o - < " + input).output, zopctl("html - < " + input).output);
  // A limit on the size of files: what was there before stays, and nothing beside it.
  std::string old = write("page.html", "old");
  Outcome limited =
      zopctl("--version; trap '' XFSZ; ulimit -f 8; " ZOPCTL " html " + input + " -o " + old);
  EXPECT_TRUE(contains(limited.output, "could not be written: File too large")) << limited.output;
  EXPECT_EQ(limited.exit_code, 1);
  EXPECT_EQ(content(old), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2);
}

// A day has 86,400 samples; the page must not grow with them, and an outlier must not go.
TEST_F(ZopctlHtml, a_long_recording_makes_no_large_page) {
  zopctl("html " + drive(400, "Testnet") + " -o " + file("short.html"));
  zopctl("html " + drive(20'000, "Testnet") + " -o " + file("long.html"));
  EXPECT_LT(fs::file_size(file("long.html")), 3 * fs::file_size(file("short.html")));
  EXPECT_TRUE(
      contains(content(file("long.html")), "L15 980"));  // -119 dBm, on an axis from -70 to -120
}

// A log has a part for each of its devices; the items find their sections.
TEST_F(ZopctlHtml, logs_by_device) {
  std::string log = write(
      "log", R"({"host":"dev1","time":"2026-11-21T14:20:05Z","items":{"RSSI":-75,"Exc":"no <b>"}})"
             "\n"
             R"({"host":"dev2","time":"2026-11-21T14:20:05Z","items":{"Bars":3,"New Item":"x"}})");
  std::string page = zopctl("html " + log).output;
  for (const char* part : {"<h2>dev1</h2>", "<h2>dev2</h2>", "<h4>State</h4>", "<h4>Other</h4>",
                           "exception: no &lt;b&gt;", "3 bars"}) {
    EXPECT_TRUE(contains(page, part)) << part;
  }
}
