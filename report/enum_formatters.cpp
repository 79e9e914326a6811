// Formatters of the modem's codes, shown by name. A code without a name is shown as "17 Unknown".
//
// The tables are compiled into values and one text without pointers: the dynamic linker would have
// to relocate each pointer, and the device has little memory.
#include <ctype.h>

#include <array>
#include <iterator>
#include <string_view>

#include "report/formatters.h"
#include "report/names.h"
#include "report/text.h"

namespace {
enum Case : uint8_t { AS_IS, LOWER };  // LOWER: all but the first character
enum Screen : uint8_t { ANY_SCREEN, WCDMA_SCREEN, GSM_SCREEN };
enum Width : uint8_t { U8, S8, S32 };

// How the code is read and its name is written.
struct Style {
  Width width;
  Case letters = AS_IS;
  Screen screen = ANY_SCREEN;
};

struct Row {
  int16_t value;
  uint16_t name;  // its offset in the text
};

struct Names {
  const Row* rows;
  size_t count;
  const char* text;
};

template <size_t COUNT, size_t SIZE>
struct PackedNames {
  std::array<Row, COUNT> rows;
  std::array<char, SIZE> text;
};
}  // namespace

template <const auto& NAMES>
constexpr size_t prv_size_of_names() {
  size_t size = 0;
  for (const EnumName& name : NAMES) size += std::string_view(name.name).size() + 1;
  return size;
}

template <const auto& NAMES>
constexpr auto prv_pack() {
  PackedNames<std::size(NAMES), prv_size_of_names<NAMES>()> packed{};
  uint16_t at = 0;
  for (size_t i = 0; i < std::size(NAMES); ++i) {
    packed.rows[i] = {NAMES[i].value, at};
    for (const char* c = NAMES[i].name; *c != '\0'; ++c) packed.text[at++] = *c;
    ++at;  // its terminator
  }
  return packed;
}

template <const auto& NAMES>
static constexpr auto PACKED = prv_pack<NAMES>();

template <const auto& NAMES>
constexpr Names prv_names() {
  return {PACKED<NAMES>.rows.data(), PACKED<NAMES>.rows.size(), PACKED<NAMES>.text.data()};
}

static int32_t prv_code(const void* p, Width width) {
  if (width == S32) return get_unaligned_int32_t(p);
  return width == S8 ? static_cast<int8_t>(*prv_bytes(p)) : *prv_bytes(p);
}

static void prv_append_word(BoundedWriter& out, const char* name, Case letters) {
  for (const char* c = name; *c != '\0'; ++c) {
    char letter = *c == '_' ? ' ' : *c;
    bool lower = letters == LOWER && c != name;
    out.append_character(lower ? static_cast<char>(tolower(static_cast<unsigned char>(letter)))
                               : letter);
  }
}

static void prv_append_name(BoundedWriter& out, const Names& names, int32_t value, Case letters) {
  for (size_t i = 0; i < names.count; ++i) {
    const Row& row = names.rows[i];
    if (row.value == value) return prv_append_word(out, names.text + row.name, letters);
  }
  out.append("%d Unknown", value);
}

static bool prv_is_shown(Screen screen) {
  if (screen == WCDMA_SCREEN) return prv_is_wcdma_screen();
  if (screen == GSM_SCREEN) return prv_is_gsm_screen();
  return true;
}

static int prv_format_enum(const Names& names, Style style, const zop_log_item* item,
                           const char** text, int* length) {
  BoundedWriter out = prv_scratch();
  if (prv_is_shown(style.screen))
    prv_append_name(out, names, prv_code(item->value, style.width), style.letters);
  return prv_finish(out, text, length);
}

#define ENUM_FORMATTER(name, names, ...)                                                \
  int name(const zop_log_item* item, const char** text, int* length, int) {             \
    return prv_format_enum(prv_names<names>(), Style{__VA_ARGS__}, item, text, length); \
  }

ENUM_FORMATTER(prv_format_band, BAND_NAMES, S32)
ENUM_FORMATTER(prv_format_system_mode, SYSTEM_MODE_NAMES, S8)
ENUM_FORMATTER(prv_format_data_service_mode, DATA_SERVICE_MODE_NAMES, S8)
ENUM_FORMATTER(prv_format_service_status, SERVICE_STATUS_NAMES, S8)
ENUM_FORMATTER(prv_format_reg_status, REG_STATUS_NAMES, S8, LOWER)
ENUM_FORMATTER(prv_format_call_status, CALL_STATUS_NAMES, S8)
ENUM_FORMATTER(prv_format_update_result, UPDATE_RESULT_NAMES, U8)
ENUM_FORMATTER(prv_format_gmm_state, GMM_STATE_NAMES, U8)
ENUM_FORMATTER(prv_format_pdp_state, PDP_STATE_NAMES, U8, LOWER)
ENUM_FORMATTER(prv_format_network_mode, NETWORK_MODE_NAMES, S8)
ENUM_FORMATTER(prv_format_pmm_mode, PMM_MODE_NAMES, U8, LOWER)
ENUM_FORMATTER(prv_format_selection_mode, SELECTION_MODE_NAMES, U8, LOWER)
ENUM_FORMATTER(prv_format_hsdpa_status, HSDPA_STATUS_NAMES, U8, LOWER, WCDMA_SCREEN)
ENUM_FORMATTER(prv_format_hsdpa_indication, HSDPA_INDICATION_NAMES, S8, AS_IS, WCDMA_SCREEN)
ENUM_FORMATTER(prv_format_egprs_indication, EGPRS_INDICATION_NAMES, U8, AS_IS, GSM_SCREEN)
ENUM_FORMATTER(prv_format_mm_cause, MM_CAUSE_NAMES, U8)
ENUM_FORMATTER(prv_format_pdp_cause, PDP_CAUSE_NAMES, U8)

// Card, PIN and remaining tries: "Valid, PIN enabled, R3".
int prv_format_sim_status(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  prv_append_name(out, prv_names<SIM_STATE_NAMES>(), gDiagInfo.sim_status, LOWER);
  out.append(", PIN");
  prv_append_name(out, prv_names<PIN_STATE_NAMES>(), gDiagInfo.lock_status, LOWER);
  out.append(", R%d", gDiagInfo.pin_retries);
  return prv_finish(out, text, length);
}
