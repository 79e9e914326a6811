// Fills the diagnostic record with arbitrary bytes, as a hostile modem would, and renders both
// forms of the report: no walk may leave the record, no text its buffer, no line its length.
#include <cstring>

#include "fuzz/fuzz.h"
#include "include/vurn.h"
#include "include/zop_diag_info.h"
#include "report/rendering.h"
#include "tests/support/world.h"

enum { LONGEST_LINE = 1200 + 64 };  // with its head and its count

static void render_log_string(unsigned size) {
  std::vector<char> text(size + 1, '#');  // of exactly this size, and one byte to watch
  int whole = prv_output_somewhere("exception", 1, 0, text.data(), size);
  require(text[size] == '#');
  if (size > 0) require(memchr(text.data(), '\0', size) != nullptr);
  require(whole == 0 || size > 1000);
}

static void check_lines(const test::World& world) {
  require(!world.log.empty());
  for (const test::LogLine& line : world.log) {
    require(line.text.size() <= LONGEST_LINE);
    require(line.text.find_first_of("\n\r\x1B\x7F") == std::string::npos);
  }
}

void fuzz(std::span<const uint8_t> input) {
  test::World world;
  gDiagInfo = {};
  prv_zop_init_logging();
  vurn_set_log_mask(VURN_LOG_INFO);
  memcpy(static_cast<void*>(&gDiagInfo), input.data(), std::min(input.size(), sizeof gDiagInfo));
  render_log_string(input.size() > 1 ? input.back() * 40u : 8192u);
  prv_zop_output_to_syslog(1, nullptr, 1);
  check_lines(world);
}
