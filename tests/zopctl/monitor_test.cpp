// The live view in a real terminal (tmux): its screen, the terminal restored, and its recording.
#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "tests/zopctl/run_zopctl.h"

namespace fs = std::filesystem;
using Json = nlohmann::json;

// Polls, because the condition depends on another process.
static bool becomes_true(const std::function<bool()>& condition) {
  for (int look = 0; look < 1500; ++look) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

namespace {
// zopctl in its own terminal; the terminal's settings are saved before and after it.
class Terminal {
 public:
  explicit Terminal(const std::string& arguments, const std::string& environment = "") {
    folder.write("run", "ulimit -c 0; echo shell-is-here; stty -a > before\n" + environment +
                            " sh -c 'echo $$ > pid; exec " ZOPCTL " " + arguments +
                            "'\necho exit=$? > exit; stty -a > after; touch done; exec cat\n");
    tmux("-f /dev/null new-session -d -x 80 -y 24 'cd " + folder.path.string() +
         " && LC_ALL=C.UTF-8 sh run'");
  }
  ~Terminal() { tmux("kill-server"); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  std::string screen(const std::string& part = "") { return tmux("capture-pane -p " + part); }
  bool shows(const std::string& text) {
    return becomes_true([&] { return contains(screen(), text); });
  }
  void type(const std::string& keys) { tmux("send-keys " + keys); }
  void resize(int width, int height) {
    tmux("resize-window -x " + std::to_string(width) + " -y " + std::to_string(height));
  }
  void signal(int number) { kill(std::stoi(folder.read("pid")), number); }

  // Waits for its end, checks that the terminal is restored, and returns its exit status.
  std::string ends() {
    if (!becomes_true([&] { return fs::exists(folder / "done"); })) return "never:\n" + screen();
    EXPECT_EQ(settings("after"), settings("before"));
    EXPECT_TRUE(shows("shell-is-here")) << "still in full screen";
    return folder.read("exit");
  }
  const TemporaryFolder folder;

 private:
  std::string settings(const std::string& name) const {  // the first line is the size
    std::string text = folder.read(name);
    return text.substr(text.find('\n') + 1);
  }
  std::string tmux(const std::string& command) {
    return shell("tmux -S " + folder / "socket" + " " + command).output;
  }
};
}  // namespace

TEST(Monitor, shows_the_modem_in_a_window_of_any_size_until_a_key_ends_it) {
  Terminal terminal("--sim monitor");
  for (const char* text : {"Registration Success", "WCDMA V 850", "active     code  100",
                           "Cell 3430008", "rx 4.", "Deferred action waitFor", "RSSI -75 dBm"}) {
    EXPECT_TRUE(terminal.shows(text)) << text << "\n" << terminal.screen();
  }
  terminal.type("+");
  EXPECT_TRUE(terminal.shows("every 2 s"));
  terminal.type("p");
  EXPECT_TRUE(terminal.shows("PAUSED"));
  terminal.resize(40, 12);
  EXPECT_TRUE(becomes_true([&] { return contains(terminal.screen("-S 11"), "q quit"); }));
  terminal.resize(20, 4);
  EXPECT_TRUE(terminal.shows("30x8 at least"));
  terminal.resize(150, 50);
  EXPECT_TRUE(terminal.shows("active     code  100"));
  terminal.type("q");
  EXPECT_EQ(terminal.ends(), "exit=0\n");
}

TEST(Monitor, restores_the_terminal_however_it_ends) {
  struct Row {
    const char* name;
    std::vector<int> signals;
    const char* exit;
  } rows[] = {{"asked to end", {SIGTERM}, "exit=143\n"},
              {"interrupted twice", {SIGINT, SIGINT}, "exit=130\n"},
              {"a crash", {SIGABRT}, "exit=134\n"},
              {"quit for a core", {SIGQUIT}, "exit=131\n"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Terminal terminal("--sim monitor");
    ASSERT_TRUE(terminal.shows("q quit"));
    for (int signal : row.signals) terminal.signal(signal);
    EXPECT_EQ(terminal.ends(), row.exit);
  }
}

TEST(Monitor, survives_and_records_the_loss_of_the_modem) {
  TemporaryFolder folder;
  std::string link = folder / "modem";
  auto plugged_in = [&](const char* scenario) {
    auto modem =
        std::make_unique<Program>(std::vector<std::string>{SIMULATOR, "--link", link, scenario});
    EXPECT_EQ(modem->line(), link);
    return modem;
  };
  auto modem = plugged_in("healthy-wcdma");
  Terminal terminal("--device " + link + " monitor --record samples");
  EXPECT_TRUE(terminal.shows("WCDMA V 850"));
  modem.reset();
  EXPECT_TRUE(terminal.shows("LINK LOST")) << terminal.screen();
  modem = plugged_in("healthy-gsm");
  EXPECT_TRUE(terminal.shows("neighbour ARFCN  661")) << terminal.screen();
  EXPECT_TRUE(terminal.shows("the link is back")) << terminal.screen();
  terminal.type("q");
  EXPECT_EQ(terminal.ends(), "exit=0\n");

  std::istringstream samples(terminal.folder.read("samples"));
  std::vector<std::string> links, bands;
  for (std::string line; std::getline(samples, line);) {
    Json sample = Json::parse(line);
    links.push_back(sample["link"]);
    if (sample["report"].is_null()) continue;
    bands.push_back(sample["report"]["network"]["Band"]);
  }
  ASSERT_FALSE(bands.empty());
  EXPECT_EQ(bands.front(), "WCDMA V 850");
  EXPECT_EQ(bands.back(), "GSM PCS 1900");
  EXPECT_EQ(links.front() + links.back(), "openopen");
  EXPECT_NE(std::ranges::find(links, "lost"), links.end());
}

TEST(Monitor, prints_a_line_a_sample_on_an_unknown_terminal) {
  Terminal unknown("--sim monitor --count 2", "TERM=nobody-makes-this");
  EXPECT_TRUE(unknown.shows("no live view on a terminal of this type"));
  EXPECT_EQ(unknown.ends(), "exit=0\n");
  EXPECT_TRUE(contains(zopctl("--sim --sim-speed 20 monitor --count 2").output, "5 [#####]"));

  std::istringstream objects(zopctl("--sim --sim-speed 20 --json monitor --count 2").output);
  for (int i = 0; i < 2; ++i) {
    std::string line;
    std::getline(objects, line);
    EXPECT_EQ(Json::parse(line)["bars"], 5);
  }
}

TEST(Monitor, reports_a_recording_that_cannot_be_written) {
  expect_runs({
      {"--sim monitor --count 2 --record /dev/full", 1,
       "the recording /dev/full: No space left on device"},
      {"--sim monitor --count 2 --record /nowhere/samples", 1,
       "the recording /nowhere/samples: No such file"},
  });
}
