// zopctl in a real terminal (tmux): transcripts of the screen, and the terminal restored.
//   file NAME         writes the lines that follow to a file
//   start COMMAND     starts it in a terminal of 80 by 24
//   until TEXT        waits until the screen shows it
//   type KEYS, resize WIDTH HEIGHT, signal NUMBER
//   screen, colours   shows it, once it stands still
//   ends              waits for the end, and shows the exit code
#include <chrono>
#include <functional>
#include <regex>
#include <thread>

#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/transcript.h"

namespace fs = std::filesystem;

// Polls, because the condition depends on another process.
static bool becomes_true(const std::function<bool()>& condition) {
  for (int look = 0; look < 1000; ++look) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

namespace {
class Terminal : public test::Session {
 public:
  Terminal() = default;
  ~Terminal() override { tmux("kill-server"); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  std::string answer(const std::string& input) override {
    std::string word = input.substr(0, input.find(' '));
    std::string rest = input.substr(std::min(word.size() + 1, input.size()));
    size_t end = rest.find('\n');
    if (word == "file") folder_.write(rest.substr(0, end), rest.substr(end + 1));
    if (word == "start") start(rest);
    if (word == "until") return shows(rest) ? "" : "never; instead\n" + screen("");
    if (word == "type") tmux("send-keys " + rest);
    if (word == "resize") resize(rest);
    if (word == "signal") kill(std::stoi(folder_.read("pid")), std::stoi(rest));
    if (word == "screen") return still_screen("");
    if (word == "colours") return std::regex_replace(still_screen("-e"), std::regex("\033"), "^");
    return word == "ends" ? ended() : "";
  }

 private:
  // The terminal's settings are saved before and after, without their first line, the size.
  void start(const std::string& arguments) {
    folder_.write("run",
                  "ulimit -c 0; echo shell-is-here; stty -a | tail -n +2 > before\n"
                  "sh -c 'echo $$ > pid; exec env " +
                      arguments +
                      "'\n echo exit=$? > exit; stty -a | tail -n +2 > after; touch done; cat\n");
    tmux("-f /dev/null new-session -d -x 80 -y 24 'cd " + folder_.path.string() +
         " && TMPDIR=$PWD LC_ALL=C.UTF-8 PATH=" PROGRAMS ":$PATH sh run'");
  }
  std::string tmux(const std::string& command) {
    return shell("tmux -S " + folder_ / "socket" + " " + command).output;
  }
  std::string screen(const std::string& options) { return tmux("capture-pane -p " + options); }
  bool shows(const std::string& text) {
    return becomes_true([&] { return contains(screen(""), text); });
  }
  std::string still_screen(const std::string& options) {
    std::string before, now;
    int same = 0;
    becomes_true([&] {
      before = std::exchange(now, screen(options));
      same = now == before ? same + 1 : 0;
      return same == 8;
    });
    return now;
  }
  void resize(const std::string& size) {
    std::string height = size.substr(size.find(' ') + 1);
    tmux("resize-window -x " + size.substr(0, size.find(' ')) + " -y " + height);
  }
  std::string ended() {
    if (!becomes_true([&] { return fs::exists(folder_ / "done"); })) return "never";
    std::string text = folder_.read("exit");
    if (!shows("shell-is-here")) text += "still in full screen\n";
    if (folder_.read("after") != folder_.read("before")) text += "other terminal settings\n";
    return text;
  }

  const TemporaryFolder folder_;
};
}  // namespace

static const bool REGISTERED = test::register_transcripts(
    TRANSCRIPTS "/terminal", [] { return std::make_unique<Terminal>(); });

// Ended at once, it leaves its threads.
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
    Terminal terminal;
    terminal.answer("start TSAN_OPTIONS=$TSAN_OPTIONS:report_thread_leaks=0 zopctl --sim monitor");
    EXPECT_EQ(terminal.answer("until q quit"), "") << row.name;
    for (int signal : row.signals) terminal.answer("signal " + std::to_string(signal));
    EXPECT_EQ(terminal.answer("ends"), row.exit) << row.name;
  }
}

TEST(Monitor, prints_a_line_a_sample_on_an_unknown_terminal) {
  Terminal terminal;
  terminal.answer("start TERM=nobody-makes-this zopctl --sim monitor --count 2");
  EXPECT_EQ(terminal.answer("until no live view on a terminal of this type"), "");
  EXPECT_EQ(terminal.answer("ends"), "exit=0\n");
}
