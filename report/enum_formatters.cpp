// Formatters of the modem's codes, shown by name. A code without a name is shown as "17 Unknown".
#include <ctype.h>

#include "report/formatters.h"
#include "report/names.h"
#include "report/text.h"

namespace {
enum Case { AS_IS, LOWER };  // LOWER: all but the first character
enum Screen { ANY_SCREEN, WCDMA_SCREEN, GSM_SCREEN };
}  // namespace

static int32_t prv_u8(const void* p) { return *prv_bytes(p); }
static int32_t prv_s8(const void* p) { return static_cast<int8_t>(*prv_bytes(p)); }
static int32_t prv_s32(const void* p) { return get_unaligned_int32_t(p); }

static void prv_append_word(BoundedWriter& out, const char* name, Case letters) {
  for (const char* c = name; *c != '\0'; ++c) {
    char letter = *c == '_' ? ' ' : *c;
    bool lower = letters == LOWER && c != name;
    out.append_character(lower ? static_cast<char>(tolower(static_cast<unsigned char>(letter)))
                               : letter);
  }
}

template <unsigned COUNT>
static void prv_append_name(BoundedWriter& out, const EnumName (&names)[COUNT], int32_t value,
                            Case letters) {
  for (const EnumName& row : names) {
    if (row.value == value) return prv_append_word(out, row.name, letters);
  }
  out.append("%d Unknown", value);
}

static bool prv_is_shown(Screen screen) {
  if (screen == WCDMA_SCREEN) return prv_is_wcdma_screen();
  if (screen == GSM_SCREEN) return prv_is_gsm_screen();
  return true;
}

template <const auto& NAMES, int32_t (*READ)(const void*), Case LETTERS = AS_IS,
          Screen SCREEN = ANY_SCREEN>
static int prv_format_enum(const zop_log_item* item, const char** text, int* length) {
  BoundedWriter out = prv_scratch();
  if (prv_is_shown(SCREEN)) prv_append_name(out, NAMES, READ(item->value), LETTERS);
  return prv_finish(out, text, length);
}

#define ENUM_FORMATTER(name, ...)                                           \
  int name(const zop_log_item* item, const char** text, int* length, int) { \
    return prv_format_enum<__VA_ARGS__>(item, text, length);                \
  }

ENUM_FORMATTER(prv_format_band, BAND_NAMES, prv_s32)
ENUM_FORMATTER(prv_format_system_mode, SYSTEM_MODE_NAMES, prv_s8)
ENUM_FORMATTER(prv_format_data_service_mode, DATA_SERVICE_MODE_NAMES, prv_s8)
ENUM_FORMATTER(prv_format_service_status, SERVICE_STATUS_NAMES, prv_s8)
ENUM_FORMATTER(prv_format_reg_status, REG_STATUS_NAMES, prv_s8, LOWER)
ENUM_FORMATTER(prv_format_call_status, CALL_STATUS_NAMES, prv_s8)
ENUM_FORMATTER(prv_format_update_result, UPDATE_RESULT_NAMES, prv_u8)
ENUM_FORMATTER(prv_format_gmm_state, GMM_STATE_NAMES, prv_u8)
ENUM_FORMATTER(prv_format_pdp_state, PDP_STATE_NAMES, prv_u8, LOWER)
ENUM_FORMATTER(prv_format_network_mode, NETWORK_MODE_NAMES, prv_s8)
ENUM_FORMATTER(prv_format_pmm_mode, PMM_MODE_NAMES, prv_u8, LOWER)
ENUM_FORMATTER(prv_format_selection_mode, SELECTION_MODE_NAMES, prv_u8, LOWER)
ENUM_FORMATTER(prv_format_hsdpa_status, HSDPA_STATUS_NAMES, prv_u8, LOWER, WCDMA_SCREEN)
ENUM_FORMATTER(prv_format_hsdpa_indication, HSDPA_INDICATION_NAMES, prv_s8, AS_IS, WCDMA_SCREEN)
ENUM_FORMATTER(prv_format_egprs_indication, EGPRS_INDICATION_NAMES, prv_u8, AS_IS, GSM_SCREEN)
ENUM_FORMATTER(prv_format_mm_cause, MM_CAUSE_NAMES, prv_u8)
ENUM_FORMATTER(prv_format_pdp_cause, PDP_CAUSE_NAMES, prv_u8)

// Card, PIN and remaining tries: "Valid, PIN enabled, R3".
int prv_format_sim_status(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  prv_append_name(out, SIM_STATE_NAMES, gDiagInfo.sim_status, LOWER);
  out.append(", PIN");
  prv_append_name(out, PIN_STATE_NAMES, gDiagInfo.lock_status, LOWER);
  out.append(", R%d", gDiagInfo.pin_retries);
  return prv_finish(out, text, length);
}
