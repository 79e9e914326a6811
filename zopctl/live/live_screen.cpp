// The terminal of the live view. The module prints on standard output: the screen has its own
// descriptor.
#include "zopctl/live/live_screen.h"

#include <curses.h>
#include <fmt/chrono.h>
#include <langinfo.h>
#include <term.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <cstring>

#include "zopctl/live/live_layout.h"
#include "zopctl/live/terminal_rescue.h"
#include "zopctl/text/printable.h"

namespace zopctl {

constexpr size_t MAX_LEVELS = 1024;
constexpr size_t MAX_EVENT_LINES = 200;

static std::optional<int> known_rssi(const Sample& sample) {
  auto rssi = sample.number("state", "rssi_dbm");
  if (!rssi) return std::nullopt;
  return static_cast<int>(*rssi);  // 32 bits in the module
}

void LiveView::add(const Sample& newest) {
  sample = newest;
  has_sample = true;
  rssi.push_back(known_rssi(newest));
  ecio.push_back(records::active_ecio(records::cells_of(newest.report)));
  if (rssi.size() > MAX_LEVELS) rssi.pop_front(), ecio.pop_front();
  auto time = std::chrono::floor<std::chrono::seconds>(newest.time);
  for (const std::string& event : newest.events) {
    events.push_back(fmt::format("{:%H:%M:%S}  {}", time, printable_ascii(event)));
  }
  while (events.size() > MAX_EVENT_LINES) events.pop_front();
}

static void use_colours() {
  if (!has_colors() || getenv("NO_COLOR") != nullptr) return;
  start_color();
  use_default_colors();
  init_pair(GOOD, COLOR_GREEN, -1);
  init_pair(FAIR, COLOR_YELLOW, -1);
  init_pair(BAD, COLOR_RED, -1);
  init_pair(PLOT, COLOR_CYAN, -1);
}

// newterm does not undo its work when it fails.
static bool terminal_is_known() {
  int error = 0;
  if (setupterm(nullptr, STDOUT_FILENO, &error) != OK) return false;
  del_curterm(set_curterm(nullptr));
  return true;
}

std::unique_ptr<LiveScreen> LiveScreen::open() {
  if (!terminal_is_known()) return nullptr;
  setlocale(LC_CTYPE, "");
  FILE* output = duplicate_standard_output();
  if (output == nullptr) return nullptr;
  remember_terminal(fileno(output));
  screen* terminal = newterm(nullptr, output, stdin);
  if (terminal == nullptr) {
    fclose(output);
    return nullptr;
  }
  return std::unique_ptr<LiveScreen>(new LiveScreen(output, terminal));
}

LiveScreen::LiveScreen(FILE* output, screen* terminal)
    : output_(output),
      screen_(terminal),
      utf8_(strcmp(nl_langinfo(CODESET), "UTF-8") == 0),
      rescue_(std::make_unique<TerminalRescue>()) {
  set_escdelay(25);
  cbreak();
  noecho();
  curs_set(0);
  keypad(stdscr, TRUE);
  nodelay(stdscr, TRUE);
  idlok(stdscr, TRUE);
  idcok(stdscr, TRUE);  // a graph moves by a control sequence instead of being drawn again
  use_colours();
}

LiveScreen::~LiveScreen() {
  endwin();
  rescue_.reset();
  delscreen(screen_);
  fclose(output_);
}

void LiveScreen::draw(const LiveView& view) {
  draw_layout(view, utf8_);
  refresh();
}

int LiveScreen::key() {
  int typed = getch();
  if (typed == ERR) return -1;
  return typed == KEY_RESIZE ? RESIZED : typed;
}

}  // namespace zopctl
