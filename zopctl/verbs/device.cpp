// zopctl config, errlog: configuration and error log.
#include <fmt/format.h>

#include "zopctl/host/refusals.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

// A value that not every modem has: on failure the reason is shown.
static Item value(const char* key, const char* label, unsigned (*get)(uint32_t*)) {
  uint32_t number = 0;
  std::string why = problem(get(&number));
  return why.empty() ? shown(key, label, number, std::to_string(number)) : failed(key, label, why);
}

static Item current_band(const ModuleLibrary& m) {
  int32_t code = 0;
  std::string why = problem(m.zop_get_band(&code));
  return why.empty() ? coded("band", "Band", code, band(code)) : failed("band", "Band", why);
}

// Two items of one answer.
static void add_backup(const ModuleLibrary& m, std::vector<Item>& items) {
  uint32_t state = 0, number = 0;
  std::string why = problem(m.zop_get_backup_status(&state, &number));
  bool good = why.empty();
  bool ready = state == 0;
  items.push_back(good ? shown("backup_ready", "Backup", ready, ready ? "ready" : "not ready")
                       : failed("backup_ready", "Backup", why));
  items.push_back(good ? shown("backup_value", "Backup value", number, std::to_string(number))
                       : failed("backup_value", "Backup value", why));
}

static Findings show_config(const ModuleLibrary& m, const Arguments&) {
  std::vector<Item> items = {
      current_band(m), value("preferred_mode", "Preferred mode", m.zop_get_pref_mode),
      value("service_domain", "Service domain", m.zop_get_pref_service_domain),
      value("mgrf_supported", "MGRF supported", m.zop_get_mgrf_supported),
      value("band_order", "Band order", m.zop_get_acq_band_order)};
  add_backup(m, items);
  return one_section("config", "Configuration", items);
}

static Findings set_band(const ModuleLibrary& m, const Arguments& arguments) {
  uint32_t code = arguments.number("BAND", ZOP_BAND_GSM_850, ZOP_BAND_WCDMA_850);
  require(m.zop_set_band(code), "set band");
  return confirmation("config", "Configuration", "band " + band(static_cast<int32_t>(code)));
}

static Findings set_mode(const ModuleLibrary& m, const Arguments& arguments) {
  uint32_t mode = arguments.number("MODE", 0, 255);
  require(m.zop_set_pref_mode(mode), "set preferred mode");
  return confirmation("config", "Configuration", fmt::format("preferred mode {}", mode));
}

static Findings set_search_order(const ModuleLibrary& m, const Arguments& arguments) {
  uint32_t kind = arguments.text("KIND") == "gsm" ? ZOP_SEARCH_GSM : ZOP_SEARCH_WCDMA;
  uint32_t code = arguments.number("BAND", ZOP_BAND_GSM_850, ZOP_BAND_WCDMA_850);
  bool is_gsm_band = code < ZOP_BAND_WCDMA_2100;
  if (is_gsm_band != (kind == ZOP_SEARCH_GSM)) {
    throw UsageError(band(static_cast<int32_t>(code)) + " is a band of the other type");
  }
  require(m.zop_set_network_search_order(kind, code), "set search order");
  return confirmation("config", "Configuration",
                      "search " + band(static_cast<int32_t>(code)) + " first");
}

static Findings set_diag_port(const ModuleLibrary& m, const Arguments& arguments) {
  uint32_t port = arguments.number("PORT", 0, 1);
  require(m.zop_set_diag_port(port), "set diagnostic port");
  return confirmation("config", "Configuration", fmt::format("diagnostic port {}", port));
}

static Findings set_factory_test(const ModuleLibrary& m, const Arguments& arguments) {
  bool on = arguments.text("STATE") == "on";
  require(m.zop_enable_factory_test(on ? 1 : 0), "factory test mode");
  return confirmation("config", "Configuration",
                      on ? "factory test mode on" : "factory test mode off");
}

static Findings reset(const ModuleLibrary& m, const Arguments&) {
  require(m.zop_set_reset(), "reset");
  return confirmation("config", "Configuration",
                      "the modem restarts; its device disappears for a while");
}

static Findings error_fatal(const ModuleLibrary& m, const Arguments&) {
  require(m.zop_set_error_fatal(), "error fatal");
  return confirmation(
      "config", "Configuration",
      "the modem has crashed; its device comes back in some seconds, and zopctl dump "
      "--wait saves its memory");
}

static Findings read_errlog(const ModuleLibrary& m, const Arguments&) {
  uint8_t log[ZOP_ERROR_LOG_SIZE];
  require(m.zop_get_err_log(log), "error log");
  std::string newest = printable(std::span(log).subspan(1));
  return one_section("errlog", "Error log",
                     {shown("records", "Records", log[0], std::to_string(log[0])),
                      newest.empty() ? unknown("newest", "Newest", "none")
                                     : shown("newest", "Newest", newest, newest),
                      shown("raw", "Bytes", hex_of(log), hexdump(log))});
}

static Findings clear_errlog(const ModuleLibrary& m, const Arguments& arguments) {
  constexpr uint32_t ALL = 255;
  uint32_t index = arguments.has("INDEX") ? arguments.number("INDEX", 0, 254) : ALL;
  require(m.zop_get_err_clr(index), "clear error log");
  return confirmation("errlog", "Error log",
                      index == ALL ? "all records cleared" : "record cleared");
}

// ---- the rows ----

const Verbs CONFIG_VERBS = {
    {.noun = "config",
     .name = "show",
     .help = "modes, band, service domain, backup status",
     .run = show_config},
    {.noun = "config",
     .name = "set-band",
     .help = "lock the modem to a band",
     .danger = "a band that the network does not use takes the modem out of service",
     .arguments = {{.name = "BAND", .help = "43, 44, 47, 48, 80, 81 or 84"}},
     .run = set_band},
    {.noun = "config",
     .name = "set-mode",
     .help = "set the preferred mode, a number that the modem defines",
     .danger = "a mode that the network does not use takes the modem out of service",
     .arguments = {{.name = "MODE", .help = "0 to 255"}},
     .run = set_mode},
    {.noun = "config",
     .name = "set-search-order",
     .help = "set the band to search first",
     .arguments = {{.name = "KIND", .help = "network type", .choices = {"gsm", "wcdma"}},
                   {.name = "BAND", .help = "43, 44, 47, 48 for gsm; 80, 81, 84 for wcdma"}},
     .run = set_search_order},
    {.noun = "config",
     .name = "diag-port",
     .help = "select the port of the diagnostic link",
     .danger = "the modem may stop answering on the current port",
     .arguments = {{.name = "PORT", .help = "0 or 1"}},
     .run = set_diag_port},
    {.noun = "config",
     .name = "factory-test",
     .help = "switch factory test mode on or off",
     .arguments = {{.name = "STATE", .help = "new state", .choices = {"on", "off"}}},
     .run = set_factory_test},
    {.noun = "config",
     .name = "reset",
     .help = "restart the modem",
     .danger = "the modem disconnects and its calls end",
     .run = reset},
    {.noun = "config",
     .name = "error-fatal",
     .help = "crash the modem, to get a memory dump",
     .danger = "the modem crashes and its calls end",
     .run = error_fatal},
};
const Verbs ERRLOG_VERBS = {
    {.noun = "errlog", .name = "read", .help = "show the log", .run = read_errlog},
    {.noun = "errlog",
     .name = "clear",
     .help = "clear one record or all",
     .arguments = {{.name = "INDEX", .help = "0 to 254; default all", .optional = true}},
     .run = clear_errlog},
};

}  // namespace zopctl
