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
  uint32_t code = arguments.number("BAND");
  require(m.zop_set_band(code), "set band");
  return confirmation("config", "Configuration", "band " + band(static_cast<int32_t>(code)));
}

static Findings set_mode(const ModuleLibrary& m, const Arguments& arguments) {
  uint32_t mode = arguments.number("MODE");
  require(m.zop_set_pref_mode(mode), "set preferred mode");
  return confirmation("config", "Configuration", fmt::format("preferred mode {}", mode));
}

static void check_search_order(const Arguments& arguments) {
  bool is_gsm_band = arguments.number("BAND") < ZOP_BAND_WCDMA_2100;
  if (is_gsm_band != (arguments.text("KIND") == "gsm"))
    throw UsageError("BAND must be 43, 44, 47 or 48 for gsm, and 80, 81 or 84 for wcdma");
}

static Findings set_search_order(const ModuleLibrary& m, const Arguments& arguments) {
  uint32_t kind = arguments.text("KIND") == "gsm" ? ZOP_SEARCH_GSM : ZOP_SEARCH_WCDMA;
  uint32_t code = arguments.number("BAND");
  require(m.zop_set_network_search_order(kind, code), "set search order");
  return confirmation("config", "Configuration",
                      "search " + band(static_cast<int32_t>(code)) + " first");
}

static Findings set_diag_port(const ModuleLibrary& m, const Arguments& arguments) {
  uint32_t port = arguments.number("PORT");
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
  uint32_t index = arguments.has("INDEX") ? arguments.number("INDEX") : ALL;
  require(m.zop_get_err_clr(index), "clear error log");
  return confirmation("errlog", "Error log",
                      index == ALL ? "all records cleared" : "record cleared");
}

// ---- the rows ----

// The bands that the modem may be told to use.
static Argument band_argument() {
  Argument argument = {.name = "BAND", .help = "the band"};
  for (const char* code : {"43", "44", "47", "48", "80", "81", "84"})
    argument.choices.emplace_back(code, band(std::stoi(code)));
  return argument;
}

const Verbs CONFIG_VERBS = {
    {.noun = "config",
     .name = "show",
     .help = "modes, band, service domain, backup status",
     .run = show_config},
    {.noun = "config",
     .name = "set-band",
     .help = "lock the modem to a band",
     .danger = "a band that the network does not use takes the modem out of service",
     .arguments = {band_argument()},
     .run = set_band},
    {.noun = "config",
     .name = "set-mode",
     .help = "set the preferred mode, a number that the modem defines",
     .danger = "a mode that the network does not use takes the modem out of service",
     .arguments = {{.name = "MODE", .help = "the mode", .range = Range{0, 255}}},
     .run = set_mode},
    {.noun = "config",
     .name = "set-search-order",
     .help = "set the band to search first",
     .arguments = {{.name = "KIND", .help = "network type", .choices = {"gsm", "wcdma"}},
                   band_argument()},
     .check = check_search_order,
     .run = set_search_order},
    {.noun = "config",
     .name = "diag-port",
     .help = "select the port of the diagnostic link",
     .danger = "the modem may stop answering on the current port",
     .arguments = {{.name = "PORT", .help = "the port", .choices = {"0", "1"}}},
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
     .arguments = {{.name = "INDEX",
                    .help = "the record (default all)",
                    .optional = true,
                    .range = Range{0, 254}}},
     .run = clear_errlog},
};

}  // namespace zopctl
