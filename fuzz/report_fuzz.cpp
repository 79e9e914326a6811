// Fills the diagnostic record with arbitrary bytes, as a hostile modem would, and renders one
// of the two forms of the report: no walk may leave the record, no text its buffer, no line its
// length. The first byte selects what is rendered, the second the size of the text's buffer.
#include <cstring>

#include "fuzz/fuzz.h"
#include "include/vurn.h"
#include "include/zop_diag_info.h"
#include "report/rendering.h"
#include "tests/support/world.h"

enum { LONGEST_LINE = 1200 + 64 };  // with its head and its count
enum { SIZE_STEP = 40, SNAPSHOT = 1, NO_EXCEPTION = 2, SYSLOG = 4 };

static void render_text(const char* exception, int snapshot, unsigned size) {
  std::vector<char> text(size + 1, '#');  // of exactly this size, and one byte to watch
  int whole = prv_output_somewhere(exception, 0, snapshot, text.data(), size);
  require(text[size] == '#');
  if (size > 0) require(memchr(text.data(), '\0', size) != nullptr);
  require(whole == 0 || size > 1000 || snapshot != 0);
}

static void render_lines(const char* exception, int snapshot) {
  test::World world;
  vurn_set_log_mask(VURN_LOG_INFO);
  prv_output_somewhere(exception, 1, snapshot, nullptr, 0);
  require(!world.log.empty());
  for (const test::LogLine& line : world.log) {
    require(line.text.size() <= LONGEST_LINE);
    require(strcspn(line.text.c_str(), "\n\r\x1B\x7F") == line.text.size());
  }
}

void fuzz(std::span<const uint8_t> input) {
  if (input.size() < 2) return;
  gDiagInfo = {};
  prv_zop_init_logging();
  size_t size = std::min(input.size() - 2, sizeof gDiagInfo);
  memcpy(static_cast<void*>(&gDiagInfo), input.data() + 2, size);
  const char* exception = (input[0] & NO_EXCEPTION) != 0 ? nullptr : "exception";
  int snapshot = input[0] & SNAPSHOT;
  if ((input[0] & SYSLOG) != 0) return render_lines(exception, snapshot);
  render_text(exception, snapshot, input[1] * SIZE_STEP);
}
